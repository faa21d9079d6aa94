#include "VespermoorEditor/Utils/System.h"

#include <regex>

#include "Processes.h"
#include "Support.h"
#include "Tree.h"

namespace VespermoorEngine::Test {
namespace {

using testing::ElementsAre;

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

/* The entries of a list with commas, and the other way round. */
Names listed(const std::string& text) {
    const std::regex comma{", "};
    return {std::sregex_token_iterator{text.begin(), text.end(), comma, -1}, {}};
}

std::string list(const Names& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
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

/* The visits of a walk from `start` through a tree of the entries. */
std::string visits(const std::string& entries, const Utility::Path::ListFlags listFlags,
                   const VisitFlags visitFlags, const char* const start = "r") {
    const TemporaryDirectory root;
    makeTree(root.path(), listed(entries));
    Names visited;
    const Messages messages;
    EXPECT_TRUE(visitPath((root / start).data(),
                          noting(root, visited, [](const fs::path&) { return true; }), listFlags,
                          visitFlags));
    EXPECT_EQ(messages.text(), "");
    return list(visited);
}

TEST(VisitPath, GoesThroughTheTreeInOrder) {
    EXPECT_EQ(visits("r/a/x, r/a/y, r/b", everything, withRoot), "r/a/y, r/a/x, r/b, r/a, r");
    EXPECT_EQ(visits("r/a/x/1, r/b/2, r/c", everything, recursive),
              "r/a/x/1, r/b/2, r/a/x, r/c, r/b, r/a");
    EXPECT_EQ(visits("r/a/x, r/b", everything, VisitFlag::IncludeRoot), "r/b, r/a, r");
    EXPECT_EQ(visits("r", everything, withRoot), "r");
    EXPECT_EQ(visits("r/a/b/, r/a/f, r/g, r/l -> a, r/h -> g", directories, recursive),
              "r/a/b, r/l, r/a");
}

TEST(VisitPath, FollowsLinksThatAreNoCycle) {
    EXPECT_EQ(visits("r/a/x, r/l -> a, r/none -> gone", everything, recursive),
              "r/a/x, r/none, r/l, r/a");
    EXPECT_EQ(visits("d/x, r -> d", everything, withRoot), "r");
    EXPECT_EQ(visits("d/x, r -> d", everything, all), "r/x, r");
    EXPECT_EQ(visits("d/x, r/a -> ../d, r/b -> ../d, r/c -> a", everything, all),
              "r/c/x, r/b/x, r/a/x, r/c, r/b, r/a, r");
    EXPECT_EQ(visits("r/a/l -> ../../r", everything, all), "r/a/l, r/a, r");
    EXPECT_EQ(visits("d/e/l -> .., r/a -> ../d", everything, all), "r/a/e/l, r/a/e, r/a, r");
    /* A link to a directory above the start is followed once. */
    EXPECT_EQ(visits("w/r/up -> ..", everything, all, "w/r"), "w/r/up/r/up, w/r/up/r, w/r/up, w/r");
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
    makeTree(root.path(), {"keep/x", "r/a/b/c", "r/empty/", "r/out -> ../keep", "r/none -> gone",
                           "r/a/up -> ..", "start -> keep", "r/-rf/a b", "r/a\nb/\xff"});
    const Messages messages;
    EXPECT_TRUE(deleteRecursive((root / "r").data()));
    EXPECT_THAT(tree(root.path()), ElementsAre("keep/", "keep/x", "start -> keep"));
    EXPECT_TRUE(deleteRecursive((root / "start").data()));
    EXPECT_THAT(tree(root.path()), ElementsAre("keep/", "keep/x"));
    EXPECT_FALSE(deleteRecursive((root / "start").data()));
    EXPECT_EQ(messages.text(), "");
}

/* The destination after a copy of `source` to it in a tree of the entries. Each file `f` of the
   result is a copy of the one in `s`, which is unchanged. */
std::string copied(const std::string& entries, const char* const source,
                   const char* const destination) {
    const TemporaryDirectory root;
    makeTree(root.path(), listed(entries));
    const Messages messages;
    EXPECT_TRUE(copyRecursive((root / source).data(), (root / destination).data()));
    EXPECT_EQ(messages.text(), "");
    const std::string copy = fs::canonical(root / destination);
    for (const std::string& entry : tree(copy)) {
        if (entry.back() == 'f') {
            EXPECT_EQ(readFile(root / "s/" + entry), "s/" + entry);
            EXPECT_EQ(readFile(copy + '/' + entry), "s/" + entry);
        }
    }
    return list(tree(copy));
}

TEST(CopyRecursive, Arrives) {
    EXPECT_EQ(copied("s/a/f, s/e/, s/g", "s", "d"), "a/, a/f, e/, g");
    EXPECT_EQ(copied("s/a/f, d/a/old, d/b", "s", "d"), "a/, a/f, a/old, b");
    EXPECT_EQ(copied("s/-rf/a b, s/a\nb", "s", "d"), "-rf/, -rf/a b, a\nb");
    /* Links are looked through, also out of the source, and cycles end. */
    EXPECT_EQ(copied("o/x, s/dir -> ../o, s/file -> ../o/x, s/two -> ../o", "s", "d"),
              "dir/, dir/x, file, two/, two/x");
    EXPECT_EQ(copied("s/a/f, s/a/l -> ..", "s", "d"), "a/, a/f, a/l/");
    EXPECT_EQ(copied("o/p/l -> .., s/a -> ../o", "s", "d"), "a/, a/p/, a/p/l/");
    /* Into the source, in ways that do not show it, and onto it. */
    EXPECT_EQ(copied("s/a/f, s/g", "s", "s/x/y/d"), "a/, a/f, g");
    EXPECT_EQ(copied("s/a/f", "s", "s/x/../d"), "a/, a/f");
    EXPECT_EQ(copied("d/, s/l -> ../d, s/f", "s", "d"), "f");
    EXPECT_EQ(copied("s/a/f, l -> s", "s", "l"), "a/, a/f");
}

TEST(CopyRecursive, FailsIfAFileCannotBeCopied) {
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

/* The file in the locked directory is the deepest, and so the first to be removed. A
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
