#include "VespermoorEditor/Utils/System.h"

#include <Corrade/Containers/String.h>
#include <gmock/gmock.h>

#include "Support.h"
#include "Tree.h"
#include "Unprivileged.h"

namespace VespermoorEngine::Test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::ElementsAreArray;

using ListFlag = Utility::Path::ListFlag;
using Visitor = Function<bool(Containers::StringView)>;

/* Names that nothing may split, quote, escape or decode. */
const std::vector<std::string> oddNames{"-rf", "a b", "a\nb", "it's \"quoted\"", "\xff\xfe"};

TEST(IsSymlink, TellsLinksFromWhatTheyLeadTo) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"file", "dir/", "toFile -> file", "toDir -> dir", "dangling -> none"});
    Messages messages;
    for (const char* const name : {"toFile", "toDir", "dangling"}) {
        EXPECT_TRUE(isSymlink((root / name).data())) << name;
    }
    for (const char* const name : {"file", "dir", "toDir/"}) {
        EXPECT_FALSE(isSymlink((root / name).data())) << name;
    }
    EXPECT_EQ(messages.text(), "");
    const std::string none = root / "none";
    EXPECT_FALSE(isSymlink({none.data(), none.size()}));
    EXPECT_EQ(messages.text(),
              "isSymlink(): Unable to stat path " + none + " : No such file or directory\n");
}

struct Walk {
    const char* name;
    std::vector<std::string> entries;
    const char* start;
    Utility::Path::ListFlags listFlags;
    VisitFlags visitFlags;
    std::vector<std::string> visited;
};

void PrintTo(const Walk& row, std::ostream* const out) {
    *out << row.name;
}

const VisitFlags all = VisitFlag::IncludeRoot | VisitFlag::Recursive | VisitFlag::FollowSymlinks;
const VisitFlags recursive = VisitFlag::Recursive;
const VisitFlags withRoot = VisitFlag::IncludeRoot | VisitFlag::Recursive;
const Utility::Path::ListFlags everything = ListFlag::SkipDotAndDotDot;
const Utility::Path::ListFlags directories =
    ListFlag::SkipDotAndDotDot | ListFlag::SkipFiles | ListFlag::SkipSpecial;

const Walk walks[]{
    // clang-format off
    {"breadth first, backwards", {"r/a/x", "r/a/y", "r/b"}, "r", everything, withRoot,
     {"r/a/y", "r/a/x", "r/b", "r/a", "r"}},
    {"deeper levels come before shallower ones", {"r/a/x/1", "r/b/2", "r/c"}, "r", everything,
     recursive, {"r/a/x/1", "r/b/2", "r/a/x", "r/c", "r/b", "r/a"}},
    {"sort order of the caller is not taken", {"r/a", "r/b"}, "r",
     everything | ListFlag::SortDescending, recursive, {"r/b", "r/a"}},
    {"not recursive", {"r/a/x", "r/b"}, "r", everything, VisitFlag::IncludeRoot,
     {"r/b", "r/a", "r"}},
    {"plain file", {"r"}, "r", everything, withRoot, {"r"}},
    {"directories alone", {"r/a/b/", "r/a/f", "r/g", "r/l -> a", "r/h -> g"}, "r", directories,
     recursive, {"r/a/b", "r/l", "r/a"}},
    {"links are leaves", {"r/a/x", "r/l -> a", "r/none -> gone"}, "r", everything, recursive,
     {"r/a/x", "r/none", "r/l", "r/a"}},
    {"start link is a leaf", {"d/x", "r -> d"}, "r", everything, withRoot, {"r"}},
    {"start link is followed", {"d/x", "r -> d"}, "r", everything, all, {"r/x", "r"}},
    {"links are followed, however many lead to one place",
     {"d/x", "r/a -> ../d", "r/b -> ../d", "r/c -> a"}, "r", everything, all,
     {"r/c/x", "r/b/x", "r/a/x", "r/c", "r/b", "r/a", "r"}},
    {"cycle to the start", {"r/a/l -> ../../r"}, "r", everything, all, {"r/a/l", "r/a", "r"}},
    {"cycle outside of the tree", {"d/e/l -> ..", "r/a -> ../d"}, "r", everything, all,
     {"r/a/e/l", "r/a/e", "r/a", "r"}},
    {"link to above the start is followed once", {"w/r/up -> .."}, "w/r", everything, all,
     {"w/r/up/r/up", "w/r/up/r", "w/r/up", "w/r"}},
    // clang-format on
};

