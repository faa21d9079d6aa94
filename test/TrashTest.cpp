#include <filesystem>
#include <iostream>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include <Corrade/Containers/GrowableArray.h>
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

/* `text` with the path of the directory for a leading `D`; nothing for a null one. */
std::optional<std::string> inside(const TemporaryDirectory& directory, const char* const text) {
    return text ? std::optional{std::regex_replace(text, std::regex{"^D"}, directory.path())}
                : std::nullopt;
}

void make(const TemporaryDirectory& directory, const std::string& commands) {
    EXPECT_EQ(outputOf("cd '" + directory.path() + "' && { " + commands + "; } 2>&1"), "");
}

struct TrashRow {
    const char* name;
    const char* commands;
    const char* home;
    const char* dataHome;
    const char* expected;
};

class FindTrashPath : public testing::TestWithParam<TrashRow> {};

TEST_P(FindTrashPath, LooksAtOnePlaceOnly) {
    const TrashRow& row = GetParam();
    const TemporaryDirectory directory;
    make(directory, row.commands);
    const ScopedVariable home{"HOME", inside(directory, row.home)};
    const ScopedVariable data{"XDG_DATA_HOME", inside(directory, row.dataHome)};
    const Messages messages;
    EXPECT_EQ(trashPath(), inside(directory, row.expected));
    EXPECT_EQ(messages.text(),
              row.home ? "" : "Utility::Path::homeDirectory(): $HOME not available\n");
}

const TrashRow trashRows[]{
    {"none at home", ":", "D", nullptr, nullptr},
    {"at home with files", "mkdir -p .local/share/Trash/files", "D", nullptr,
     "D/.local/share/Trash/files"},
    {"at home without files", "mkdir -p .local/share/Trash", "D", nullptr, "D/.local/share/Trash"},
    {"that of root alone", "mkdir -p .Trash/files", "D", nullptr, nullptr},
    {"data home", "mkdir -p data/Trash/files .local/share/Trash", "D", "D/data",
     "D/data/Trash/files"},
    {"data home without files", "mkdir -p data/Trash", "D", "D/data", "D/data/Trash"},
    {"data home without trash", "mkdir -p .local/share/Trash/files", "D", "D/data", nullptr},
    {"empty data home", "mkdir -p .local/share/Trash", "D", "", "D/.local/share/Trash"},
    {"slash at the end stays", "mkdir -p data/Trash/files", "D", "D/data/", "D/data//Trash/files"},
    {"trash is a file", "mkdir data; touch data/Trash", "D", "D/data", nullptr},
    {"files is a file", "mkdir -p data/Trash; touch data/Trash/files", "D", "D/data",
     "D/data/Trash/files"},
    {"no home", ":", nullptr, nullptr, nullptr},
};
INSTANTIATE_TEST_SUITE_P(, FindTrashPath, testing::ValuesIn(trashRows), rowName<TrashRow>);

TEST(FindTrashPathOf, RootHasItsOwnPlace) {
    if (!mayMountPrivately()) {
        GTEST_SKIP() << "mounts are not allowed here, so /root cannot be replaced";
    }
    const ScopedVariable data{"XDG_DATA_HOME", std::nullopt};
    const auto report = [] {
        if (!mountPrivately("/root")) {
            _exit(1);
        }
        const auto trashOf = [](const char* const path) {
            const ScopedVariable home{"HOME", path};
            return trashPath().value_or("none") + ' ';
        };
        fs::create_directories("/root/.local/share/Trash/files");
        std::cerr << trashOf("/root");
        fs::create_directories("/root/.Trash");
        std::cerr << trashOf("/root");
        fs::create_directories("/root/below/.Trash");
        std::cerr << trashOf("/root/below");
        _exit(0);
    };
    EXPECT_EXIT(report(), testing::ExitedWithCode(0), testing::Eq("none /root/.Trash none "));
}

/* All below the directory as `path/`, `path=content` or `path->target`, with UUIDs made alike. */
std::set<std::string> entries(const TemporaryDirectory& directory) {
    static const std::regex uuid{"[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"};
    std::set<std::string> found;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator{directory.path()}) {
        const std::string path = entry.path().string().substr(directory.path().size() + 1);
        const std::string what = entry.is_symlink()     ? "->" + fs::read_symlink(entry).string()
                                 : entry.is_directory() ? "/"
                                                        : '=' + readFile(entry.path());
        found.insert(std::regex_replace(path, uuid, "UUID") + what);
    }
    return found;
}

/* Those of `all` that `others` do not hold, in order. */
std::string without(const std::set<std::string>& all, const std::set<std::string>& others) {
    std::string rest;
    for (const std::string& entry : all) {
        rest += others.count(entry) ? "" : entry + ' ';
    }
    return rest;
}

