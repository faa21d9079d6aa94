#include <chrono>
#include <csignal>
#include <fstream>

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Generator.h"
#include "Program.h"
#include "Support.h"
#include "Unprivileged.h"

namespace VespermoorEngine::Test {
namespace {

using namespace std::string_literals;

constexpr const char* manifest = R"({"outputs": [
    {"file": "whole.txt", "data": ["first.json", "second.json"], "template": "whole.tmpl"},
    {"file": "list.txt", "data": ["second.json"], "template": "item.tmpl", "each": "/items"},
    {"file": "keys.txt", "data": ["second.json"], "template": "key.tmpl", "each": "/named"},
    {"file": "region.txt", "data": ["first.json"], "regions": [
        {"start": "[b]", "end": "[/b]", "template": "whole.tmpl"},
        {"start": "[a]", "end": "[/a]", "template": "value.tmpl", "each": "/words"}]}]})";

std::string first(const std::string& name, const std::string& only = "here") {
    return R"({"words": ["x", "y"], "name": ")" + name + R"(", "only": ")" + only + "\"}";
}

std::string second(const std::string& item) {
    return R"({"name": "second", "items": [{"name": ")" + item +
           R"("}, {"id": ""}], "named": {"k": {"id": "1"}, "l": {"id": "2"}}})";
}

void save(const std::string& name, const std::string& text) {
    writeFile("in/" + name, text);
}

/* As many editors save: beside the file, then over it. */
void replace(const std::string& name, const std::string& text) {
    save(name + "~", text);
    fs::rename("in/" + name + "~", "in/" + name);
}

std::string content(const std::string& name) {
    return readFile("in/" + name);
}

/* Manifest of one file with the members. */
std::string manifestOf(const std::string& members, const std::string& file = "whole.txt") {
    return R"({"outputs": [{"file": ")" + file + R"(", "data": ["first.json"], )" + members + "}]}";
}

const std::vector<std::string> watching{"generate", "--watch", "in/manifest.json"};

void link(const std::string& target, const std::string& name) {
    fs::remove(name);
    fs::create_symlink(target, name);
}

/* A directory with a manifest that makes four files, one of them by its regions. */
struct Project {
    Project() {
        save("manifest.json", manifest);
        save("first.json", first("first"));
        save("second.json", second("i"));
        save("whole.tmpl", "{{ name }} {{ only }}\n");
        save("item.tmpl", "<{{ name }}>");
        save("key.tmpl", "{{ @key }}={{ id }};");
        save("value.tmpl", "({{ @value }})");
        save("region.txt", "1[a]old[/a]2[b]old[/b]3");
        link("in", "link");
    }

    const TemporaryDirectory directory;
    const ScopedCurrentDirectory current{directory.path()};
};

TEST(Generate, MakesAndChecksWhatIsOutOfDate) {
    const Project project;
    save("list.txt", "<i><second>");
    const auto saved = fs::last_write_time("in/list.txt");
    const std::string made = "1[a](x)(y)[/a]2[b]first here\n[/b]3";
    const struct {
        std::vector<std::string> arguments;
        int exitCode;
        std::string output, region;
    } runs[]{
        // clang-format off
        {{"generate", "--check", "in/manifest.json"}, 1, "out of date: in/whole.txt\n"
         "out of date: in/keys.txt\nout of date: in/region.txt\n", "1[a]old[/a]2[b]old[/b]3"},
        {{"generate", "in/manifest.json"}, 0,
         "wrote in/whole.txt\nwrote in/keys.txt\nwrote in/region.txt\n", made},
        {{"generate", "--check", "in/manifest.json"}, 0, "", made},
        // clang-format on
    };
    for (const auto& row : runs) {
        const ProgramRun run = runProgram(row.arguments);
        EXPECT_EQ(run.exitCode, row.exitCode);
        EXPECT_EQ(run.output + run.error, row.output);
        EXPECT_EQ(content("region.txt"), row.region);
    }
    EXPECT_EQ(content("whole.txt"), "first here\n");
    EXPECT_EQ(content("keys.txt"), "k=1;l=2;");
    EXPECT_EQ(fs::last_write_time("in/list.txt"), saved);
}

/* Makes a file from another one, which is listed later and reached through a link. */
void saveChain() {
    save("json.tmpl", R"({"name": "{{ name }}"})");
    save("each.tmpl", "{{ @key }}={{ @value }};");
    save("manifest.json", R"({"outputs": [
        {"file": "last.txt", "data": ["../link/./made.json"], "template": "each.tmpl", "each": ""},
        {"file": "made.json", "data": ["first.json"], "template": "json.tmpl"}]})");
}

