#include <csignal>
#include <iterator>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Failure.h"
#include "Files.h"
#include "Program.h"
#include "Support.h"
#include "Tree.h"

namespace VespermoorEngine::Test {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

constexpr std::pair<const char*, const char*> files[]{
    {"scene.json",
     "{\"name\": \"Attic\", \"open\": true, \"scale\": 1.2399,\n \"parts\": [{\"id\": 7}]}\n"},
    {"more.json", "{\"name\": \"Cellar\", \"depth\": 2.5}"},
    {"broken.json", "{\n  \"a\": 1,\n  \"b\" 2\n}\n"},
    {"empty.json", ""},
    {"good.tmpl", "{{ name }}: {{ depth }}{{ if open }} (open){{ end }}\n"},
    {"undefined.tmpl", "text {{ no.such.name }}\n"},
    {"twice.tmpl", "{{ x == 'y }}"},
    {"syntax.tmpl", "text {{ name\n"},
    {"lines", "one\nTwo two\n\nno newline tWO"},
    {"line", "Two"},
    {"[b]", "{\"depth\": 1.5}"},
    {"huge.json", "[8324234798232463278461.5e300]"},
    {"mark.json", "\xef\xbb{}"},
};

/* A directory with these files that is the current one. */
class HostCommandTest : public testing::Test {
protected:
    HostCommandTest() {
        for (const auto& [name, content] : files) {
            writeFile(directory / name, content);
        }
        writeFile(directory / "deep.json", std::string(1025, '[') + std::string(1025, ']'));
        fs::create_symlink("loop", directory / "loop");
    }

    /* What a run with the arguments, between which blanks stand, prints to standard error. */
    std::string errorOf(const std::string& arguments, const int exitCode,
                        const std::string& output) {
        std::istringstream words{arguments};
        const ProgramRun run = runProgram({std::istream_iterator<std::string>{words}, {}});
        EXPECT_EQ(run.output, output) << arguments;
        EXPECT_EQ(run.exitCode, exitCode) << arguments;
        return run.error;
    }

