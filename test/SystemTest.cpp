#include "VespermoorEditor/Utils/System.h"

#include <csignal>
#include <regex>

#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/Pair.h>
#include <Corrade/Containers/StringIterable.h>
#include <sys/resource.h>

#include "Processes.h"
#include "Support.h"
#include "Tree.h"
#include "VespermoorEditor/Utils/EditorUtils.h"

namespace VespermoorEngine::Test {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

using ListFlag = Utility::Path::ListFlag;
using Names = std::vector<std::string>;

/* Splits a list at its commas; list() is the inverse. */
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

TEST(IsSymlink, TellsLinksFromTheirTargets) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"dir/", "toDir -> dir", "dangling -> none"});
    const std::pair<const char*, bool> rows[]{
        {"toDir", true}, {"dangling", true}, {"dir", false}, {"toDir/", false}, {"none", false}};
    const Messages messages;
    for (const auto& [name, expected] : rows) {
        EXPECT_EQ(isSymlink((root / name).data()), expected) << name;
    }
    EXPECT_EQ(root.shortened(messages.text()),
              "isSymlink(): Unable to stat path @/none : No such file or directory\n");
}

const VisitFlags all = VisitFlag::IncludeRoot | VisitFlag::Recursive | VisitFlag::FollowSymlinks;
const VisitFlags recursive = VisitFlag::Recursive;
const VisitFlags withRoot = VisitFlag::IncludeRoot | VisitFlag::Recursive;
const Utility::Path::ListFlags everything = ListFlag::SkipDotAndDotDot;
const Utility::Path::ListFlags directories =
    ListFlag::SkipDotAndDotDot | ListFlag::SkipFiles | ListFlag::SkipSpecial;

/* A visitor that notes the paths below the root and continues for as long as `next` says. */
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

TEST(VisitPath, VisitsTheTreeInOrder) {
    EXPECT_EQ(visits("r/a/x/1, r/b/2, r/c", everything, withRoot),
              "r/a/x/1, r/b/2, r/a/x, r/c, r/b, r/a, r");
    EXPECT_EQ(visits("r/a/x, r/b", everything, VisitFlag::IncludeRoot), "r/b, r/a, r");
    EXPECT_EQ(visits("r/a/b/, r/a/f, r/g, r/l -> a, r/h -> g, r/n -> gone", directories, recursive),
              "r/a/b, r/n, r/l, r/a");
}

TEST(VisitPath, FollowsLinksThatFormNoCycle) {
    EXPECT_EQ(visits("d/x, r -> d", everything, withRoot), "r");
    EXPECT_EQ(visits("d/x, r -> d, d/none -> gone", everything, all), "r/x, r/none, r");
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

TEST(DeleteRecursive, RemovesTheTreeAndNothingElse) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"keep/x", "r/a/b/c", "r/empty/", "r/out -> ../keep", "r/none -> gone",
                           "r/a/up -> ..", "start -> keep"});
    EXPECT_TRUE(deleteRecursive((root / "r").data()));
    EXPECT_EQ(list(tree(root.path())), "keep/, keep/x, start -> keep");
    EXPECT_TRUE(deleteRecursive((root / "start").data()));
    EXPECT_EQ(list(tree(root.path())), "keep/, keep/x");
    EXPECT_FALSE(deleteRecursive((root / "start").data()));
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

TEST(CopyRecursive, MergesAndFollowsLinks) {
    EXPECT_EQ(copied("s/a/f, s/e/, s/g, d/a/old, d/b", "s", "d"), "a/, a/f, a/old, b, e/, g");
    EXPECT_EQ(copied("o/x, s/dir -> ../o, s/file -> ../o/x, s/two -> ../o", "s", "d"),
              "dir/, dir/x, file, two/, two/x");
    EXPECT_EQ(copied("s/a/f, s/a/l -> ..", "s", "d"), "a/, a/f, a/l/");
    EXPECT_EQ(copied("o/p/l -> .., s/a -> ../o", "s", "d"), "a/, a/p/, a/p/l/");
    /* Destinations inside the source, not visible in the path, and the source itself. */
    EXPECT_EQ(copied("s/a/f, s/g", "s", "s/x/y/d"), "a/, a/f, g");
    EXPECT_EQ(copied("s/a/f", "s", "s/x/../d"), "a/, a/f");
    EXPECT_EQ(copied("d/, s/l -> ../d, s/f", "s", "d"), "f");
    EXPECT_EQ(copied("s/a/f, l -> s", "s", "l"), "a/, a/f");
}

TEST(CopyRecursive, FailsIfAFileCannotBeCopied) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"file", "dangling/l -> gone", "s/f", "taken/f/", "same/f -> ../s/f",
                           "full/f -> /dev/full"});
    const Names before = tree(root.path());
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

