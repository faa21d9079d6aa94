#include <csignal>
#include <filesystem>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Program.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

constexpr const char* manifest = R"({"outputs": [
    {"file": "whole.txt", "data": ["first.json", "second.json"], "template": "whole.tmpl"},
    {"file": "list.txt", "data": ["second.json"], "template": "item.tmpl", "each": "/items"},
    {"file": "keys.txt", "data": ["second.json"], "template": "key.tmpl", "each": "/named"},
    {"file": "region.txt", "data": ["first.json"], "regions": [
        {"start": "[b]", "end": "[/b]", "template": "whole.tmpl"},
        {"start": "[a]", "end": "[/a]", "template": "value.tmpl", "each": "/words"}]}]})";

/* A directory with a manifest that makes four files, one of them by its regions. */
class GenerateTest : public testing::Test {
protected:
    GenerateTest() {
        writeFile(directory / "manifest.json", manifest);
        writeFile(directory / "first.json",
                  R"({"name": "first", "words": ["x", "y"], "only": "here"})");
        writeFile(directory / "second.json",
                  R"({"name": "second", "items": [{"name": "i0"}, {"id": "i1"}],
                      "named": {"k": {"id": "1"}, "l": {"id": "2"}}})");
        writeFile(directory / "whole.tmpl", "{{ name }} {{ only }}\n");
        writeFile(directory / "item.tmpl", "<{{ name }}>");
        writeFile(directory / "key.tmpl", "{{ @key }}={{ id }};");
        writeFile(directory / "value.tmpl", "({{ @value }})");
        writeFile(directory / "region.txt", "1[a]old[/a]2[b]old[/b]3");
    }

    ProgramRun generate(const std::vector<std::string>& flags = {}) {
        std::vector<std::string> arguments{"generate", directory / "manifest.json"};
        arguments.insert(arguments.end(), flags.begin(), flags.end());
        return runProgram(arguments);
    }

    std::string content(const std::string& name) { return readFile(directory / name); }

    std::string lines(const std::string& before, const std::vector<std::string>& names) {
        std::string result;
        for (const std::string& name : names) {
            result += before + (directory / name) + "\n";
        }
        return result;
    }

    /* What one failure prints: the file, and why. */
    std::string failure(const std::string& name, const std::string& reason) {
        return "vespermoor-utils: " + (directory / name) + ": " + reason + "\n";
    }

    const TemporaryDirectory directory;
    const std::vector<std::string> all{"whole.txt", "list.txt", "keys.txt", "region.txt"};
};

TEST_F(GenerateTest, MakesAllFiles) {
    const ProgramRun run = generate();
    EXPECT_EQ(run.error, "");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, lines("wrote ", all));
    EXPECT_EQ(content("whole.txt"), "first here\n");
    EXPECT_EQ(content("list.txt"), "<i0><second>");
    EXPECT_EQ(content("keys.txt"), "k=1;l=2;");
    EXPECT_EQ(content("region.txt"), "1[a](x)(y)[/a]2[b]first here\n[/b]3");
}

TEST_F(GenerateTest, DoesNotTouchWhatIsCurrent) {
    generate();
    const timespec early[2]{{1000, 0}, {1000, 0}};
    struct stat before {};
    for (const std::string& name : all) {
        ASSERT_EQ(utimensat(AT_FDCWD, (directory / name).data(), early, 0), 0);
    }
    ASSERT_EQ(stat((directory / "list.txt").data(), &before), 0);
    writeFile(directory / "first.json", R"({"name": "new", "words": ["x", "y"], "only": "here"})");
    EXPECT_EQ(generate().output, lines("wrote ", {"whole.txt", "region.txt"}));
    struct stat after {};
    ASSERT_EQ(stat((directory / "list.txt").data(), &after), 0);
    EXPECT_EQ(after.st_mtime, 1000);
    EXPECT_EQ(after.st_ino, before.st_ino);
}