class Walks : public testing::TestWithParam<Walk> {};

TEST_P(Walks, Visit) {
    const Walk& walk = GetParam();
    const TemporaryDirectory root;
    makeTree(root.path(), walk.entries);
    const std::string prefix = root / "";
    std::vector<std::string> visited;
    Messages messages;
    EXPECT_TRUE(visitPath((prefix + walk.start).data(),
                          Visitor{Corrade::DefaultInit,
                                  [&](const Containers::StringView path) {
                                      visited.push_back(text(path).substr(prefix.size()));
                                      EXPECT_EQ(path.data()[path.size()], '\0');
                                      return true;
                                  }},
                          walk.listFlags, walk.visitFlags));
    EXPECT_THAT(visited, ElementsAreArray(walk.visited));
    EXPECT_EQ(messages.text(), "");
}

INSTANTIATE_TEST_SUITE_P(, Walks, testing::ValuesIn(walks), rowName<Walk>);

TEST(VisitPath, ContinuedWalkKnowsTheWayFromItsStart) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"r/a/b/toStart -> ../..", "r/a/b/toSelf -> ."});
    int visited = 0;
    const auto count = [&visited](Containers::StringView) { return ++visited != 0; };
    const std::string start = root / "r", path = root / "r/a/b";
    EXPECT_TRUE(visitPathBelow(start.data(), path.data(), Visitor{Corrade::DefaultInit, count},
                               everything, all));
    EXPECT_EQ(visited, 3);
}

TEST(VisitPath, EndsWithTheFirstFalse) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"a", "b"});
    int calls = 0;
    const auto refuse = [&calls](Containers::StringView) { return ++calls == 0; };
    EXPECT_FALSE(
        visitPath(root.path().data(), Visitor{Corrade::DefaultInit, refuse}, everything, withRoot));
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(visitPath((root / "none").data(), Visitor{Corrade::DefaultInit, refuse},
                           everything, withRoot));
    EXPECT_EQ(calls, 1);
}

TEST(VisitPath, VisitorMayChangeTheTree) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"a/x", "b"});
    std::vector<std::string> visited;
    EXPECT_TRUE(visitPath(root.path().data(),
                          Visitor{Corrade::DefaultInit,
                                  [&](const Containers::StringView path) {
                                      visited.push_back(text(path).substr(root.path().size()));
                                      writeFile(root / ("new" + std::to_string(visited.size())),
                                                "");
                                      return fs::remove(text(path));
                                  }},
                          everything, recursive));
    EXPECT_THAT(visited, ElementsAre("/a/x", "/b", "/a"));
    EXPECT_THAT(tree(root.path()), ElementsAre("new1", "new2", "new3"));
}

TEST(DeleteRecursive, RemovesTheTreeAndNothingBeside) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"keep/x", "r/a/b/c", "r/empty/", "r/out -> ../keep", "r/none -> gone",
                           "r/a/up -> ..", "start -> keep"});
    for (const std::string& name : oddNames) {
        writeFile(root / "r/odd/" + name, "");
    }
    Messages messages;
    EXPECT_TRUE(deleteRecursive((root / "r").data()));
    EXPECT_THAT(tree(root.path()), ElementsAre("keep/", "keep/x", "start -> keep"));
    EXPECT_TRUE(deleteRecursive((root / "start").data()));
    EXPECT_THAT(tree(root.path()), ElementsAre("keep/", "keep/x"));
    EXPECT_FALSE(deleteRecursive((root / "start").data()));
    EXPECT_EQ(messages.text(), "");
}

TEST(DeleteRecursive, StopsAtWhatCannotBeRemoved) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"a", "locked/x", "z"});
    fs::permissions(root.path(), fs::perms::all);
    fs::permissions(root / "locked",
                    fs::perms::owner_all | fs::perms::others_read | fs::perms::others_exec);
    EXPECT_EQ(unprivileged([&] {
                  Messages messages;
                  return deleteRecursive(root.path().data()) ? 1 : 0;
              }),
              0);
    /* The file in the locked directory is the deepest and so comes first. */
    EXPECT_THAT(tree(root.path()), ElementsAre("a", "locked/", "locked/x", "z"));
}

struct Copy {
    const char* name;
    std::vector<std::string> before;
    const char* source;
    const char* destination;
    std::vector<std::string> result;
};

void PrintTo(const Copy& row, std::ostream* const out) {
    *out << row.name;
}

