#include <filesystem>
#include <iostream>
#include <optional>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringIterable.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include "Processes.h"
#include "Support.h"
#include "VespermoorEditor/Utils/System.h"

namespace VespermoorEngine::Test {
namespace {

namespace fs = std::filesystem;

std::optional<std::string> trashPath() {
    const Containers::Optional<Containers::String> path = findTrashPath();
    return path ? std::optional{text(*path)} : std::nullopt;
}

struct TrashRow {
    const char* name;
    std::vector<const char*> directories;
    std::vector<const char*> files;
    const char* dataHome;
    const char* expected;
};

class FindTrashPath : public testing::TestWithParam<TrashRow> {};

TEST_P(FindTrashPath, LooksAtOnePlaceOnly) {
    const TrashRow& row = GetParam();
    const TemporaryDirectory directory;
    for (const char* const made : row.directories) {
        fs::create_directories(directory / made);
    }
    for (const char* const made : row.files) {
        writeFile(directory / made, "");
    }
    const ScopedVariable home{"HOME", directory / "home"};
    const ScopedVariable data{
        "XDG_DATA_HOME", row.dataHome ? std::optional{directory / row.dataHome} : std::nullopt};
    EXPECT_EQ(trashPath(), row.expected ? std::optional{directory / row.expected} : std::nullopt);
}

const TrashRow trashRows[]{
    {"none at home", {"home"}, {}, nullptr, nullptr},
    {"at home with files",
     {"home/.local/share/Trash/files"},
     {},
     nullptr,
     "home/.local/share/Trash/files"},
    {"at home without files", {"home/.local/share/Trash"}, {}, nullptr, "home/.local/share/Trash"},
    {"that of root alone", {"home/.Trash/files"}, {}, nullptr, nullptr},
    {"data home with files",
     {"data/Trash/files", "home/.local/share/Trash/files"},
     {},
     "data",
     "data/Trash/files"},
    {"data home without files", {"data/Trash"}, {}, "data", "data/Trash"},
    {"data home without trash", {"data", "home/.local/share/Trash/files"}, {}, "data", nullptr},
    {"slash at the end stays", {"data/Trash/files"}, {}, "data/", "data//Trash/files"},
    {"trash is a file", {}, {"data/Trash"}, "data", nullptr},
    {"files is a file", {}, {"data/Trash/files"}, "data", "data/Trash/files"},
};
INSTANTIATE_TEST_SUITE_P(, FindTrashPath, testing::ValuesIn(trashRows), rowName<TrashRow>);

TEST(FindTrashPathOf, EmptyDataHomeIsNone) {
    const TemporaryDirectory directory;
    fs::create_directories(directory / ".local/share/Trash");
    const ScopedVariable home{"HOME", directory.path()};
    const ScopedVariable data{"XDG_DATA_HOME", ""};
    EXPECT_EQ(trashPath(), directory / ".local/share/Trash");
}

TEST(FindTrashPathOf, NoHomeIsNone) {
    const ScopedVariable home{"HOME", std::nullopt};
    const ScopedVariable data{"XDG_DATA_HOME", std::nullopt};
    const Messages messages;
    EXPECT_EQ(trashPath(), std::nullopt);
    EXPECT_EQ(messages.text(), "Utility::Path::homeDirectory(): $HOME not available\n");
}

TEST(FindTrashPathOf, RootHasItsOwnPlace) {
    if (!mayMountPrivately()) {
        GTEST_SKIP() << "mounts are not allowed here, so /root cannot be replaced";
    }
    const ScopedVariable home{"HOME", "/root"};
    const ScopedVariable data{"XDG_DATA_HOME", std::nullopt};
    const auto report = [] {
        mountPrivately("/root");
        fs::create_directories("/root/.local/share/Trash/files");
        std::cerr << trashPath().value_or("none");
        fs::create_directories("/root/.Trash");
        std::cerr << ' ' << trashPath().value_or("none");
        _exit(0);
    };
    EXPECT_EXIT(report(), testing::ExitedWithCode(0), testing::Eq("none /root/.Trash"));
}

/* All below a directory: `path/`, `path=content` or `path -> target`, with UUIDs made alike. */
std::set<std::string> entries(const std::string& directory) {
    static const std::regex uuid{"[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"};
    std::set<std::string> found;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator{directory}) {
        const std::string path =
            fs::relative(entry.path().parent_path(), directory) /
            std::regex_replace(std::string{entry.path().filename()}, uuid, "UUID");
        const std::string what = entry.is_symlink()     ? " -> " + fs::read_symlink(entry).string()
                                 : entry.is_directory() ? "/"
                                                        : '=' + readFile(entry.path());
        found.insert((path.rfind("./", 0) == 0 ? path.substr(2) : path) + what);
    }
    return found;
}

bool moveAll(const std::vector<std::string>& paths) {
    std::vector<Containers::StringView> views;
    for (const std::string& path : paths) {
        views.emplace_back(path.data(), path.size());
    }
    return moveToTrash(Containers::arrayView(views.data(), views.size()));
}

struct MoveRow {
    const char* name;
    const char* trash;
    std::vector<const char*> paths;
    bool result;
    const char* messages;
    std::set<std::string> entries;
};

class MoveToTrash : public testing::TestWithParam<MoveRow> {};

TEST_P(MoveToTrash, MovesOrDeletes) {
    const MoveRow& row = GetParam();
    const TemporaryDirectory directory;
    const ScopedVariable home{"HOME", directory.path()};
    const ScopedVariable data{"XDG_DATA_HOME", directory.path()};
    writeFile(directory / "a/one", "first");
    writeFile(directory / "b/one", "second");
    fs::create_directories(directory / "tree/deep/er");
    fs::create_symlink("../a", directory / "tree/link");
    if (row.trash) {
        fs::create_directories(directory / row.trash);
    }
    std::vector<std::string> paths;
    for (const char* const path : row.paths) {
        paths.push_back(directory / path);
    }

    const Messages messages;
    EXPECT_EQ(moveAll(paths), row.result);
    EXPECT_EQ(std::regex_replace(messages.text(), std::regex{directory.path()}, "D"), row.messages);
    EXPECT_EQ(entries(directory.path()), row.entries);
}

const char* const cannotMove = "Utility::Path::move(): can't move D/missing to "
                               "D/Trash/files/missing: error 2 (No such file or directory)\n";

const MoveRow moveRows[]{
    {"nothing",
     "Trash/files",
     {},
     true,
     "",
     {"Trash/", "Trash/files/", "a/", "a/one=first", "b/", "b/one=second", "tree/", "tree/deep/",
      "tree/deep/er/", "tree/link -> ../a"}},
    {"two of one name and a tree",
     "Trash/files",
     {"a/one", "b/one", "tree"},
     true,
     "",
     {"Trash/", "Trash/files/", "Trash/files/one=first", "Trash/files/oneUUID=second",
      "Trash/files/tree/", "Trash/files/tree/deep/", "Trash/files/tree/deep/er/",
      "Trash/files/tree/link -> ../a", "a/", "b/"}},
    {"trash without files",
     "Trash",
     {"a/one", "b", "tree/link"},
     true,
     "",
     {"Trash/", "Trash/b/", "Trash/b/one=second", "Trash/link -> ../a", "Trash/one=first", "a/",
      "tree/", "tree/deep/", "tree/deep/er/"}},
    {"second missing",
     "Trash/files",
     {"a/one", "missing", "b/one"},
     false,
     cannotMove,
     {"Trash/", "Trash/files/", "Trash/files/one=first", "a/", "b/", "b/one=second", "tree/",
      "tree/deep/", "tree/deep/er/", "tree/link -> ../a"}},
    {"deleted without trash", nullptr, {"tree", "b/one"}, true, "", {"a/", "a/one=first", "b/"}},
    {"second missing without trash",
     nullptr,
     {"a/one", "missing", "b/one"},
     false,
     "",
     {"a/", "b/", "b/one=second", "tree/", "tree/deep/", "tree/deep/er/", "tree/link -> ../a"}},
};
INSTANTIATE_TEST_SUITE_P(, MoveToTrash, testing::ValuesIn(moveRows), rowName<MoveRow>);

TEST(MoveToTrashOf, AnotherFileSystemIsRefusedAndNothingIsLost) {
    if (!mayMountPrivately()) {
        GTEST_SKIP() << "mounts are not allowed here, so there is no second file system";
    }
    const TemporaryDirectory directory;
    const ScopedVariable data{"XDG_DATA_HOME", directory.path()};
    fs::create_directories(directory / "Trash/files");
    fs::create_directories(directory / "other");
    const auto report = [&] {
        mountPrivately(directory / "other");
        writeFile(directory / "other/file", "content");
        const Messages messages;
        std::cerr << moveAll({directory / "other/file"});
        for (const std::string& entry : entries(directory.path())) {
            std::cerr << ' ' << entry;
        }
        _exit(0);
    };
    EXPECT_EXIT(report(), testing::ExitedWithCode(0),
                testing::Eq("0 Trash/ Trash/files/ other/ other/file=content"));
}

} // namespace
} // namespace VespermoorEngine::Test
