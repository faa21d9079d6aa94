#include <regex>

#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/StringIterable.h>

#include "Processes.h"
#include "Support.h"
#include "Tree.h"
#include "VespermoorEditor/Utils/System.h"

namespace VespermoorEngine::Test {
namespace {

using testing::ElementsAre;
using Names = std::vector<std::string>;
using Place = std::optional<std::string>;

std::string trashPath() {
    const Containers::Optional<Containers::String> path = findTrashPath();
    return path ? text(*path) : "none";
}

/* With @ for the directory of the test. */
TEST(FindTrashPath, LooksAtOnePlaceOnly) {
    const Place none;
    const std::tuple<Names, Place, Place, const char*> rows[]{
        {{".local/share/Trash/files/"}, "@", none, "@/.local/share/Trash/files"},
        {{".Trash/files/"}, "@", none, "none"},
        {{"data/Trash/files/", ".local/share/Trash/"}, "@", "@/data", "@/data/Trash/files"},
        {{"data/Trash/"}, "@", "@/data", "@/data/Trash"},
        {{".local/share/Trash/files/"}, "@", "@/data", "none"},
        {{".local/share/Trash/"}, "@", "", "@/.local/share/Trash"},
        {{"data/Trash/files/"}, "@", "@/data/", "@/data//Trash/files"},
        {{"data/Trash"}, "@", "@/data", "none"},
        {{"data/Trash/files"}, "@", "@/data", "@/data/Trash/files"},
        {{}, none, none, "none"}};
    for (const auto& [entries, homePlace, dataPlace, expected] : rows) {
        const TemporaryDirectory directory;
        makeTree(directory.path(), entries);
        const auto inside = [&](const Place& path) {
            return path ? Place{directory.expanded(*path)} : none;
        };
        const ScopedVariable home{"HOME", inside(homePlace)};
        const ScopedVariable data{"XDG_DATA_HOME", inside(dataPlace)};
        const Messages messages;
        EXPECT_EQ(directory.shortened(trashPath()), expected) << testing::PrintToString(entries);
        EXPECT_EQ(messages.text(),
                  homePlace ? "" : "Utility::Path::homeDirectory(): $HOME not available\n");
    }
}

TEST(FindTrashPath, OfRootIsElsewhere) {
    const ScopedVariable data{"XDG_DATA_HOME", std::nullopt};
    const ScopedVariable home{"HOME", "/root"};
    const Place found = resultWithMount("/root", [] {
        std::string paths;
        for (const char* const made : {"/root/.local/share/Trash/files", "/root/.Trash"}) {
            fs::create_directories(made);
            paths += trashPath() + ' ';
        }
        return paths;
    });
    if (!found) {
        GTEST_SKIP() << "mounts are not allowed here, so /root cannot be replaced";
    }
    EXPECT_EQ(*found, "none /root/.Trash ");
}

/* The result of a move of those entries, and the messages, with @ for the directory. */
std::string moveAll(const TemporaryDirectory& directory, const Names& names) {
    Containers::Array<Containers::String> paths;
    for (const std::string& name : names) {
        arrayAppend(paths, Containers::String{view(directory / name)});
    }
    const Messages messages;
    const std::string result = moveToTrash(paths) ? "moved" : "failed: ";
    return result + directory.shortened(messages.text());
}

/* The tree with every UUID as `UUID`. */
Names treeOf(const TemporaryDirectory& directory) {
    const std::regex uuid{"[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"};
    Names names = tree(directory.path());
    for (std::string& name : names) {
        name = std::regex_replace(name, uuid, "UUID");
    }
    return names;
}

class MoveToTrash : public testing::Test {
protected:
    MoveToTrash() { makeTree(directory.path(), {"a/one", "b/one", "tree/link -> ../a"}); }

    const TemporaryDirectory directory;
    const ScopedVariable data{"XDG_DATA_HOME", directory / "data"};
    const std::string files = directory / "data/Trash/files";
};

TEST_F(MoveToTrash, GivesATakenNameAUuid) {
    makeTree(files, {"tree -> nowhere"});
    EXPECT_EQ(moveAll(directory, {"a/one", "b/one", "tree/"}), "moved");
    EXPECT_EQ(readFile(files + "/one"), "a/one");
    EXPECT_THAT(treeOf(directory),
                ElementsAre("a/", "b/", "data/", "data/Trash/", "data/Trash/files/",
                            "data/Trash/files/UUID/", "data/Trash/files/UUID/link -> ../a",
                            "data/Trash/files/one", "data/Trash/files/oneUUID",
                            "data/Trash/files/tree -> nowhere"));
}

TEST_F(MoveToTrash, ReplacesALinkThatLeadsNowhere) {
    makeTree(files, {"one -> nowhere"});
    EXPECT_EQ(moveAll(directory, {"a/one"}), "moved");
    EXPECT_EQ(readFile(files + "/one"), "a/one");
}

TEST_F(MoveToTrash, LooksForTheTrashOnceAndStopsAtAFailure) {
    makeTree(directory.path(), {"real/files/", "data/Trash -> ../real"});
    EXPECT_EQ(moveAll(directory, {"data/Trash", "a/one", "b/one"}),
              "failed: Utility::Path::move(): can't move @/a/one to @/data/Trash/files/one: "
              "error 2 (No such file or directory)\n");
    EXPECT_THAT(treeOf(directory),
                ElementsAre("a/", "a/one", "b/", "b/one", "data/", "real/", "real/files/",
                            "real/files/Trash -> ../real", "tree/", "tree/link -> ../a"));
}

TEST_F(MoveToTrash, DeletesIfThereIsNone) {
    EXPECT_EQ(moveAll(directory, {"tree", "b/one"}), "moved");
    EXPECT_THAT(treeOf(directory), ElementsAre("a/", "a/one", "b/"));
    EXPECT_EQ(moveAll(directory, {"missing", "a/one"}), "failed: ");
    EXPECT_THAT(treeOf(directory), ElementsAre("a/", "a/one", "b/"));
}

TEST_F(MoveToTrash, RefusesAnotherFileSystemAndLosesNothing) {
    fs::create_directories(files);
    const Place result = resultWithMount(directory / "b", [&] {
        writeFile(directory / "b/file", "content");
        return moveAll(directory, {"b/file"}) + readFile(directory / "b/file");
    });
    if (!result) {
        GTEST_SKIP() << "mounts are not allowed here, so there is no second file system";
    }
    EXPECT_EQ(*result, "failed: Utility::Path::move(): can't move @/b/file to "
                       "@/data/Trash/files/file: error 18 (Invalid cross-device link)\ncontent");
    EXPECT_TRUE(fs::is_empty(files));
}

} // namespace
} // namespace VespermoorEngine::Test