const Copy copies[]{
    {"files and empty directories", {"s/a/f", "s/e/", "s/g"}, "s", "d", {"a/", "a/f", "e/", "g"}},
    {"merge", {"s/a/f", "d/a/old", "d/b"}, "s", "d", {"a/", "a/f", "a/old", "b"}},
    // clang-format off
    {"links are looked through", {"o/x", "s/dir -> ../o", "s/file -> ../o/x", "s/two -> ../o"}, "s",
     "d", {"dir/", "dir/x", "file", "two/", "two/x"}},
    {"cycle", {"s/a/f", "s/a/l -> .."}, "s", "d", {"a/", "a/f", "a/l/"}},
    {"cycle outside of the source", {"o/p/l -> ..", "s/a -> ../o"}, "s", "d",
     {"a/", "a/p/", "a/p/l/"}},
    // clang-format on
    {"destination inside", {"s/a/f", "s/g"}, "s", "s/d", {"a/", "a/f", "g"}},
    {"destination deep inside", {"s/a/f", "s/g"}, "s", "s/x/y/d", {"a/", "a/f", "g"}},
    {"destination inside by way of what is missing", {"s/a/f"}, "s", "s/x/../d", {"a/", "a/f"}},
    {"destination inside through a link", {"d/", "s/l -> ../d", "s/f"}, "s", "d", {"f"}},
    {"onto itself", {"s/a/f", "l -> s"}, "s", "l", {"a/", "a/f"}},
};

class Copies : public testing::TestWithParam<Copy> {};

TEST_P(Copies, Arrive) {
    const Copy& copy = GetParam();
    const TemporaryDirectory root;
    makeTree(root.path(), copy.before);
    Messages messages;
    EXPECT_TRUE(copyRecursive((root / copy.source).data(), (root / copy.destination).data()));
    EXPECT_EQ(messages.text(), "");
    EXPECT_THAT(tree(fs::canonical(root / copy.destination)), ElementsAreArray(copy.result));
    for (const std::string& entry : copy.before) {
        if (entry.back() != '/' && entry.find(" -> ") == std::string::npos) {
            EXPECT_EQ(readFile(root / entry), entry);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, Copies, testing::ValuesIn(copies), rowName<Copy>);

TEST(CopyRecursive, KeepsNamesAndBytes) {
    const TemporaryDirectory root;
    for (const std::string& name : oddNames) {
        writeFile(root / "s/" + name + "/" + name, name + '\0' + name);
    }
    ASSERT_TRUE(copyRecursive((root / "s").data(), (root / "d").data()));
    EXPECT_EQ(tree(root / "d"), tree(root / "s"));
    for (const std::string& name : oddNames) {
        EXPECT_EQ(readFile(root / "d/" + name + "/" + name), name + '\0' + name);
    }
}

TEST(CopyRecursive, FailsWhereAFileCannotBeCopied) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"file", "dangling/l -> gone", "s/f", "taken/f/", "same/f -> ../s/f",
                           "full/f -> /dev/full"});
    Messages messages;
    EXPECT_FALSE(copyRecursive((root / "file").data(), (root / "d").data()));
    EXPECT_FALSE(copyRecursive((root / "none").data(), (root / "d").data()));
    EXPECT_FALSE(fs::exists(root / "d"));
    EXPECT_FALSE(copyRecursive((root / "dangling").data(), (root / "d").data()));
    for (const char* const destination : {"taken", "file", "same"}) {
        EXPECT_FALSE(copyRecursive((root / "s").data(), (root / destination).data()));
    }
    EXPECT_EQ(readFile(root / "file"), "file");
    EXPECT_EQ(readFile(root / "s/f"), "s/f");
    /* Corrade's own copy takes a full device for a success. */
    EXPECT_EQ(copyRecursive((root / "s").data(), (root / "full").data()),
              Utility::Path::copy((root / "s/f").data(), "/dev/full"));
}

TEST(CopyRecursive, DirectoryThatCannotBeListedStaysEmpty) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"s/closed/x", "s/f"});
    fs::permissions(root.path(), fs::perms::all);
    fs::permissions(root / "s/closed", fs::perms::none);
    EXPECT_EQ(unprivileged([&] {
                  Messages messages;
                  return copyRecursive((root / "s").data(), (root / "d").data()) ? 0 : 1;
              }),
              0);
    fs::permissions(root / "s/closed", fs::perms::all);
    EXPECT_THAT(tree(root / "d"), ElementsAre("closed/", "f"));
}

} // namespace
} // namespace VespermoorEngine::Test