/* The roots of two such mounts have the same inode number. */
TEST(CopyRecursive, TellsFileSystemsApart) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"s/", "d/"});
    const auto copy = [&] {
        writeFile(root / "s/f", "");
        copyRecursive((root / "s").data(), (root / "d").data());
        return list(tree(root / "d"));
    };
    expectWithMounts({root / "s", root / "d"}, copy, "f");
}

/* The file in the locked directory is the deepest, so it is removed first. A directory that cannot
   be listed stays empty in the copy. */
TEST(UnreadableDirectory, StopsTheDeletionAndIsEmptyInTheCopy) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"s/closed/x", "s/f", "t/a", "t/locked/x", "t/z"});
    fs::permissions(root.path(), fs::perms::all);
    fs::permissions(root / "t", fs::perms::all);
    fs::permissions(root / "t/locked",
                    fs::perms::owner_all | fs::perms::others_read | fs::perms::others_exec);
    fs::permissions(root / "s/closed", fs::perms::none);
    const auto run = [&] {
        const Messages messages;
        const bool isCopied = copyRecursive((root / "s").data(), (root / "d").data());
        return isCopied && !deleteRecursive((root / "t").data());
    };
    EXPECT_TRUE(unprivileged(run));
    fs::permissions(root / "s/closed", fs::perms::all);
    EXPECT_EQ(list(tree(root / "d")), "closed/, f");
    EXPECT_EQ(list(tree(root / "t")), "a, locked/, locked/x, z");
}

std::string trashPath() {
    const Containers::Optional<Containers::String> path = findTrashPath();
    return path ? text(*path) : "none";
}

/* @ is the directory of the test, which is the home directory. */
TEST(FindTrashPath, UsesOneTrashOnly) {
    const std::tuple<const char*, const char*, const char*> rows[]{
        {".local/share/Trash/files/", "", "@/.local/share/Trash/files"},
        {".local/share/Trash/", "", "@/.local/share/Trash"},
        {".Trash/files/", "", "none"},
        {".local/share/Trash/files/", "@/data", "none"},
        {"data/Trash/files/", "@/data/", "@/data//Trash/files"},
        {"data/Trash/files", "@/data", "@/data/Trash/files"},
        {"data/Trash", "@/data", "none"}};
    for (const auto& [entry, dataHome, expected] : rows) {
        const TemporaryDirectory directory;
        makeTree(directory.path(), {entry});
        const ScopedVariable home{"HOME", directory.path()};
        const ScopedVariable data{"XDG_DATA_HOME", directory.expanded(dataHome)};
        const Messages messages;
        EXPECT_EQ(directory.shortened(trashPath()), expected) << entry;
        EXPECT_EQ(messages.text(), "");
    }
}

TEST(FindTrashPath, DiffersForRoot) {
    const ScopedVariable data{"XDG_DATA_HOME", std::nullopt};
    const ScopedVariable home{"HOME", "/root"};
    const auto find = [] {
        fs::create_directories("/root/.local/share/Trash/files");
        const std::string before = trashPath();
        fs::create_directory("/root/.Trash");
        return before + ' ' + trashPath();
    };
    expectWithMounts({"/root"}, find, "none /root/.Trash");
}

TEST(HomeDirectory, HoldsTheAppDirectoryAndMayBeMissing) {
    const TemporaryDirectory directory;
    const ScopedVariable data{"XDG_DATA_HOME", std::nullopt};
    const ScopedVariable home{"HOME", directory.path()};
    EXPECT_EQ(text(appDirectory()), directory / ".VespermoorEngine");
    EXPECT_TRUE(fs::is_empty(directory.path()));
    const ScopedVariable noHome{"HOME", std::nullopt};
    const Messages messages;
    EXPECT_EQ(text(appDirectory()) + trashPath(), "none");
    const std::string message = "Utility::Path::homeDirectory(): $HOME not available\n";
    EXPECT_EQ(messages.text(), message + message);
}

class MoveToTrash : public testing::Test {
protected:
    MoveToTrash() { makeTree(directory.path(), {"a/one", "b/one"}); }

    /* The result of a move of those entries, and the messages, with @ for the directory. */
    std::string moveAll(const Names& names) const {
        Containers::Array<Containers::String> paths;
        for (const std::string& name : names) {
            arrayAppend(paths, Containers::String{view(directory / name)});
        }
        const Messages messages;
        const std::string result = moveToTrash(paths) ? "moved" : "failed: ";
        return result + directory.shortened(messages.text());
    }

    /* The tree with every UUID as `UUID`. */
    std::string entries() const {
        const std::regex uuid{"[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"};
        return std::regex_replace(list(tree(directory.path())), uuid, "UUID");
    }

    const TemporaryDirectory directory;
    const ScopedVariable data{"XDG_DATA_HOME", directory / "data"};
};

