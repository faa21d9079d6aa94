#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iterator>

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "Failure.h"
#include "Files.h"
#include "Program.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

/* Runs in a directory with these files; @D stands for its path, in arguments and in what is
   expected. */
struct CommandRow {
    const char* name;
    std::vector<std::string> arguments;
    int exitCode;
    std::string output;
    std::string error;
};

const std::vector<std::pair<std::string, std::string>> files{
    {"scene.json",
     "{\"name\": \"Attic\", \"open\": true, \"scale\": 1.2399,\n \"parts\": [{\"id\": 7}]}\n"},
    {"more.json", "{\"name\": \"Cellar\", \"depth\": 2.5}"},
    {"broken.json", "{\n  \"a\": 1,\n  \"b\" 2\n}\n"},
    {"empty.json", ""},
    {"deep.json", std::string(1025, '[') + std::string(1025, ']')},
    {"good.tmpl", "{{ name }}: {{ depth }}{{ if open }} (open){{ end }}\n"},
    {"undefined.tmpl", "text {{ no.such.name }}\n"},
    {"twice.tmpl", "{{ x == 'y }}"},
    {"syntax.tmpl", "text {{ name\n"},
    {"nothing.tmpl", "{{ if 'no' }}x{{ end }}"},
};

std::string inDirectory(std::string text, const std::string& directory) {
    for (std::size_t at; (at = text.find("@D")) != std::string::npos;) {
        text.replace(at, 2, directory);
    }
    return text;
}

class HostCommandTest : public testing::TestWithParam<CommandRow> {};

TEST_P(HostCommandTest, Prints) {
    const TemporaryDirectory directory;
    for (const auto& [name, content] : files) {
        writeFile(directory / name, content);
    }
    std::vector<std::string> arguments;
    for (const std::string& argument : GetParam().arguments) {
        arguments.push_back(inDirectory(argument, directory.path()));
    }
    const ProgramRun run = runProgram(arguments);
    EXPECT_EQ(run.error, inDirectory(GetParam().error, directory.path()));
    EXPECT_EQ(run.output, GetParam().output);
    EXPECT_EQ(run.exitCode, GetParam().exitCode);
}

INSTANTIATE_TEST_SUITE_P(
    Json, HostCommandTest,
    testing::ValuesIn(std::initializer_list<CommandRow>{
        // clang-format off
        {"document", {"json", "@D/more.json"}, 0,
         "{\n    \"name\": \"Cellar\",\n    \"depth\": 2.5\n}\n", ""},
        {"pointer", {"json", "@D/scene.json", "--pointer", "/parts/0/id"}, 0, "7\n", ""},
        {"decimals", {"json", "@D/scene.json", "--pointer", "/scale", "--decimals", "2"}, 0,
         "1.23\n", ""},
        {"missing file", {"json", "@D/none.json"}, 1, "",
         "vespermoor-utils: @D/none.json: No such file or directory\n"},
        {"directory", {"json", "@D"}, 1, "", "vespermoor-utils: @D: Is a directory\n"},
        {"broken", {"json", "@D/broken.json"}, 1, "",
         "vespermoor-utils: @D/broken.json:3:7: Missing a colon after a name of object member\n"},
        {"empty", {"json", "@D/empty.json"}, 1, "",
         "vespermoor-utils: @D/empty.json:1:1: The document is empty\n"},
        {"too deep", {"json", "@D/deep.json"}, 1, "",
         "vespermoor-utils: @D/deep.json:1:1025: Nested deeper than 1024 levels\n"},
        {"pointer to nowhere", {"json", "@D/scene.json", "--pointer", "/parts/1"}, 1, "",
         "vespermoor-utils: @D/scene.json: Nothing at /parts/1\n"},
        {"no pointer", {"json", "@D/scene.json", "--pointer", "parts"}, 2, "",
         "--pointer: parts is no JSON Pointer\nRun with --help for more information.\n"},
        // clang-format on
    }),
    rowName<CommandRow>);