TEST(Generate, MakesWhatAFileIsMadeFromFirst) {
    const Project project;
    saveChain();
    for (const std::string name : {"first", "second"}) {
        save("first.json", first(name));
        const ProgramRun check = runProgram({"generate", "--check", "in/manifest.json"});
        EXPECT_EQ(check.output + check.error,
                  "out of date: in/made.json\nout of date: in/last.txt\n");
        const ProgramRun run = runProgram({"generate", "in/manifest.json"});
        EXPECT_EQ(run.output + run.error, "wrote in/made.json\nwrote in/last.txt\n");
        EXPECT_EQ(content("last.txt"), "name=" + name + ";");
    }
}

/* A pipe gives what it has to one reader only. Two files are made from each of these two. */
TEST(Generate, ReadsAFileOnce) {
    const Project project;
    for (const std::string name : {"in/first.json", "in/whole.tmpl"}) {
        fs::rename(name, name + "~");
        ASSERT_EQ(mkfifo(name.data(), 0600), 0);
    }
    const BackgroundProgram program{project.directory.path(), {"generate", "in/manifest.json"}};
    const ChildProcess writer{"cat in/first.json~ > in/first.json & "
                              "cat in/whole.tmpl~ > in/whole.tmpl"};
    waitUntil([] { return content("region.txt") == "1[a](x)(y)[/a]2[b]first here\n[/b]3"; });
}

TEST(Generate, WhatTheSystemRefusesIsOneLineAndLosesNothing) {
    const Project project;
    save("keys.txt", "old");
    link("/dev/full", "in/list.txt");
    fs::permissions("in", fs::perms{0555});
    fs::permissions(project.directory.path(), fs::perms{0755});
    const std::set<std::string> failures{
        "in/keys.txt: Permission denied", "in/list.txt: No space left on device",
        "in/region.txt: Permission denied", "in/whole.txt: Permission denied"};
    EXPECT_EQ(unprivileged([&] {
                  Host::Generator generator{"in/manifest.json"};
                  return generator.update(Host::Generator::Mode::Write).failures == failures;
              }),
              true);
    fs::permissions("in", fs::perms{0755});
    EXPECT_EQ(content("keys.txt"), "old");
    EXPECT_EQ(outputOf(VESPERMOOR_PROGRAM " generate in/manifest.json 2>&1 >/dev/full"),
              "vespermoor-utils: in/list.txt: No space left on device\n"
              "vespermoor-utils: standard output: No space left on device\n");
}

/* Manifest of a file with one region. */
std::string regionBetween(const char* const start, const char* const end) {
    return manifestOf(R"("regions": [{"template": "whole.tmpl", "start": ")"s + start +
                          R"(", "end": ")" + end + R"("}])",
                      "region.txt");
}

const std::string lists = "wrote in/list.txt\nwrote in/keys.txt\n";
const std::string allButRegion = "wrote in/whole.txt\n" + lists;
constexpr const char* json = "manifest.json";

