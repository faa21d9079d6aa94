#include <optional>

#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/StringIterable.h>

#include "Processes.h"
#include "Support.h"
#include "VespermoorEditor/Utils/System.h"

namespace VespermoorEngine::Test {
namespace {

std::string trashPath() {
    const Containers::Optional<Containers::String> path = findTrashPath();
    return path ? text(*path) : "none";
}

/* What the shell's commands print, in the directory. */
std::string run(const TemporaryDirectory& directory, const std::string& commands) {
    return outputOf("cd '" + directory.path() + "' && { " + commands + "; } 2>&1");
}

TEST(FindTrashPath, LooksAtOnePlaceOnly) {
    const struct {
        const char* commands;
        std::optional<std::string> home, dataHome;
        const char* expected;
    } rows[]{
        // clang-format off
        {"mkdir -p .local/share/Trash/files", "@", std::nullopt, "@/.local/share/Trash/files"},
        {"mkdir -p .Trash/files", "@", std::nullopt, "none"},
        {"mkdir -p data/Trash/files .local/share/Trash", "@", "@/data", "@/data/Trash/files"},
        {"mkdir -p data/Trash", "@", "@/data", "@/data/Trash"},
        {"mkdir -p .local/share/Trash/files", "@", "@/data", "none"},
        {"mkdir -p .local/share/Trash", "@", "", "@/.local/share/Trash"},
        {"mkdir -p data/Trash/files", "@", "@/data/", "@/data//Trash/files"},
        {"mkdir data; touch data/Trash", "@", "@/data", "none"},
        {"mkdir -p data/Trash; touch data/Trash/files", "@", "@/data", "@/data/Trash/files"},
        {":", std::nullopt, std::nullopt, "none"},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.commands);
        const TemporaryDirectory directory;
        ASSERT_EQ(run(directory, row.commands), "");
        const auto inside = [&](const std::optional<std::string>& path) {
            return path ? std::optional{directory.expanded(*path)} : std::nullopt;
        };
        const ScopedVariable home{"HOME", inside(row.home)};
        const ScopedVariable data{"XDG_DATA_HOME", inside(row.dataHome)};
        const Messages messages;
        EXPECT_EQ(directory.shortened(trashPath()), row.expected);
        EXPECT_EQ(messages.text(),
                  row.home ? "" : "Utility::Path::homeDirectory(): $HOME not available\n");
    }
}

TEST(FindTrashPath, OfRootIsElsewhere) {
    const ScopedVariable data{"XDG_DATA_HOME", std::nullopt};
    const std::optional<std::string> found = resultWithMount("/root", [] {
        const std::pair<const char*, const char*> rows[]{{"/root", "/.local/share/Trash/files"},
                                                         {"/root/below", "/.Trash"},
                                                         {"/root", "/.Trash"}};
        std::string paths;
        for (const auto& [root, made] : rows) {
            fs::create_directories(std::string{root} + made);
            const ScopedVariable home{"HOME", root};
            paths += trashPath() + ' ';
        }
        return paths;
    });
    if (!found) {
        GTEST_SKIP() << "mounts are not allowed here, so /root cannot be replaced";
    }
    EXPECT_EQ(*found, "none none /root/.Trash ");
}

/* All files and links below the directory, with their sizes and targets, and the empty folders,
   with UUIDs made alike. */
std::string listing(const TemporaryDirectory& directory) {
    return run(directory, "find . -mindepth 1 -type f -printf '%P=%s ' -o -type l -printf "
                          "'%P->%l ' -o -empty -printf '%P/ ' | tr ' ' '\\n' | "
                          "sed -E 's/[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}/UUID/' | "
                          "LC_ALL=C sort | tr '\\n' ' '");
}

/* What became of a move of the files of those `names`, with @ for the path of the directory. */
std::string moveAll(const TemporaryDirectory& directory, const char* const names) {
    Containers::Array<Containers::String> paths;
    std::istringstream stream{names};
    for (std::string name; stream >> name;) {
        arrayAppend(paths, Containers::String{view(directory / name)});
    }
    const Messages messages;
    const std::string result = moveToTrash(paths) ? "moved" : "failed: ";
    return result + directory.shortened(messages.text());
}

std::string cannotMove(const std::string& from, const std::string& to, const std::string& error) {
    return "failed: Utility::Path::move(): can't move @/" + from + " to @/" + to + ": error " +
           error + '\n';
}

TEST(MoveToTrash, MovesOrDeletes) {
    const struct {
        const char *name, *commands, *paths;
        std::string result;
        const char* left;
    } rows[]{
        // clang-format off
        {"two of one name and a tree", "mkdir -p data/Trash/files", "a/one b/one tree", "moved",
         "a/ b/ data/Trash/files/one=5 data/Trash/files/oneUUID=6 "
         "data/Trash/files/tree/link->../a "},
        {"a link that leads nowhere is replaced",
         "mkdir -p data/Trash/files; ln -s nowhere data/Trash/files/one", "a/one", "moved",
         "a/ b/one=6 data/Trash/files/one=5 tree/link->../a "},
        {"a slash at the end loses the name", "mkdir -p data/Trash/files", "tree/", "moved",
         "a/one=5 b/one=6 data/Trash/files/UUID/link->../a "},
        {"the trash itself, which is looked for once",
         "mkdir -p data real/files; ln -s ../real data/Trash", "data/Trash a/one b/one",
         cannotMove("a/one", "data/Trash/files/one", "2 (No such file or directory)"),
         "a/one=5 b/one=6 data/ real/files/Trash->../real tree/link->../a "},
        {"deleted without trash", ":", "tree b/one", "moved", "a/one=5 b/ "},
        {"second missing without trash", ":", "a/one missing b/one", "failed: ",
         "a/ b/one=6 tree/link->../a "},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const TemporaryDirectory directory;
        const ScopedVariable data{"XDG_DATA_HOME", directory / "data"};
        const std::string files =
            "mkdir a b tree; printf first > a/one; printf second > b/one; ln -s ../a tree/link; ";
        ASSERT_EQ(run(directory, files + row.commands), "");
        EXPECT_EQ(moveAll(directory, row.paths), row.result);
        EXPECT_EQ(listing(directory), row.left);
    }
}

TEST(MoveToTrash, RefusesAnotherFileSystemAndLosesNothing) {
    const TemporaryDirectory directory;
    const ScopedVariable data{"XDG_DATA_HOME", directory.path()};
    ASSERT_EQ(run(directory, "mkdir -p Trash/files other"), "");
    const std::optional<std::string> result = resultWithMount(directory / "other", [&] {
        writeFile(directory / "other/file", "content");
        const std::string moved = moveAll(directory, "other/file");
        return moved + listing(directory);
    });
    if (!result) {
        GTEST_SKIP() << "mounts are not allowed here, so there is no second file system";
    }
    EXPECT_EQ(*result,
              cannotMove("other/file", "Trash/files/file", "18 (Invalid cross-device link)") +
                  "Trash/files/ other/file=7 ");
}

} // namespace
} // namespace VespermoorEngine::Test