TEST_F(GenerateTest, CheckWritesNothing) {
    writeFile(directory / "list.txt", "<i0><second>");
    const ProgramRun check = generate({"--check"});
    EXPECT_EQ(check.exitCode, 1);
    EXPECT_EQ(check.output, lines("out of date: ", {"whole.txt", "keys.txt", "region.txt"}));
    EXPECT_FALSE(fs::exists(directory / "whole.txt"));
    EXPECT_EQ(content("region.txt"), "1[a]old[/a]2[b]old[/b]3");
    generate();
    const ProgramRun current = generate({"--check"});
    EXPECT_EQ(current.exitCode, 0);
    EXPECT_EQ(current.output + current.error, "");
}

TEST_F(GenerateTest, AFileCanBeMadeFromAGeneratedOne) {
    writeFile(directory / "manifest.json", R"({"outputs": [
        {"file": "last.txt", "data": ["made.json"], "template": "item.tmpl"},
        {"file": "made.json", "data": ["first.json"], "template": "json.tmpl"}]})");
    writeFile(directory / "json.tmpl", "{\"name\": \"made of {{ name }}\"}");
    writeFile(directory / "made.json", "{\"name\": \"old\"}");
    EXPECT_EQ(generate().error, "");
    EXPECT_EQ(content("last.txt"), "<made of first>");
}

struct FailureRow {
    const char* name;
    const char* file;
    const char* content;
    const char* about;
    const char* reason;
    /* The files that are made all the same. */
    std::vector<std::string> made;
};

class GenerateFailureTest : public GenerateTest, public testing::WithParamInterface<FailureRow> {};

TEST_P(GenerateFailureTest, SaysWhereAndLosesNothing) {
    writeFile(directory / "whole.txt", "old");
    const std::string region = content("region.txt");
    writeFile(directory / GetParam().file, GetParam().content);
    const std::string regionBefore = content("region.txt");
    const ProgramRun run = generate();
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.error, failure(GetParam().about, GetParam().reason));
    EXPECT_EQ(run.output, lines("wrote ", GetParam().made));
    const auto made = [&](const char* const name) {
        return testing::Value(GetParam().made, testing::Contains(name));
    };
    EXPECT_EQ(content("whole.txt"), made("whole.txt") ? "first here\n" : "old");
    EXPECT_EQ(content("region.txt"),
              made("region.txt") ? "1[a](x)(y)[/a]2[b]first here\n[/b]3" : regionBefore);
    EXPECT_EQ(fs::exists(directory / "list.txt"), made("list.txt"));
}

INSTANTIATE_TEST_SUITE_P(Inputs, GenerateFailureTest,
                         testing::ValuesIn(std::initializer_list<FailureRow>{
                             // clang-format off
                             {"broken data", "first.json", "{\"name\": \"fir", "first.json:1:14",
                              "Missing a closing quotation mark in string",
                              {"list.txt", "keys.txt"}},
                             {"template", "whole.tmpl", "{{ nothing }}", "whole.tmpl",
                              "Undefined name nothing", {"list.txt", "keys.txt"}},
                             {"template half written", "whole.tmpl", "{{ name", "whole.tmpl",
                              "Syntax error: Unterminated template directive",
                              {"list.txt", "keys.txt"}},
                             {"template cut to nothing", "whole.tmpl", "", "whole.tmpl",
                              "The template is empty", {"list.txt", "keys.txt"}},
                             {"missing tag", "region.txt", "1[a]old2[b]old[/b]3", "region.txt",
                              "missing tag '[/a]'", {"whole.txt", "list.txt", "keys.txt"}},
                             {"region that is not there", "region.txt", "1[a]old[/a]2",
                              "region.txt", "missing tag '[b]'",
                              {"whole.txt", "list.txt", "keys.txt"}},
                             {"overlapping tags", "region.txt", "[a][b][/a][/b]", "region.txt",
                              "overlapping tags: '[/a]' should appear before '[b]'",
                              {"whole.txt", "list.txt", "keys.txt"}},
                             {"nothing at each", "first.json",
                              R"({"name": "first", "only": "here"})", "first.json",
                              "Nothing at /words", {"whole.txt", "list.txt", "keys.txt"}},
                             {"no list at each", "first.json",
                              R"({"name": "first", "only": "here", "words": 1})", "first.json",
                              "Neither an array nor an object at /words",
                              {"whole.txt", "list.txt", "keys.txt"}},
                             // clang-format on
                         }),
                         rowName<FailureRow>);