TEST(Generate, SaysWhereAFailureIsAndLosesNothing) {
    const struct {
        const char* file;
        std::string content;
        const char* reason;
        /* What is made all the same. */
        std::string wrote;
    } rows[]{
        // clang-format off
        {"first.json", "{\"name\": \"fir",
         ":1:14: Missing a closing quotation mark in string", lists},
        {"whole.tmpl", "{{ nothing }}", ": Undefined name nothing", lists},
        {"whole.tmpl", "", ": The template is empty", lists},
        {"whole.tmpl", "a\0b"s, ": Contains a zero byte", lists},
        {"region.txt", "1[a][/a]2", ": missing tag '[b]'", allButRegion},
        {"region.txt", "[a][b][/a][/b]",
         ": overlapping tags: '[/a]' should appear before '[b]'", allButRegion},
        {"first.json", R"({"name": "first", "only": "here"})", ": Nothing at /words", allButRegion},
        {"first.json", R"({"name": "first", "only": "here", "words": 1})",
         ": Neither an array nor an object at /words", allButRegion},
        {json, "[]", ": Not an object", ""}, {json, "{}", ": Missing member outputs", ""},
        {json, R"({"outputs": [], "x": 1})", ": Unknown member x", ""},
        {json, R"({"a\nb": 1})", ": Unknown member a\\x0ab", ""},
        {json, R"({"outputs": [], "outputs": []})", ": Member outputs twice", ""},
        {json, R"({"outputs": [{"file": 1}]})", ": /outputs/0/file: Not a string", ""},
        {json, R"({"outputs": [{"file": ""}]})", ": /outputs/0/file: Empty path", ""},
        {json, R"({"outputs": [{"file": "a\nb"}]})",
         ": /outputs/0/file: Control byte in a path", ""},
        {json, R"({"outputs": [{"file": "a", "data": 1}]})", ": /outputs/0/data: Not an array", ""},
        {json, manifestOf(R"("template": "a", "regions": [])"),
         ": /outputs/0: Takes either template or regions", ""},
        {json, manifestOf(R"("regions": [])"), ": /outputs/0: Has no regions", ""},
        {json, manifestOf(R"("regions": [{"tag": 1}])"),
         ": /outputs/0/regions/0: Unknown member tag", ""},
        {json, regionBetween("[a]", ""), ": /outputs/0/regions/0/end: Empty tag", ""},
        {json, manifestOf(R"("template": "a", "each": "#/items")"),
         ": /outputs/0/each: No JSON Pointer", ""},
        {json, manifestOf(R"("template": "a"},
         {"file": "../link/x/../whole.txt", "data": [], "template": "a")"),
         ": /outputs/1: Another output is the same file", ""},
        {json, manifestOf(R"("template": "a")", "x/../manifest.json"),
         ": /outputs/0: Is the manifest itself", ""},
        {json, manifestOf(R"("template": "../link/whole.txt")"), ": /outputs/0: Is a template", ""},
        {json, manifestOf(R"("template": "a"},
         {"file": "first.json", "data": ["../link/whole.txt", "second.json"], "template": "a")"),
         ": /outputs/0: Made from itself: in/whole.txt from in/first.json from in/whole.txt", ""},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        const Project project;
        save("whole.txt", "old");
        save(row.file, row.content);
        const std::string region = content("region.txt");
        const ProgramRun run = runProgram({"generate", "in/manifest.json"});
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.error, std::string{"vespermoor-utils: in/"} + row.file + row.reason + '\n');
        EXPECT_EQ(run.output, row.wrote);
        EXPECT_EQ(content("whole.txt"), row.wrote.find("whole") + 1 ? "first here\n" : "old");
        EXPECT_EQ(content("region.txt"), region);
        EXPECT_EQ(fs::exists("in/list.txt"), !row.wrote.empty());
    }
}

/* Each would give another file with every run, and an error for `tags` with the same regions. */
TEST(Generate, RegionsThatWouldChangeAgainAreRefused) {
    const Project project;
    const struct {
        const char *text, *start, *end, *reason;
    } rows[]{
        {"1[b]old here", "[b]", "[b]", "start tag and end tag are both '[b]'"},
        {"1[b]old here", "old", "[b]", "end tag '[b]' is not after start tag 'old'"},
        {"1[b]old here", "[b]ol", "ld", "end tag 'ld' is not after start tag '[b]ol'"},
        {"1[b]old here", "[b]", "here", "content between '[b]' and 'here' contains tag 'here'"},
        {"1[b]]first", "[b]", "]first",
         "the new content would form a tag with the text next to it"},
    };
    save("content", "first here\n");
    for (const auto& row : rows) {
        save("region.txt", row.text);
        save("manifest.json", regionBetween(row.start, row.end));
        const std::string error = "vespermoor-utils: in/region.txt: "s + row.reason + '\n';
        EXPECT_EQ(runProgram({"generate", "in/manifest.json"}).error, error);
        EXPECT_EQ(runProgram({"tags", "in/region.txt", "--output", "in/region.txt", "--region",
                              row.start, row.end, "in/content"})
                      .error,
                  error);
        EXPECT_EQ(content("region.txt"), row.text);
    }
}

TEST(Generate, RegionsKeepTheLineEndsOfTheirFile) {
    const Project project;
    save("value.tmpl", "{{ @value }}\r\n");
    save("manifest.json", manifestOf(R"("regions": [
        {"start": "[a]\n", "end": "[/a]", "template": "value.tmpl", "each": "/words"}])",
                                     "region.txt"));
    const std::pair<const char*, const char*> rows[]{
        {"1\r\n[a]\r\nold[/a]\n2", "1\r\n[a]\r\nx\r\ny\r\n[/a]\n2"},
        {"1\n[a]\nold[/a]\r\n2", "1\n[a]\nx\ny\n[/a]\r\n2"},
    };
    for (const auto& [before, after] : rows) {
        save("region.txt", before);
        EXPECT_EQ(runProgram({"generate", "in/manifest.json"}).error, "");
        EXPECT_EQ(content("region.txt"), after);
    }
}