INSTANTIATE_TEST_SUITE_P(
    Render, HostCommandTest,
    testing::ValuesIn(std::initializer_list<CommandRow>{
        // clang-format off
        {"first scope wins", {"render", "@D/good.tmpl", "--data", "@D/scene.json", "@D/more.json"},
         0, "Attic: 2.5000 (open)\n", ""},
        {"other order",
         {"render", "@D/good.tmpl", "--data", "@D/more.json", "--data", "@D/scene.json"}, 0,
         "Cellar: 2.5000 (open)\n", ""},
        {"nothing", {"render", "@D/nothing.tmpl", "--data", "@D/more.json"}, 0, "", ""},
        {"undefined name", {"render", "@D/undefined.tmpl", "--data", "@D/more.json"}, 1, "",
         "vespermoor-utils: @D/undefined.tmpl: Undefined name no.such.name\n"},
        {"two reasons", {"render", "@D/twice.tmpl", "--data", "@D/more.json"}, 1, "",
         "vespermoor-utils: @D/twice.tmpl: Undefined name x; Unterminated string literal\n"},
        {"syntax error", {"render", "@D/syntax.tmpl", "--data", "@D/more.json"}, 1, "",
         "vespermoor-utils: @D/syntax.tmpl: Syntax error: Unterminated template directive\n"},
        {"missing template", {"render", "@D/x.tmpl", "--data", "@D/more.json"}, 1, "",
         "vespermoor-utils: @D/x.tmpl: No such file or directory\n"},
        {"broken data", {"render", "@D/good.tmpl", "--data", "@D/more.json", "@D/broken.json"}, 1,
         "",
         "vespermoor-utils: @D/broken.json:3:7: Missing a colon after a name of object member\n"},
        {"output in no directory",
         {"render", "@D/good.tmpl", "--data", "@D/scene.json", "@D/more.json", "--output",
         "@D/none/x"}, 1, "", "vespermoor-utils: @D/none/x: No such file or directory\n"},
        {"output on a full device",
         {"render", "@D/good.tmpl", "--data", "@D/scene.json", "@D/more.json", "--output",
         "/dev/full"}, 1, "", "vespermoor-utils: /dev/full: No space left on device\n"},
        // clang-format on
    }),
    rowName<CommandRow>);

INSTANTIATE_TEST_SUITE_P(
    JsonSet, HostCommandTest,
    testing::ValuesIn(std::initializer_list<CommandRow>{
        // clang-format off
        {"one member", {"json", "@D/more.json", "--set", "/name=\"Loft\""}, 0,
         "{\n    \"name\": \"Loft\",\n    \"depth\": 2.5\n}\n", ""},
        {"missing members are made",
         {"json", "@D/more.json", "--set", "/a/b~1c=null", "--pointer", "/a"}, 0,
         "{\n    \"b/c\": null\n}\n", ""},
        {"numbers keep their value",
         {"json", "@D/more.json", "--set", "/x=0.1", "--set", "/y=9007199254740993", "--set",
         "/x={\"f\": 0.1, \"y\": 9007199254740993}", "--pointer", "/x"}, 0,
         "{\n    \"f\": 0.1,\n    \"y\": 9007199254740993\n}\n", ""},
        {"arrays of every kind",
         {"json", "@D/more.json", "--set", "/a=[1,2]", "--set", "/a/-=[0.5]", "--set",
         "/a/3=[\"x\"]", "--set", "/a/4=[1,\"x\",0.1]", "--pointer", "/a/4"}, 0,
         "[\n    1,\n    \"x\",\n    0.1\n]\n", ""},
        {"below a string", {"json", "@D/more.json", "--set", "/name/first=1"}, 1, "",
         "vespermoor-utils: --set: Nothing can be made at /name/first\n"},
        {"no JSON", {"json", "@D/more.json", "--set", "/name=Loft"}, 1, "",
         "vespermoor-utils: --set /name:1:1: Invalid value\n"},
        {"no equals sign", {"json", "@D/more.json", "--set", "/name"}, 2, "",
         "--set: /name has no equals sign\nRun with --help for more information.\n"},
        {"no pointer", {"json", "@D/more.json", "--set", "name=1"}, 2, "",
         "--set: name is no JSON Pointer\nRun with --help for more information.\n"},
        // clang-format on
    }),
    rowName<CommandRow>);

INSTANTIATE_TEST_SUITE_P(
    Text, HostCommandTest,
    testing::ValuesIn(std::initializer_list<CommandRow>{
        // clang-format off
        {"tags", {"tags", "@D/good.tmpl", "--region", "{{ ", " }}:", "@D/undefined.tmpl"}, 0,
         "{{ text {{ no.such.name }}\n }}: {{ depth }}{{ if open }} (open){{ end }}\n", ""},
        {"tags in brackets and order",
         {"tags", "@D/scene.json", "--region", "[{", "}]", "@D/empty.json", "--region", "{\"n",
         "op", "@D/empty.json"}, 0, "{\"nopen\": true, \"scale\": 1.2399,\n \"parts\": [{}]}\n",
         ""},
        {"missing tag", {"tags", "@D/good.tmpl", "--region", "{{", "nowhere", "@D/empty.json"}, 1,
         "", "vespermoor-utils: @D/good.tmpl: missing tag 'nowhere'\n"},
        {"overlapping tags",
         {"tags", "@D/good.tmpl", "--region", "name", "open", "@D/empty.json", "--region", "depth",
         "end", "@D/empty.json"}, 1, "",
         "vespermoor-utils: @D/good.tmpl: overlapping tags: 'open' should appear before 'depth'\n"},
        {"missing content", {"tags", "@D/good.tmpl", "--region", "a", "b", "@D/none"}, 1, "",
         "vespermoor-utils: @D/none: No such file or directory\n"},
        // clang-format on
        {"kebab", {"case", "kebab", "XMLParser", "fooBar"}, 0, "xml-parser\nfoo-bar\n", ""},
        {"camel", {"case", "camel", "my-3d-model", "a b"}, 0, "My3dModel\nAB\n", ""},
        {"search finds nothing", {"search", "attics", "@D/scene.json"}, 1, "", ""},
    }),
    rowName<CommandRow>);