#define OUTPUTS(outputs) "{\"outputs\": [" outputs "]}"
#define WITH_DATA(members) "{\"file\": \"whole.txt\", \"data\": [\"first.json\"]" members "}"

INSTANTIATE_TEST_SUITE_P(
    Manifests, GenerateFailureTest,
    testing::ValuesIn(std::initializer_list<FailureRow>{
        {"no object", "manifest.json", "[]", "manifest.json", "Not an object", {}},
        // clang-format off
        {"no JSON", "manifest.json", "{", "manifest.json:1:2", "Missing a name for object member",
         {}},
        {"no outputs", "manifest.json", "{}", "manifest.json", "Missing member outputs", {}},
        {"unknown member", "manifest.json", "{\"outputs\": [], \"x\": 1}", "manifest.json",
         "Unknown member x", {}},
        {"wrong type", "manifest.json", OUTPUTS("{\"file\": 1}"), "manifest.json",
         "/outputs/0/file: Not a string", {}},
        {"empty path", "manifest.json", OUTPUTS("{\"file\": \"\"}"), "manifest.json",
         "/outputs/0/file: Empty path", {}},
        {"data no array", "manifest.json", OUTPUTS("{\"file\": \"a\", \"data\": \"b\"}"),
         "manifest.json", "/outputs/0/data: Not an array", {}},
        {"neither template nor regions", "manifest.json", OUTPUTS(WITH_DATA("")), "manifest.json",
         "/outputs/0: Takes either template or regions", {}},
        {"no regions", "manifest.json", OUTPUTS(WITH_DATA(", \"regions\": []")), "manifest.json",
         "/outputs/0: Has no regions", {}},
        {"unknown member of a region", "manifest.json",
         OUTPUTS(WITH_DATA(", \"regions\": [{\"tag\": 1}]")), "manifest.json",
         "/outputs/0/regions/0: Unknown member tag", {}},
        {"each that is no pointer", "manifest.json",
         OUTPUTS(WITH_DATA(", \"template\": \"a\", \"each\": \"items\"")), "manifest.json",
         "/outputs/0/each: No JSON Pointer", {}},
        {"one file twice", "manifest.json",
         OUTPUTS(WITH_DATA(", \"template\": \"a\"") ",{\"file\": \"./x/../whole.txt\", \"data\": "
         "[], \"template\": \"a\"}"), "manifest.json",
         "/outputs/1: Another output is the same file", {}},
        // clang-format on
    }),
    rowName<FailureRow>);

TEST_F(GenerateTest, AnOutputThatCannotBeWrittenIsOneLine) {
    fs::create_directory(directory / "whole.txt");
    fs::create_symlink("/dev/full", directory / "list.txt");
    const ProgramRun run = generate();
    EXPECT_EQ(run.error, failure("list.txt", "No space left on device") +
                             failure("whole.txt", "Is a directory"));
    EXPECT_EQ(run.output, lines("wrote ", {"keys.txt", "region.txt"}));
}

class GenerateWatchTest : public GenerateTest {
protected:
    GenerateWatchTest() {
        waitUntil([&] { return program.error().find("watching ") != std::string::npos; });
    }

    void waitFor(const std::string& name, const std::string& wanted) {
        waitUntil([&] { return fs::exists(directory / name) && content(name) == wanted; });
    }

    /* As many editors save: beside the file, then over it. */
    void saveByRename(const std::string& name, const std::string& text) {
        writeFile(directory / (name + "~"), text);
        fs::rename(directory / (name + "~"), directory / name);
    }

    const TemporaryDirectory logs;
    BackgroundProgram program{logs.path(), {"generate", directory / "manifest.json", "--watch"}};
};

