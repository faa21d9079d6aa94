#include "VespermoorEditor/Utils/System.h"

#include "Support.h"
#include "Tree.h"
#include "Unprivileged.h"

namespace VespermoorEngine::Test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

using ListFlag = Utility::Path::ListFlag;
using Names = std::vector<std::string>;

TEST(IsSymlink, TellsLinksFromWhatTheyLeadTo) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"file", "dir/", "toFile -> file", "toDir -> dir", "dangling -> none"});
    const std::pair<const char*, bool> rows[]{{"toFile", true}, {"toDir", true}, {"dangling", true},
                                              {"file", false},  {"dir", false},  {"toDir/", false}};
    const Messages messages;
    for (const auto& [name, expected] : rows) {
        EXPECT_EQ(isSymlink((root / name).data()), expected) << name;
    }
    EXPECT_EQ(messages.text(), "");
    EXPECT_FALSE(isSymlink(view(root / "none")));
    EXPECT_EQ(root.shortened(messages.text()),
              "isSymlink(): Unable to stat path @/none : No such file or directory\n");
}

const VisitFlags all = VisitFlag::IncludeRoot | VisitFlag::Recursive | VisitFlag::FollowSymlinks;
const VisitFlags recursive = VisitFlag::Recursive;
const VisitFlags withRoot = VisitFlag::IncludeRoot | VisitFlag::Recursive;
const Utility::Path::ListFlags everything = ListFlag::SkipDotAndDotDot;
const Utility::Path::ListFlags directories =
    ListFlag::SkipDotAndDotDot | ListFlag::SkipFiles | ListFlag::SkipSpecial;

/* A visitor that notes the paths below the root and goes on for as long as `next` says. */
auto noting(const TemporaryDirectory& root, Names& visited, bool (*const next)(const fs::path&)) {
    return Function<bool(Containers::StringView)>{
        Corrade::DefaultInit, [&root, &visited, next](const Containers::StringView path) {
            visited.push_back(text(path).substr(root.path().size() + 1));
            EXPECT_EQ(path.data()[path.size()], '\0');
            return next(path.data());
        }};
}

TEST(VisitPath, GoesThroughTheTreeInOrder) {
    const struct {
        const char* name;
        Names entries;
        const char* start;
        Utility::Path::ListFlags listFlags;
        VisitFlags visitFlags;
        Names visited;
    } rows[]{
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
    for (const auto& row : rows) {
        const TemporaryDirectory root;
        makeTree(root.path(), row.entries);
        Names visited;
        const Messages messages;
        const std::string start = root / row.start;
        EXPECT_TRUE(visitPath(start.data(),
                              noting(root, visited, [](const fs::path&) { return true; }),
                              row.listFlags, row.visitFlags));
        EXPECT_EQ(visited, row.visited) << row.name;
        EXPECT_EQ(messages.text(), "") << row.name;
    }
}

TEST(VisitPath, LetsTheVisitorEndTheWalkAndChangeTheTree) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"a", "b"});
    const auto refuse = [](const fs::path&) { return false; };
    const auto replace = [](const fs::path& path) {
        writeFile(path.string() + ".new", "");
        return fs::remove(path);
    };
    Names visited;
    const std::string start = root.path(), none = root / "none";
    EXPECT_FALSE(visitPath(none.data(), noting(root, visited, refuse), everything, withRoot));
    EXPECT_FALSE(visitPath(start.data(), noting(root, visited, refuse), everything, withRoot));
    EXPECT_TRUE(visitPath(start.data(), noting(root, visited, replace), everything, recursive));
    EXPECT_THAT(visited, ElementsAre("b", "b", "a"));
}

TEST(DeleteRecursive, RemovesTheTreeAndNothingBeside) {
    const TemporaryDirectory root;
    makeTree(root.path(),
             {"keep/x", "r/a/b/c", "r/empty/", "r/out -> ../keep", "r/none -> gone", "r/a/up -> ..",
              "start -> keep", "r/-rf/a b", "r/a\nb/it's \"q\"", "r/\xff/\xfe"});
    const Messages messages;
    EXPECT_TRUE(deleteRecursive((root / "r").data()));
    EXPECT_THAT(tree(root.path()), ElementsAre("keep/", "keep/x", "start -> keep"));
    EXPECT_TRUE(deleteRecursive((root / "start").data()));
    EXPECT_THAT(tree(root.path()), ElementsAre("keep/", "keep/x"));
    EXPECT_FALSE(deleteRecursive((root / "start").data()));
    EXPECT_EQ(messages.text(), "");
}