TEST(HostTest, APipeIsReadOnce) {
    const std::string line = std::string{"printf '\\357\\273\\277{\\n \"a\" 1}' | "} +
                             VESPERMOOR_PROGRAM + " json /dev/stdin 2>&1 | grep -qx " +
                             "'vespermoor-utils: /dev/stdin:2:6: Missing a colon after a name of "
                             "object member'";
    EXPECT_EQ(std::system(line.data()), 0);
}

TEST(HostTest, SearchTellsWhere) {
    const TemporaryDirectory directory;
    writeFile(directory / "a", "one\nTwo two\n\nno newline tWO");
    writeFile(directory / "b", "Two");
    const std::string a = directory / "a";
    const std::string b = directory / "b";
    EXPECT_EQ(runProgram({"search", "two", a, b}).output,
              a + ":4:2: Two two\n" + b + ":0:1: Two\n");
    EXPECT_EQ(runProgram({"search", "--all", "two", a}).output,
              a + ":4:2: Two two\n" + a + ":8:2: Two two\n" + a + ":24:4: no newline tWO\n");
}

TEST(HostTest, WrongUsage) {
    const std::vector<std::vector<std::string>> rows{{},
                                                     {"nonsense"},
                                                     {"json"},
                                                     {"json", "a", "--decimals", "0"},
                                                     {"render", "a"},
                                                     {"tags", "a"},
                                                     {"case", "x", "y"},
                                                     {"search", "", "a"},
                                                     {"generate", "a", "--watch", "--check"}};
    for (const std::vector<std::string>& arguments : rows) {
        const ProgramRun run = runProgram(arguments);
        EXPECT_EQ(run.exitCode, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(run.output, "");
        EXPECT_NE(run.error, "");
    }
}

/* What stands behind "vespermoor-utils" in the example of a command's help. */
std::vector<std::string> exampleArguments(const std::string& command) {
    const ProgramRun help = runProgram({command, "--help"});
    EXPECT_EQ(help.exitCode, 0);
    std::istringstream line{help.output.substr(help.output.rfind("vespermoor-utils ") + 17)};
    return {std::istream_iterator<std::string>{line}, {}};
}

TEST(HostTest, ExamplesOfTheHelpWork) {
    fs::current_path(VESPERMOOR_SOURCE_DIR);
    EXPECT_EQ(runProgram(exampleArguments("json")).output, "\"Ada\"\n");
    EXPECT_THAT(runProgram(exampleArguments("render")).output, HasSubstr("Hello Ada!"));
    EXPECT_THAT(runProgram(exampleArguments("tags")).output, HasSubstr("[components]Hello "));
    EXPECT_EQ(runProgram(exampleArguments("case")).output, "xml-parser\n");
    EXPECT_THAT(runProgram(exampleArguments("search")).output, HasSubstr(":0:1: Hello"));
    EXPECT_THAT(runProgram(exampleArguments("root")).output, HasSubstr("/examples/installation\n"));
    EXPECT_THAT(runProgram(exampleArguments("watch")).error, HasSubstr("watching "));
    const ProgramRun check = runProgram(exampleArguments("generate"));
    EXPECT_EQ(check.output + check.error, "") << "examples are out of date";
}

TEST(HostTest, FullStandardOutputIsAFailure) {
    const std::string line = std::string{VESPERMOOR_PROGRAM} + " json " + VESPERMOOR_SOURCE_DIR +
                             "/examples/greeting/user.json >/dev/full 2>/dev/null";
    EXPECT_EQ(std::system(line.data()), 256);
}

std::vector<std::string> namesIn(const std::string& directory) {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator{directory}) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

TEST(HostFilesTest, ReplaceKeepsPermissionsAndFollowsLinks) {
    const TemporaryDirectory directory;
    writeFile(directory / "real", "old");
    ASSERT_EQ(chmod((directory / "real").data(), 0640), 0);
    fs::create_symlink("real", directory / "link");
    Host::replaceFile(directory / "link", "new");
    EXPECT_TRUE(fs::is_symlink(directory / "link"));
    EXPECT_EQ(readFile(directory / "real"), "new");
    struct stat status {};
    ASSERT_EQ(stat((directory / "real").data(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);

    fs::create_symlink("fresh", directory / "dangling");
    umask(027);
    Host::replaceFile(directory / "dangling", "");
    EXPECT_TRUE(fs::is_symlink(directory / "dangling"));
    ASSERT_EQ(stat((directory / "fresh").data(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    Host::replaceFile(directory / std::string(255, 'x'), "");
    fs::remove(directory / std::string(255, 'x'));
    EXPECT_THAT(namesIn(directory.path()), ElementsAre("dangling", "fresh", "link", "real"));
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
    EXPECT_THAT(namesIn(directory.path()), ElementsAre("file"));
}

} // namespace
} // namespace VespermoorEngine::Test