TEST_F(GenerateWatchTest, FollowsEverySave) {
    EXPECT_EQ(content("whole.txt"), "first here\n");
    writeFile(directory / "first.json", R"({"name": "written", "words": [], "only": "here"})");
    waitFor("whole.txt", "written here\n");
    waitFor("region.txt", "1[a][/a]2[b]written here\n[/b]3");
    saveByRename("whole.tmpl", "renamed {{ name }}");
    waitFor("whole.txt", "renamed written");
    fs::remove(directory / "second.json");
    waitUntil([&] {
        return program.error().find("second.json: No such file or directory") != std::string::npos;
    });
    EXPECT_EQ(content("list.txt"), "<i0><second>");
    writeFile(directory / "second.json", R"({"items": [{"name": "back"}], "named": {}})");
    waitFor("list.txt", "<back>");
    EXPECT_EQ(program.stop({SIGTERM}), 0);
}

TEST_F(GenerateWatchTest, AFailureLeavesTheOldOutputAndTheNextSaveMendsIt) {
    writeFile(directory / "whole.tmpl", "{{ nothing }}");
    waitUntil([&] { return program.error().find("Undefined name nothing") != std::string::npos; });
    EXPECT_EQ(content("whole.txt"), "first here\n");
    writeFile(directory / "manifest.json", "{\"outputs\": [");
    waitUntil([&] { return program.error().find("manifest.json:1:14") != std::string::npos; });
    writeFile(directory / "whole.tmpl", "mended {{ name }}");
    waitFor("whole.txt", "mended first");
    writeFile(directory / "new/late.tmpl", "{{ name }} late");
    writeFile(directory / "manifest.json", R"({"outputs": [
        {"file": "late.txt", "data": ["second.json"], "template": "new/late.tmpl"}]})");
    waitFor("late.txt", "second late");
    fs::remove_all(directory / "new");
    waitUntil([&] { return program.error().find("late.tmpl: No such file") != std::string::npos; });
    writeFile(directory / "new/late.tmpl", "{{ name }} again");
    waitFor("late.txt", "second again");
    EXPECT_EQ(program.stop({SIGINT}), 0);
}

/* Another process truncates and rewrites, replaces and deletes the data a thousand times, and a
   reader that polls sees nothing but whole outputs, the last of which is right. */
TEST_F(GenerateWatchTest, NoOutputIsEverSeenHalfWritten) {
    const std::string filler(20000, 'x');
    const auto data = [&](const int i) {
        return "{\"only\": \"" + filler + "\", \"words\": [], \"name\": \"" + std::to_string(i) +
               "\"}";
    };
    const pid_t writer = fork();
    if (writer == 0) {
        for (int i = 0; i != 1000; ++i) {
            if (i % 10 == 3) {
                fs::remove(directory / "first.json");
            }
            if (i % 4 == 0) {
                saveByRename("first.json", data(i));
            } else {
                writeFile(directory / "first.json", data(i));
            }
        }
        _exit(0);
    }
    std::size_t seen = 0;
    const std::string last = "999 " + filler + "\n";
    waitUntil([&] {
        const std::string text = content("whole.txt");
        const bool whole =
            text == "first here\n" ||
            (text.size() > filler.size() + 1 && text.substr(text.find(' ')) == " " + filler + "\n");
        EXPECT_TRUE(whole) << text.substr(0, 100);
        ++seen;
        return text == last;
    });
    EXPECT_GT(seen, 0u);
    int status = -1;
    waitpid(writer, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(program.stop({SIGTERM}), 0);
    /* It reacted to the saves and not to its own writes: there are no more of these than saves. */
    const std::string written = program.output();
    EXPECT_LE(std::count(written.begin(), written.end(), '\n'), 2 * 1001 + 4);
}

TEST_F(GenerateWatchTest, DoesNotReactToItsOwnWrites) {
    writeFile(directory / "first.json", R"({"name": "a", "words": [], "only": "here"})");
    waitFor("whole.txt", "a here\n");
    writeFile(directory / "first.json", R"({"name": "b", "words": [], "only": "here"})");
    waitFor("whole.txt", "b here\n");
    waitFor("region.txt", "1[a][/a]2[b]b here\n[/b]3");
    program.stop({SIGTERM});
    EXPECT_EQ(program.output(), lines("wrote ", all) +
                                    lines("wrote ", {"whole.txt", "region.txt"}) +
                                    lines("wrote ", {"whole.txt", "region.txt"}));
}

} // namespace
} // namespace VespermoorEngine::Test