    const TemporaryDirectory directory;
    const ScopedCurrentDirectory current{directory.path()};
};

TEST_F(HostCommandTest, Prints) {
    const std::pair<const char*, const char*> rows[]{
        // clang-format off
        {"json more.json", "{\n    \"name\": \"Cellar\",\n    \"depth\": 2.5\n}\n"},
        {"json scene.json --pointer /parts/0/id", "7\n"},
        {"json scene.json --pointer /scale --decimals 2", "1.23\n"},
        {"json more.json --set /name=\"Loft\" --pointer /name", "\"Loft\"\n"},
        {"json more.json --set #/name%00x=1 --pointer /name", "\"Cellar\"\n"},
        /* Missing members are made, and numbers keep their value. */
        {"json more.json --set /a/b~1c=null --pointer /a", "{\n    \"b/c\": null\n}\n"},
        {"json more.json --set /x=null --set /x/y/z=0.1 --pointer /x/y/z", "0.1\n"},
        {"json more.json --set /x=9007199254740993 --pointer /x", "9007199254740993\n"},
        {"json more.json --set /x={\"f\":0.1} --pointer /x/f", "0.1\n"},
        {"json more.json --set /a=[1,2] --set /a/-=[0.5] --set /a/3=[\"x\"] "
         "--set /a/4=[1,\"x\",0.1] --set /a/-/b=7 --pointer /a",
         "[\n    1,\n    2,\n    [\n        0.5\n    ],\n    [\n        \"x\"\n    ],\n    [\n"
         "        1,\n        \"x\",\n        0.1\n    ],\n    {\n        \"b\": 7\n    }\n]\n"},
        {"render good.tmpl --data scene.json more.json", "Attic: 2.5000 (open)\n"},
        {"render good.tmpl --data more.json --data scene.json", "Cellar: 2.5000 (open)\n"},
        {"render good.tmpl --data [b] scene.json", "Attic: 1.5000 (open)\n"},
        {"json more.json --pointer /depth --output made", ""}, {"json made", "2.5\n"},
        {"tags scene.json --region [{ }] empty.json --region {\"n op line",
         "{\"nTwoopen\": true, \"scale\": 1.2399,\n \"parts\": [{}]}\n"},
        {"case kebab XMLParser fooBar", "xml-parser\nfoo-bar\n"},
        {"case camel my-3d-model ab", "My3dModel\nAb\n"},
        // clang-format on
    };
    for (const auto& [arguments, output] : rows) {
        EXPECT_EQ(errorOf(arguments, 0, output), "");
    }
}

TEST_F(HostCommandTest, SaysInOneLineWhatFailed) {
    const std::pair<const char*, const char*> rows[]{
        // clang-format off
        {"json no\33\x9bne\u009b\u202e.json",
         "no\\x1b\\x9bne\\xc2\\x9b\\xe2\\x80\\xae.json: No such file or directory"},
        {"json n\xe4me.json", "n\xe4me.json: No such file or directory"},
        {"json none.json", "none.json: No such file or directory"},
        {"json /", "/: Is a directory"},
        {"json broken.json", "broken.json:3:7: Missing a colon after a name of object member"},
        {"json deep.json", "deep.json:1:1025: Nested deeper than 1024 levels"},
        {"json huge.json", "huge.json:1:2: Number too big to be stored in double"},
        {"json more.json --set /x=8324234798232463278461.5e300",
         "--set /x:1:1: Number too big to be stored in double"},
        {"json mark.json", "mark.json:1:1: Invalid value"},
        {"json scene.json --pointer /parts/1", "scene.json: Nothing at /parts/1"},
        {"json more.json --pointer #/name%00x", "more.json: Nothing at #/name%00x"},
        {"json more.json --set /a=[1] --set /a/00=1", "--set: Nothing can be made at /a/00"},
        {"json more.json --set /name/first=1", "--set: Nothing can be made at /name/first"},
        {"json more.json --set /a=[1] --set /a/2=1", "--set: Nothing can be made at /a/2"},
        {"json more.json --set /a=[1] --set /a/b=1", "--set: Nothing can be made at /a/b"},
        {"json more.json --set /name=Loft", "--set /name:1:1: Invalid value"},
        {"render undefined.tmpl --data more.json", "undefined.tmpl:1:6: Undefined name no.such.name"},
        {"render twice.tmpl --data more.json",
         "twice.tmpl:1:1: Undefined name x; Unterminated string literal"},
        {"render syntax.tmpl --data more.json",
         "syntax.tmpl:1:6: Syntax error: Unterminated template directive"},
        {"render line --data more.json --output none/x", "none/x: No such file or directory"},
        {"render line --data more.json --output /dev/full", "/dev/full: No space left on device"},
        {"tags good.tmpl --region {{ nowhere line", "good.tmpl: missing tag 'nowhere'"},
        {"tags good.tmpl --region name open line --region depth end line",
         "good.tmpl: overlapping tags: 'open' should appear before 'depth'"},
        {"tags good.tmpl --region a b none", "none: No such file or directory"},
        {"tags line --region %% [/a] line", "line: missing tag '%%'"},
        {"json more.json --output loop", "loop: Too many levels of symbolic links"},
        // clang-format on
    };
    for (const auto& [arguments, error] : rows) {
        EXPECT_EQ(errorOf(arguments, 1, ""), "vespermoor-utils: "s + error + "\n");
    }
    std::string deep;
    for (int i = 0; i != 1024; ++i) {
        deep += "/a";
    }
    EXPECT_EQ(errorOf("json more.json --set " + deep + "=[]", 1, ""),
              "vespermoor-utils: --set: Nested deeper than 1024 levels\n");
}

TEST_F(HostCommandTest, WrongUsage) {
    const std::pair<const char*, const char*> rows[]{
        // clang-format off
        {"", ""}, {"nonsense", ""}, {"json", ""}, {"json a --decimals 0", ""}, {"render a", ""},
        {"tags a", ""}, {"case x y", ""}, {"watch . --for nan", ""}, {"generate a --watch --check", ""},
        {"json more.json --pointer parts", "--pointer: parts is no JSON Pointer\n"},
        {"json more.json --set /name", "--set: /name has no equals sign\n"},
        {"json more.json --set name=1", "--set: name is no JSON Pointer\n"},
        // clang-format on
    };
    for (const auto& [arguments, error] : rows) {
        EXPECT_THAT(errorOf(arguments, 2, ""),
                    EndsWith(error + "Run with --help for more information.\n"s));
    }
}

TEST(HostTest, ExamplesOfTheHelpWork) {
    const std::pair<const char*, const char*> rows[]{
        // clang-format off
        {"json", "\"Ada\"\n"}, {"render", "Hello Ada!"}, {"tags", "[components]Hello "},
        {"case", "xml-parser\n"}, {"search", ":1:1: Hello"}, {"watch", "watching "},
        {"root", "/examples/installation\n"},
        /* Fails where the examples are out of date. */
        {"generate", ""},
        // clang-format on
    };
    const ScopedCurrentDirectory current{VESPERMOOR_SOURCE_DIR};
    for (const auto& [command, printed] : rows) {
        const std::string help = runProgram({command, "--help"}).output;
        std::istringstream words{help.substr(help.rfind("vespermoor-utils ") + 17)};
        const ProgramRun run = runProgram({std::istream_iterator<std::string>{words}, {}});
        EXPECT_EQ(run.exitCode, 0) << command;
        EXPECT_THAT(run.output + run.error, HasSubstr(printed)) << command;
    }
}

/* The real program, copied into a tree such as an installation makes, with @ for that. */
TEST_F(HostCommandTest, FindsTheDataRoot) {
    makeTree(directory.path(), {"bin/", "elsewhere/shaders/"});
    fs::copy_file(VESPERMOOR_PROGRAM, "bin/program");
    fs::create_directory_symlink(fs::path{VESPERMOOR_PROGRAM}.parent_path() / "../lib", "lib");
    const std::string none = ": no data root is found from here\nexit 1\n";
    const struct {
        const char *made, *start;
        std::string expected;
    } rows[]{
        // clang-format off
        {"", "", "vespermoor-utils: @/bin" + none},
        {"", "/proc/self", "vespermoor-utils: /proc/self" + none},
        {"", "'@/elsewhere/bin'", "data root: @/elsewhere\nexit 0\n"},
        {"", "elsewhere/bin/", "data root: @/elsewhere\nexit 0\n"},
        {"share/vespermoorengine", "", "data root: @/share/vespermoorengine\nexit 0\n"},
        {"shaders", "", "data root: @\nexit 0\n"}, {"", "''", "data root: @\nexit 0\n"},
        // clang-format on
    };
    for (const auto& row : rows) {
        fs::create_directories(directory / row.made);
        const std::string command = "bin/program root "s + row.start + " 2>&1; echo \"exit $?\"";
        EXPECT_EQ(directory.shortened(outputOf(directory.expanded(command))),
                  "executables: @/bin\n" + row.expected);
    }
}

TEST_F(HostCommandTest, AFullStandardOutputFailsAndAPipeIsReadOnce) {
    const std::string program = VESPERMOOR_PROGRAM;
    EXPECT_EQ(outputOf(program + " json more.json 2>&1 >/dev/full"),
              "vespermoor-utils: standard output: No space left on device\n");
    EXPECT_EQ(
        outputOf("printf '\\357\\273\\277{\\n \"a\" 1}' | " + program + " json /dev/stdin 2>&1"),
        "vespermoor-utils: /dev/stdin:2:6: Missing a colon after a name of object member\n");
}

TEST(HostFilesTest, ReplaceKeepsPermissionsAndFollowsLinks) {
    const TemporaryDirectory directory;
    const std::string longName(255, 'x');
    makeTree(directory.path(), {"real", "link -> real", "dangling -> fresh"});
    fs::permissions(directory / "real", fs::perms{0604});
    umask(027);
    for (const auto& [name, mode] :
         {std::pair{"link"s, 0604}, {"dangling"s, 0640}, {longName, 0640}}) {
        Host::replaceFile(directory / name, view(name));
        EXPECT_EQ(readFile(directory / name), name);
        EXPECT_EQ(int(fs::status(directory / name).permissions()), mode) << name;
    }
    EXPECT_THAT(tree(directory.path()),
                ElementsAre("dangling -> fresh", "fresh", "link -> real", "real", longName));
}

TEST(HostFilesTest, WritesIntoAPipeByTheNameOfItsDescriptor) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    Host::replaceFile("/dev/fd/" + std::to_string(ends[1]), "new");
    char bytes[4]{};
    EXPECT_EQ(read(ends[0], bytes, sizeof(bytes)), 3);
    EXPECT_STREQ(bytes, "new");
    close(ends[0]);
    close(ends[1]);
}

TEST(HostFilesTest, ReplaceThatFailsLeavesTheOldFile) {
    const TemporaryDirectory directory;
    writeFile(directory / "file", "old");
    EXPECT_THROW(Host::replaceFile(directory.path(), "new"), Host::Failure);

    /* A limit on the size of files fails in the middle of the writing, as a full disk does. */
    struct rlimit before {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const struct rlimit small { 4096, before.rlim_max };
    std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    try {
        Host::replaceFile(directory / "file", std::string(10000, 'x'));
        ADD_FAILURE() << "nothing thrown";
    } catch (const Host::Failure& failure) {
        EXPECT_EQ(failure.what(), directory / "file: File too large");
    }
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_EQ(readFile(directory / "file"), "old");
    EXPECT_THAT(tree(directory.path()), ElementsAre("file"));
}

} // namespace
} // namespace VespermoorEngine::Test