TEST(CopyRecursive, Arrives) {
    const struct {
        const char* name;
        Names before;
        const char *source, *destination;
        Names result;
    } rows[]{
        // clang-format off
        {"empty directories", {"s/a/f", "s/e/", "s/g"}, "s", "d", {"a/", "a/f", "e/", "g"}},
        {"merge", {"s/a/f", "d/a/old", "d/b"}, "s", "d", {"a/", "a/f", "a/old", "b"}},
        {"links are looked through", {"o/x", "s/dir -> ../o", "s/file -> ../o/x", "s/two -> ../o"},
         "s", "d", {"dir/", "dir/x", "file", "two/", "two/x"}},
        {"cycle", {"s/a/f", "s/a/l -> .."}, "s", "d", {"a/", "a/f", "a/l/"}},
        {"cycle outside of the source", {"o/p/l -> ..", "s/a -> ../o"}, "s", "d",
         {"a/", "a/p/", "a/p/l/"}},
        {"destination inside", {"s/a/f", "s/g"}, "s", "s/x/y/d", {"a/", "a/f", "g"}},
        {"inside by way of what is missing", {"s/a/f"}, "s", "s/x/../d", {"a/", "a/f"}},
        {"inside through a link", {"d/", "s/l -> ../d", "s/f"}, "s", "d", {"f"}},
        {"onto itself", {"s/a/f", "l -> s"}, "s", "l", {"a/", "a/f"}},
        {"odd names", {"s/-rf/a b", "s/a\nb/it's \"q\"", "s/\xff/\xfe"}, "s", "d",
         {"-rf/", "-rf/a b", "a\nb/", "a\nb/it's \"q\"", "\xff/", "\xff/\xfe"}},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const TemporaryDirectory root;
        makeTree(root.path(), row.before);
        const Messages messages;
        EXPECT_TRUE(copyRecursive((root / row.source).data(), (root / row.destination).data()));
        EXPECT_EQ(messages.text(), "");
        const std::string destination = fs::canonical(root / row.destination);
        EXPECT_THAT(tree(destination), ElementsAreArray(row.result));
        for (const std::string& entry : row.before) {
            if (entry.back() != '/' && entry.find(" -> ") == std::string::npos) {
                EXPECT_EQ(readFile(root / entry), entry);
            }
        }
        for (const std::string& entry : row.result) {
            if (entry.back() == 'f' || entry.back() == '\xfe') {
                EXPECT_EQ(readFile(destination + '/' + entry), "s/" + entry);
            }
        }
    }
}

TEST(CopyRecursive, FailsWhereAFileCannotBeCopied) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"file", "dangling/l -> gone", "s/f", "taken/f/", "same/f -> ../s/f",
                           "full/f -> /dev/full"});
    const std::vector<std::string> before = tree(root.path());
    const std::pair<const char*, const char*> rows[]{
        {"file", "d"}, {"none", "d"}, {"s", "taken"}, {"s", "file"}, {"s", "same"}};
    const Messages messages;
    for (const auto& [source, destination] : rows) {
        EXPECT_FALSE(copyRecursive((root / source).data(), (root / destination).data()));
    }
    EXPECT_EQ(tree(root.path()), before);
    EXPECT_EQ(readFile(root / "file") + readFile(root / "s/f"), "files/f");
    EXPECT_FALSE(copyRecursive((root / "dangling").data(), (root / "d").data()));
    /* Corrade's own copy takes a full device for a success. */
    EXPECT_EQ(copyRecursive((root / "s").data(), (root / "full").data()),
              Utility::Path::copy((root / "s/f").data(), "/dev/full"));
}

/* The file in the locked directory is the deepest and so the first that is to be removed; a
   directory that cannot be listed stays empty in the copy. */
TEST(UnreadableDirectory, StopsTheDeletionAndIsEmptyInTheCopy) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"s/closed/x", "s/f", "t/a", "t/locked/x", "t/z"});
    fs::permissions(root.path(), fs::perms::all);
    fs::permissions(root / "t", fs::perms::all);
    fs::permissions(root / "t/locked",
                    fs::perms::owner_all | fs::perms::others_read | fs::perms::others_exec);
    fs::permissions(root / "s/closed", fs::perms::none);
    EXPECT_EQ(unprivileged([&] {
                  const Messages messages;
                  const bool copied = copyRecursive((root / "s").data(), (root / "d").data());
                  return copied + 2 * deleteRecursive((root / "t").data());
              }),
              1);
    fs::permissions(root / "s/closed", fs::perms::all);
    EXPECT_THAT(tree(root / "d"), ElementsAre("closed/", "f"));
    EXPECT_THAT(tree(root / "t"), ElementsAre("a", "locked/", "locked/x", "z"));
}

} // namespace
} // namespace VespermoorEngine::Test