struct Step {
    void (*change)();
    /* What comes of it: a file that gets this content. */
    std::string file, content;
};

struct WatchRow {
    const char* name;
    void (*prepare)();
    /* Printed when it is ready. */
    std::string errors;
    std::vector<Step> steps;
};

/* Lets what is run from here on be refused what the modes say, also where it is run by root. */
void dropPrivileges() {
    prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
    prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
}

const WatchRow changes[]{
    // clang-format off
    {"saves", [] {}, "watching 1 directories\n", {
     {[] { replace("item.tmpl", "[{{ name }}]"); }, "list.txt", "[i][second]"},
     {[] { fs::remove("in/second.json"); }, "../program.error",
      "watching 1 directories\nvespermoor-utils: in/second.json: No such file or directory\n"},
     {[] { replace("manifest.json", "{"); }, "../program.error",
      "watching 1 directories\nvespermoor-utils: in/second.json: No such file or directory\n"
      "vespermoor-utils: in/manifest.json:1:2: Missing a name for object member\n"},
     {[] { save("second.json", second("back")); }, "list.txt", "[back][second]"},
     {[] { save("first.json", R"({"words": [], "name": "first", "only": "here"})"); },
      "region.txt", "1[a][/a]2[b]first here\n[/b]3"},
     {[] {}, "../program.output", "wrote in/whole.txt\nwrote in/list.txt\nwrote in/keys.txt\n"
      "wrote in/region.txt\nwrote in/list.txt\nwrote in/list.txt\nwrote in/region.txt\n"}}},
    {"save by another name, of the same size and time", [] {
      fs::create_directory("z"); fs::create_hard_link("in/first.json", "z/other"); },
     "watching 1 directories\n", {
     {[] { const auto time = fs::last_write_time("z/other"); writeFile("z/other", first("other"));
      fs::last_write_time("z/other", time); }, "whole.txt", "other here\n"}}},
    {"output with regions that is mended", [] { save("region.txt", "1[a][/a]2"); },
     "vespermoor-utils: in/region.txt: missing tag '[b]'\nwatching 1 directories\n", {
     {[] { save("region.txt", "[a][/a][b][/b]"); },
      "region.txt", "[a](x)(y)[/a][b]first here\n[/b]"},
     {[] { save("value.tmpl", "{{ @value }}"); }, "region.txt", "[a]xy[/a][b]first here\n[/b]"},
     {[] {}, "../program.output", allButRegion + "wrote in/region.txt\nwrote in/region.txt\n"}}},
    {"file and directory that may not be read", [] { dropPrivileges(); writeFile("closed/t", "1");
      save("manifest.json", manifestOf(R"("template": "../closed/t")")); chmod("closed/t", 0);
      chmod("closed", 0300); },
     "watching 1 directories\n", {
     {[] { chmod("closed/t", 0600); }, "whole.txt", "1"},
     {[] { writeFile("closed/t", "22"); }, "whole.txt", "22"},
     {[] { chmod("closed", 0700); }, "../program.error", "vespermoor-utils: in/../closed/t: "
      "Permission denied\nwatching 1 directories\n"}}},
    {"file made from a generated one", saveChain, "watching 1 directories\n", {
     {[] { save("first.json", first("second")); }, "last.txt", "name=second;"},
     {[] { save("each.tmpl", "{{ @value }}"); }, "last.txt", "second"},
     {[] {}, "../program.error", "watching 1 directories\n"},
     {[] {}, "../program.output", "wrote in/made.json\nwrote in/last.txt\n"
      "wrote in/made.json\nwrote in/last.txt\nwrote in/last.txt\n"}}},
    {"directory that does not exist, and is not looked for in all that lies above it",
     [] { save("manifest.json", manifestOf(R"("template": "../none/late/t")"));
      writeFile("a/b/c", ""); }, "vespermoor-utils: in/../none/late/t: No such file or directory\n"
     "watching 1 directories\n", {{[] { writeFile("none/late/t", "late"); }, "whole.txt", "late"},
     {[] { fs::remove_all("none"); writeFile("none/late/t", "again"); }, "whole.txt", "again"},
     {[] { writeFile("none/late/t", "last"); }, "whole.txt", "last"}}},
    {"links that come to lead elsewhere", [] { writeFile("z/t", "old");
      writeFile("z/b/json", first("1")); link("../z", "in/a"); link("a/b/json", "in/first.json");
      writeFile("z/m", manifestOf(R"("template": "a/t")")); link("../z/m", "in/manifest.json"); },
     " directories\n", {
     {[] { writeFile("z/t", "z{{ name }}"); }, "whole.txt", "z1"},
     {[] { writeFile("z/b/json", first("2")); }, "whole.txt", "z2"},
     {[] { writeFile("y/b/json", first("3")); writeFile("y/t", "y{{ name }}");
      link("../y", "in/a"); }, "whole.txt", "y3"},
     {[] { writeFile("y/b/json", first("4")); }, "whole.txt", "y4"},
     {[] { writeFile("x/json", first("5")); link("../x/json", "in/first.json"); },
      "whole.txt", "y5"},
     {[] { writeFile("x/json", first("6")); }, "whole.txt", "y6"},
     {[] { writeFile("z/m", manifestOf(R"("template": "a/t")", "new.txt")); }, "new.txt", "y6"}}},
    // clang-format on
};