bool moveAll(const TemporaryDirectory& directory, const char* const names) {
    Containers::Array<Containers::String> paths;
    std::istringstream stream{names};
    for (std::string name; stream >> name;) {
        arrayAppend(paths, Containers::String{view(directory / name)});
    }
    return moveToTrash(paths);
}

struct MoveRow {
    const char* name;
    const char* commands;
    const char* paths;
    bool result;
    std::string messages;
    const char* gone;
    const char* come;
};

class MoveToTrash : public testing::TestWithParam<MoveRow> {};

TEST_P(MoveToTrash, MovesOrDeletes) {
    const MoveRow& row = GetParam();
    const TemporaryDirectory directory;
    const ScopedVariable home{"HOME", directory.path()};
    const ScopedVariable data{"XDG_DATA_HOME", directory / "data"};
    make(directory, row.commands);
    make(directory,
         "mkdir a b tree; printf first > a/one; printf second > b/one; ln -s ../a tree/link");
    const std::set<std::string> before = entries(directory);

    const Messages messages;
    EXPECT_EQ(moveAll(directory, row.paths), row.result);
    EXPECT_EQ(std::regex_replace(messages.text(), std::regex{directory.path()}, "D"), row.messages);
    EXPECT_EQ(without(before, entries(directory)), row.gone);
    EXPECT_EQ(without(entries(directory), before), row.come);
}

std::string cannotMove(const std::string& from, const std::string& to, const std::string& error) {
    return "Utility::Path::move(): can't move " + from + " to " + to + ": error " + error + '\n';
}

const std::string missing = "2 (No such file or directory)";

const MoveRow moveRows[]{
    {"nothing", "mkdir -p data/Trash/files", "", true, "", "", ""},
    {"two of one name and a tree", "mkdir -p data/Trash/files", "a/one b/one tree", true, "",
     "a/one=first b/one=second tree/ tree/link->../a ",
     "data/Trash/files/one=first data/Trash/files/oneUUID=second data/Trash/files/tree/ "
     "data/Trash/files/tree/link->../a "},
    {"a link that leads nowhere is replaced",
     "mkdir -p data/Trash/files; ln -s nowhere data/Trash/files/one", "a/one", true, "",
     "a/one=first data/Trash/files/one->nowhere ", "data/Trash/files/one=first "},
    {"a slash at the end loses the name", "mkdir -p data/Trash/files", "tree/", true, "",
     "tree/ tree/link->../a ", "data/Trash/files/UUID/ data/Trash/files/UUID/link->../a "},
    {"second missing", "mkdir -p data/Trash/files", "a/one missing b/one", false,
     cannotMove("D/missing", "D/data/Trash/files/missing", missing), "a/one=first ",
     "data/Trash/files/one=first "},
    {"the trash itself, which is looked for once",
     "mkdir -p data real/files; ln -s ../real data/Trash", "data/Trash a/one", false,
     cannotMove("D/a/one", "D/data/Trash/files/one", missing), "data/Trash->../real ",
     "real/files/Trash->../real "},
    {"deleted without trash", ":", "tree b/one", true, "", "b/one=second tree/ tree/link->../a ",
     ""},
    {"second missing without trash", ":", "a/one missing b/one", false, "", "a/one=first ", ""},
};
INSTANTIATE_TEST_SUITE_P(, MoveToTrash, testing::ValuesIn(moveRows), rowName<MoveRow>);

TEST(MoveToTrashOf, AnotherFileSystemIsRefusedAndNothingIsLost) {
    if (!mayMountPrivately()) {
        GTEST_SKIP() << "mounts are not allowed here, so there is no second file system";
    }
    const TemporaryDirectory directory;
    const ScopedVariable data{"XDG_DATA_HOME", directory.path()};
    make(directory, "mkdir -p Trash/files other");
    const auto report = [&] {
        if (!mountPrivately(directory / "other")) {
            _exit(1);
        }
        writeFile(directory / "other/file", "content");
        const Messages messages;
        std::cerr << moveAll(directory, "other/file") << ' ' << messages.text();
        for (const std::string& entry : entries(directory)) {
            std::cerr << entry << ' ';
        }
        _exit(0);
    };
    EXPECT_EXIT(report(), testing::ExitedWithCode(0),
                testing::Eq("0 " +
                            cannotMove(directory / "other/file", directory / "Trash/files/file",
                                       "18 (Invalid cross-device link)") +
                            "Trash/ Trash/files/ other/ other/file=content "));
}

} // namespace
} // namespace VespermoorEngine::Test