TEST_F(MoveToTrash, AppendsAUuidToATakenNameAndReplacesADanglingLink) {
    makeTree(directory.path(), {"c/one", "dir/link -> ../a", "x", "data/Trash/files/x -> nowhere"});
    EXPECT_EQ(moveAll({"a/one", "b/one", "c/one", "dir/", "x"}), "moved");
    EXPECT_EQ(readFile(directory / "data/Trash/files/one"), "a/one");
    EXPECT_EQ(entries(),
              "a/, b/, c/, data/, data/Trash/, data/Trash/files/, data/Trash/files/UUID/, "
              "data/Trash/files/UUID/link -> ../a, data/Trash/files/one, "
              "data/Trash/files/oneUUID, data/Trash/files/oneUUID, data/Trash/files/x");
}

TEST_F(MoveToTrash, FindsTheTrashOnceAndStopsAtAFailure) {
    makeTree(directory.path(), {"real/files/", "data/Trash -> ../real"});
    EXPECT_EQ(moveAll({"data/Trash", "a/one", "b/one"}),
              "failed: Utility::Path::move(): can't move @/a/one to @/data/Trash/files/one: "
              "error 2 (No such file or directory)\n");
    EXPECT_EQ(entries(), "a/, a/one, b/, b/one, data/, real/, real/files/, "
                         "real/files/Trash -> ../real");
}

TEST_F(MoveToTrash, DeletesIfThereIsNone) {
    EXPECT_EQ(moveAll({"b"}), "moved");
    EXPECT_EQ(moveAll({"missing", "a/one"}), "failed: ");
    EXPECT_EQ(entries(), "a/, a/one");
}

TEST_F(MoveToTrash, RefusesAnotherFileSystemAndLosesNothing) {
    fs::create_directories(directory / "data/Trash/files");
    const auto move = [&] {
        writeFile(directory / "b/file", "content");
        return moveAll({"b/file"}) + readFile(directory / "b/file");
    };
    expectWithMounts({directory / "b"}, move,
                     "failed: Utility::Path::move(): can't move @/b/file to "
                     "@/data/Trash/files/file: error 18 (Invalid cross-device link)\ncontent");
    EXPECT_TRUE(fs::is_empty(directory / "data/Trash/files"));
}

/* A home with a profile of its own, so that the login shell has nothing else to print. */
class Shell : public testing::Test {
protected:
    Shell() { writeFile(directory / ".profile", "variable=of_a_login_shell"); }

    const TemporaryDirectory directory;
    const ScopedVariable home{"HOME", directory.path()};
    const ScopedCurrentDirectory current{directory.path()};
};

using Captured = std::pair<int, std::string>;

/* Wait status and output. */
Captured captured(const std::string& command, const char* const in = "") {
    Containers::String output = "of an earlier command";
    const int status = runShellCommandCapture(view(command), output, in);
    EXPECT_EQ(output.data()[output.size()], '\0');
    return {status, text(output)};
}

TEST_F(Shell, GivesOutputAndWaitStatus) {
    EXPECT_EQ(captured(R"(printf "a\000b\000")"), Captured(0, "a\0b\0"s));
    EXPECT_EQ(captured("echo out; echo error >&2; exit 3"), Captured(3 << 8, "out\nerror\n"));
    EXPECT_EQ(captured("echo {} {0} }{ $variable"), Captured(0, "{} {0} }{ of_a_login_shell\n"));
    EXPECT_EQ(captured("echo a'; echo 'b"), Captured(0, "a\nb\n"));
    for (const std::size_t size : {0, 8192, 64 << 20}) {
        const std::string command = "head -c " + std::to_string(size) + " /dev/zero";
        EXPECT_TRUE(captured(command) == Captured(0, std::string(size, '\0'))) << command;
    }
}

TEST_F(Shell, RunsInTheDirectoryOrNotAtAll) {
    fs::create_directory("{} a b");
    EXPECT_EQ(captured("pwd"), Captured(0, directory.path() + '\n'));
    EXPECT_EQ(captured("pwd", "{} a b"), Captured(0, directory / "{} a b\n"));
    testing::internal::CaptureStderr();
    const auto [status, output] = captured("pwd", "missing");
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    EXPECT_NE(status, 0);
    EXPECT_EQ(output, "");
}