TEST(Generate, MakesAnewWhatDependsOnAChange) {
    for (const WatchRow& row : changes) {
        SCOPED_TRACE(row.name);
        const Project project;
        row.prepare();
        BackgroundProgram program{project.directory.path(), watching};
        waitUntil([&] { return program.error().find(row.errors) != std::string::npos; });
        for (const Step& step : row.steps) {
            const std::string file = "in/" + step.file;
            step.change();
            waitUntil([&] { return fs::exists(file) && readFile(file) == step.content; });
        }
        EXPECT_EQ(program.stop({SIGTERM}), 0);
    }
}

/* A pipe holds up the reading of the manifest for as long as it takes to save another one. */
TEST(Generate, AManifestSavedWhileItIsReadIsNotLost) {
    const Project project;
    fs::remove("in/manifest.json");
    ASSERT_EQ(mkfifo("in/manifest.json", 0600), 0);
    BackgroundProgram program{project.directory.path(), watching};
    for (const std::string file : {"at the start", "later"}) {
        int pipe = -1;
        waitUntil([&] { return (pipe = open("in/manifest.json", O_WRONLY | O_NONBLOCK)) != -1; });
        replace("manifest.json", manifestOf(R"("template": "item.tmpl")", file));
        EXPECT_EQ(write(pipe, "{}", 2), 2);
        close(pipe);
        waitUntil([&] { return fs::exists("in/" + file); });
        ASSERT_EQ(mkfifo("in/pipe", 0600), 0);
        fs::rename("in/pipe", "in/manifest.json");
    }
}

/* A test that is held up for longer than a tick makes two bursts of one, and tries again. */
TEST(Generate, ABurstOfSavesIsOneGeneration) {
    const Project project;
    runProgram({"generate", "in/manifest.json"});
    int saves = 0;
    waitUntil([&] {
        BackgroundProgram program{project.directory.path(), watching};
        waitUntil([&] { return !program.error().empty(); });
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds{200};
        for (int i = 0; i < 50 || std::chrono::steady_clock::now() < end; ++i) {
            replace("item.tmpl", std::to_string(++saves) + ';');
        }
        const std::string last = std::to_string(saves) + ';';
        waitUntil([&] { return content("list.txt") == last + last; });
        return program.stop({SIGTERM}) == 0 && program.output() == "wrote in/list.txt\n";
    });
}

/* Another process truncates and rewrites, replaces and deletes the data and replaces the manifest,
   all of it behind a link, a thousand saves in all. A reader sees nothing but whole outputs, also
   one that opened an output before it was replaced. */
TEST(Generate, NoOutputIsEverSeenHalfWritten) {
    const Project project;
    const std::string only(20000, 'x');
    const auto output = [&](const int i) { return std::to_string(i) + ' ' + only + '\n'; };
    save("whole.txt", output(-1));
    save("first.json", first("-1", only));
    fs::rename("in", "z");
    link("z", "in");
    BackgroundProgram program{project.directory.path(), watching};
    for (int burst = 0; burst != 1000 && !HasFatalFailure(); burst += 100) {
        std::ifstream opened{"in/whole.txt"};
        ChildProcess writer{[&] {
            for (int i = burst; i != burst + 100; ++i) {
                if (i % 10 == 3) {
                    fs::remove("in/first.json");
                    replace("manifest.json", manifest);
                }
                (i % 4 == 0 ? replace : save)("first.json", first(std::to_string(i), only));
            }
            return std::string{};
        }};
        waitUntil([&] {
            const std::string text = content("whole.txt");
            EXPECT_EQ(text.substr(text.find(' ')), output(0).substr(1));
            return text == output(burst + 99);
        });
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>{opened}, {}), output(burst - 1));
    }
    EXPECT_EQ(program.stop({SIGTERM}), 0);
}

} // namespace
} // namespace VespermoorEngine::Test