TEST_F(Shell, GivesAStatusOfItsOwnIfThereIsNone) {
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{3, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const Captured notStarted = captured("true");
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(notStarted, Captured(1, "of an earlier command"));

    /* The kernel itself reaps the children of a process that ignores their end. */
    const sighandler_t handler = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(captured("echo new"), Captured(-1, "new\n"));
    std::signal(SIGCHLD, handler);
}

TEST(SetShellEnvironment, KeepsExistingValuesAndContinuesAfterAFailure) {
    using Variable = Containers::Pair<Containers::String, Containers::String>;
    const ScopedVariable kept{"VESPERMOOR_KEPT", "before"};
    const ScopedVariable last{"VESPERMOOR_LAST", std::nullopt};
    const auto set = [](std::initializer_list<Variable> variables) {
        return setShellEnvironment(Containers::Array<Variable>{Corrade::InPlaceInit, variables});
    };
    EXPECT_EQ(set({{"VESPERMOOR_KEPT", "after"}}), 0);
    EXPECT_EQ(set({{"VESPERMOOR=BAD", "value"}, {"VESPERMOOR_LAST", "value"}}), -1);
    EXPECT_STREQ(std::getenv("VESPERMOOR_KEPT"), "before");
    EXPECT_STREQ(std::getenv("VESPERMOOR_LAST"), "value");
}

TEST(ChangeDirectory, ChangesItOrNothing) {
    const ScopedCurrentDirectory current{fs::current_path()};
    const TemporaryDirectory directory;
    const std::string longer = directory.path() + "missing";
    EXPECT_EQ(changeDirectory(view(longer).prefix(directory.path().size())), 0);
    EXPECT_EQ(changeDirectory("missing"), -1);
    EXPECT_EQ(fs::current_path(), directory.path());
}

/* Program, directory and arguments of the `xdg-open` that `launch` runs, if any. @ is the current
   directory, which has `a folder`. */
Names launched(const std::function<void()>& launch) {
    const Stubs stubs{{"bin/xdg-open"}};
    fs::create_directory("a folder");
    testing::internal::CaptureStderr();
    launch();
    testing::internal::GetCapturedStderr();
    return stubs.runs();
}

TEST(Launch, PassesArgumentsToTheDesktop) {
    const std::string program = "@/bin/xdg-open";
    EXPECT_THAT(launched([] { openBrowser("https://a.example/{}?b=c"); }),
                ElementsAre(program, "@", "https://a.example/{}?b=c"));
    EXPECT_THAT(launched([] { openBrowser("a b;true"); }), ElementsAre(program, "@", "a", "b"));
    EXPECT_THAT(launched([] { openWithSystemFilebrowser("a {}  'b'"); }),
                ElementsAre(program, "@", "a {}  'b'"));
    EXPECT_THAT(launched([] { openWithSystemDefault("a  b.txt", "a folder"); }),
                ElementsAre(program, "@/a folder", "a  b.txt"));
    EXPECT_THAT(launched([] { openWithSystemDefault("a", ""); }), ElementsAre(program, "@", "a"));
    EXPECT_THAT(launched([] { openWithSystemDefault("a", "missing"); }), ElementsAre());
}

/* An empty start would find both decoys near the current directory. */
TEST(ExecutablesPath, IsEmptyAndNoRootIsSearchedIfTheSystemCannotTell) {
    EXPECT_EQ(text(Utils::executablesPath()), fs::read_symlink("/proc/self/exe").parent_path());
    const TemporaryDirectory directory;
    makeTree(directory.path(), {"a/shaders/phong", "share/vespermoorengine/x"});
    const ScopedCurrentDirectory current{directory / "a"};
    const auto find = [] {
        const Messages messages;
        const std::string path = text(Utils::executablesPath());
        const char* const root = Utils::findEditorRoot() ? "found " : "none ";
        return path + root + messages.text();
    };
    const std::string message =
        "Utility::Path::executableLocation(): can't read /proc/self/exe: error 2 "
        "(No such file or directory)\n";
    expectWithMounts({"/proc"}, find, "none " + message + message);
}

/* @ is the directory of the test, which is the current one. */
TEST(FindEditorRoot, SearchesUpwardsAndThenTheInstallation) {
    const std::tuple<std::vector<std::string>, std::string, std::string> rows[]{
        {{"a/shaders/x", "a/share/vespermoorengine/x"}, "@/a/bin", "@/a"},
        {{"a/shaders/x"}, "a/bin", "a"},
        {{"a/share/vespermoorengine/x"}, "a/bin", "@/a/share/vespermoorengine"},
        {{"a/share/vespermoorengine"}, "@/a/bin", "@/a/share/vespermoorengine"},
        {{"a/share/vespermoorengine/x"}, "@/a/bin/b", "none"}};
    for (const auto& [entries, start, expected] : rows) {
        const TemporaryDirectory directory;
        makeTree(directory.path(), entries);
        const ScopedCurrentDirectory current{directory.path()};
        const auto root = Utils::findEditorRoot(view(directory.expanded(start)));
        EXPECT_EQ(root ? directory.shortened(text(*root)) : "none", expected) << start;
    }
}

} // namespace
} // namespace VespermoorEngine::Test
