#include <array>

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Processes.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using namespace std::string_literals;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* manifest = R"({"outputs": [
    {"file": "whole.txt", "data": ["first.json", "second.json"], "template": "whole.tmpl"},
    {"file": "list.txt", "data": ["second.json"], "template": "item.tmpl", "each": "/items"},
    {"file": "keys.txt", "data": ["first.json", "second.json"], "template": "key.tmpl", "each": "/named"},
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

/* Saves like many editors: a temporary file, then a rename. */
void replace(const std::string& name, const std::string& text) {
    save(name + "~", text);
    fs::rename("in/" + name + "~", "in/" + name);
}

std::string content(const std::string& name) {
    return readFile("in/" + name);
}

/* A manifest of one output with these members. */
std::string manifestOf(const std::string& members, const std::string& file = "whole.txt") {
    return R"({"outputs": [{"file": ")" + file + R"(", "data": ["first.json"], )" + members + "}]}";
}

const std::string program = VESPERMOOR_PROGRAM " generate ";
const std::string watching =
    "echo $$ > id; exec " + program + "--watch in/manifest.json > output 2> error";

/* The output of a run, standard error first, and its exit code. */
std::string generate(const std::string& options = "") {
    return outputOf(program + options + " in/manifest.json 2>&1; echo \"exit $?\"");
}

/* A directory with a manifest of four outputs, one of which has regions. `output` and `error` are
   for a program that runs in the background. */
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
        fs::create_symlink("in", "link");
        writeFile("output", "");
        writeFile("error", "");
    }

    const TemporaryDirectory directory;
    const ScopedCurrentDirectory current{directory.path()};
};

const std::string regionMade = "1[a](x)(y)[/a]2[b]first here\n[/b]3";

TEST(Generate, MakesAndChecksOutdatedOutputs) {
    const Project project;
    save("list.txt", "<i><second>");
    const auto saved = fs::last_write_time("in/list.txt");
    const std::string wrote = "wrote in/whole.txt\nwrote in/keys.txt\nwrote in/region.txt\n";
    const struct {
        const char* options;
        std::string printed, region;
    } rows[]{
        {"--check",
         "out of date: in/whole.txt\nout of date: in/keys.txt\nout of date: in/region.txt\nexit "
         "1\n",
         "1[a]old[/a]2[b]old[/b]3"},
        {"--check --quiet", "exit 1\n", "1[a]old[/a]2[b]old[/b]3"},
        {"--depfile in/d", wrote + "exit 0\n", regionMade},
        {"--check", "exit 0\n", regionMade},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(generate(row.options), row.printed);
        EXPECT_EQ(content("region.txt"), row.region);
    }
    EXPECT_EQ(content("whole.txt"), "first here\n");
    EXPECT_EQ(content("keys.txt"), "k=1;l=2;");
    EXPECT_THAT(content("d"), StartsWith("in/keys.txt in/list.txt in/region.txt in/whole.txt:"));
    EXPECT_EQ(fs::last_write_time("in/list.txt"), saved);
}

/* A shell command that saves the text, which has no single quote. */
std::string saving(const std::string& file, const std::string& text) {
    return "mkdir -p $(dirname " + file + ") && printf %s '" + text + "' > " + file;
}

/* Makes an output from another one, which is listed later and named through a link. */
const std::string savingChain = saving("in/json.tmpl", R"({"name": "{{ name }}"})") + " && " +
                                saving("in/each.tmpl", "{{ @key }}={{ @value }};") + " && " +
                                saving("in/manifest.json", R"({"outputs": [
        {"file": "last.txt", "data": ["../link/./made.json", "other.json"],
         "template": "each.tmpl", "each": ""},
        {"file": "made.json", "data": ["first.json"], "template": "json.tmpl"},
        {"file": "other.json", "data": ["made.json"], "template": "json.tmpl"}]})");
const std::string madeChain = "wrote in/made.json\nwrote in/other.json\nwrote in/last.txt\n";

TEST(Generate, OrdersOutputsByDependency) {
    const Project project;
    outputOf(savingChain);
    for (const std::string name : {"first", "second"}) {
        save("first.json", first(name));
        EXPECT_EQ(generate("--check"), "out of date: in/made.json\nout of date: in/other.json\n"
                                       "out of date: in/last.txt\nexit 1\n");
        EXPECT_EQ(generate(), madeChain + "exit 0\n");
        EXPECT_EQ(content("last.txt"), "name=" + name + ";");
    }
}

/* The inputs are pipes, which can be read only once. Two outputs are made from each. */
TEST(Generate, ReadsAFileOnce) {
    const Project project;
    for (const std::string name : {"in/first.json", "in/whole.tmpl"}) {
        fs::rename(name, name + "~");
        ASSERT_EQ(mkfifo(name.data(), 0600), 0);
    }
    const ChildProcess run{"exec " + program + "in/manifest.json > output"};
    const ChildProcess writer{"cat in/first.json~ > in/first.json & "
                              "cat in/whole.tmpl~ > in/whole.tmpl"};
    waitUntil([] { return content("region.txt") == regionMade; });
}

/* Makes file modes apply to programs that are run from here on, even as root. */
void dropPrivileges() {
    prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
    prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
}

TEST(Generate, SystemErrorsAreOneLineAndLoseNothing) {
    const Project project;
    dropPrivileges();
    save("keys.txt", "old");
    fs::create_symlink("/dev/full", "in/list.txt");
    fs::permissions("in", fs::perms{0555});
    EXPECT_EQ(generate(), "vespermoor-utils: in/whole.txt: Permission denied\n"
                          "vespermoor-utils: in/list.txt: No space left on device\n"
                          "vespermoor-utils: in/keys.txt: Permission denied\n"
                          "vespermoor-utils: in/region.txt: Permission denied\nexit 1\n");
    fs::permissions("in", fs::perms{0755});
    EXPECT_EQ(content("keys.txt"), "old");
    EXPECT_EQ(outputOf(program + "in/manifest.json 2>&1 >/dev/full"),
              "vespermoor-utils: in/list.txt: No space left on device\n"
              "vespermoor-utils: standard output: No space left on device\n");
}

/* Each failed output gets its own line; the others are made. */
TEST(Generate, NamesTheInputAtFaultAndEachOutput) {
    const std::string both = "whole region";
    const std::array<std::string, 4> rows[]{
        {"first.json", "{\"name\": \"fir", ":1:14: Missing a closing quotation mark in string",
         "whole keys region"},
        {"whole.tmpl", "", ": The template is empty", both},
        {"first.json", R"({"name": "", "only": ""})", ": Nothing at /words", "region"},
        {"first.json", R"({"name": "", "only": "", "words": 1})",
         ": Neither an array nor an object at /words", "region"},
    };
    for (const auto& [file, faulty, reason, failed] : rows) {
        SCOPED_TRACE(reason);
        const Project project;
        save(file, faulty);
        std::string failures, wrote;
        for (const std::string name : {"whole", "list", "keys", "region"}) {
            const bool fails = failed.find(name) != std::string::npos;
            const std::string line = "in/" + name + ".txt\n";
            (fails ? failures : wrote) +=
                fails ? "vespermoor-utils: in/" + file + reason + ", for " + line : "wrote " + line;
        }
        EXPECT_EQ(generate(), failures + wrote + "exit 1\n");
        EXPECT_THAT(generate("--check"), EndsWith("exit 2\n"));
        EXPECT_EQ(fs::exists("in/whole.txt"), failed == "region");
    }
}

TEST(Generate, NamesThePlaceInATemplate) {
    const Project project;
    save("manifest.json", manifestOf(R"("template": "t")"));
    const std::string unterminated = "Syntax error: Unterminated template directive";
    const std::pair<std::string, std::string> rows[]{
        {"a\n{{ name }}{{ x }}{{ x }}", "2:11: Undefined name x"},
        {"{{ if name == 'z' }}{{ x }}{{ end }}\n{{ x == y }}",
         "2:1: Undefined name x; Undefined name y"},
        {"{{ 'x }}", "1:1: Unterminated string literal"},
        {"{{ name }}\n{{ name }} {{ name", "2:12: " + unterminated},
        {"{{ name }}{{ \t}}{{ x }}", "1:11: " + unterminated},
        {"a\0b"s, "1:2: Contains a zero byte"},
        /* Every condition is false except the second one of the second row. */
        {"{{ if name == 'z' }}{{ end }}{{ if name == 'z' }}{{ end }}\n {{ if name == 'z' }}",
         "2:2: Missing 'end'"},
        {"{{ if name == 'z' }}{{ end }}{{ if name == name }}\n{{ if name == 'z' }}b",
         "2:1: Missing 'end'"},
        {"{{ if name == name }}a{{ else }}",
         "1:23: Undefined name else (templates have no else; write a second if)"},
        {"{{ words }}", "1:1: Unsupported type for words "
                        "(integers, null, arrays and objects have no text; write a string)"},
    };
    for (const auto& [source, reason] : rows) {
        save("t", source);
        EXPECT_EQ(generate(), "vespermoor-utils: in/t:" + reason + ", for in/whole.txt\nexit 1\n");
    }
}

TEST(Generate, NamesTheElement) {
    const Project project;
    save("manifest.json", manifestOf(R"("template": "item.tmpl", "each": "/e")"));
    const std::pair<const char*, const char*> rows[]{
        {R"({"e": [{"name": "1"}, {"id": "2"}]})", "/e/1"},
        {R"({"e": {"a": {"name": "1"}, "/~": {}}})", "/e/~1~0"},
    };
    for (const auto& [data, element] : rows) {
        save("first.json", data);
        EXPECT_EQ(generate(), "vespermoor-utils: in/item.tmpl:1:2: Undefined name name, for "
                              "in/whole.txt, element "s +
                                  element + " of in/first.json\nexit 1\n");
    }
    save("manifest.json", manifestOf(R"("template": "key.tmpl", "each": "/words")"));
    save("first.json", first("an array has no keys"));
    EXPECT_THAT(generate(), HasSubstr("Undefined name @key"));
}

/* A file that is not JSON can still be a template, whichever use comes first. */
TEST(Generate, KeepsFailuresByKind) {
    const Project project;
    const std::string data = R"({"file": "a", "data": ["item.tmpl"], "template": "key.tmpl"})";
    const std::string source = R"({"file": "b", "data": ["first.json"], "template": "item.tmpl"})";
    for (const std::string& outputs : {data + "," + source, source + "," + data}) {
        save("manifest.json", R"({"outputs": [)" + outputs + "]}");
        EXPECT_EQ(generate(), "vespermoor-utils: in/item.tmpl:1:1: Invalid value, for in/a\n"
                              "wrote in/b\nexit 1\n");
        fs::remove("in/b");
    }
}

/* A manifest of an output with one region. */
std::string regionBetween(const std::string& start, const std::string& end) {
    return manifestOf(R"("regions": [{"template": "whole.tmpl", "start": ")" + start +
                          R"(", "end": ")" + end + R"("}])",
                      "region.txt");
}

TEST(Generate, RefusesAManifestAsAWhole) {
    const std::pair<std::string, std::string> rows[]{
        {"[]", "Not an object"},
        {"{}", "Missing member outputs"},
        {R"({"outputs": [], "x": 1})", "Unknown member x"},
        {R"({"outputs": [], "outputs": []})", "Member outputs twice"},
        {R"({"outputs": [{"file": 1}]})", "/outputs/0/file: Not a string"},
        {R"({"outputs": [{"file": ""}]})", "/outputs/0/file: Empty path"},
        {R"({"outputs": [{"file": "a\nb"}]})", "/outputs/0/file: Control byte in a path"},
        {R"({"outputs": [{"file": "a", "data": 1}]})", "/outputs/0/data: Not an array"},
        {manifestOf(R"("template": "a", "regions": [])"),
         "/outputs/0: Takes either template or regions"},
        {manifestOf(R"("template": "a", "separator": "")"),
         "/outputs/0: Takes separator only beside each"},
        {manifestOf(R"("regions": [], "separator": "")"),
         "/outputs/0: Takes separator only beside template"},
        {manifestOf(R"("regions": [], "each": "")"), "/outputs/0: Takes each only beside template"},
        {manifestOf(R"("regions": [])"), "/outputs/0: Has no regions"},
        {manifestOf(R"("regions": [{"tag": 1}])"), "/outputs/0/regions/0: Unknown member tag"},
        {regionBetween("[a]", ""), "/outputs/0/regions/0/end: Empty tag"},
        {regionBetween("", "[/a]"), "/outputs/0/regions/0/start: Empty tag"},
        {manifestOf(R"("template": "a", "each": "#/items")"), "/outputs/0/each: No JSON Pointer"},
        {manifestOf(R"("template": "a", "each": "/~")"), "/outputs/0/each: No JSON Pointer"},
        {manifestOf(R"("template": "a"},
                       {"file": "../link/x/../whole.txt", "data": [], "template": "a")"),
         "/outputs/1: Another output is the same file"},
        {manifestOf(R"("template": "a")", "x/../manifest.json"),
         "/outputs/0: Is the manifest itself"},
        {manifestOf(R"("template": "../link/whole.txt")"), "/outputs/0: Is a template"},
        {manifestOf(R"("template": "a"}, {"file": "b", "data": ["first.json"], "template": "a"},
                       {"file": "first.json", "data": ["../link/b", "second.json"],
                        "template": "a")"),
         "/outputs/2: Made from itself: in/first.json from in/b from in/first.json"},
    };
    const Project project;
    for (const auto& [text, reason] : rows) {
        save("manifest.json", text);
        const std::string error = "vespermoor-utils: in/manifest.json: " + reason + "\nexit ";
        EXPECT_EQ(generate(), error + "1\n");
        EXPECT_EQ(generate("--check"), error + "2\n");
    }
}

/* The last six would change the file on every run. `tags` refuses them too. */
TEST(Generate, RefusesRegions) {
    const Project project;
    save("content", "first here\n\r\n");
    save("whole.tmpl", "first here\n\r\n");
    const struct {
        const char *text, *start, *end, *reason;
    } rows[]{
        {"1[b]2", "[a]", "[/a]", "missing tag '[a]'"},
        {"1[a]2", "[a]", "[/a]", "missing tag '[/a]'"},
        {"1[b]old here", "[b]", "[b]", "start tag and end tag are both '[b]'"},
        {"1[b]old here", "old", "[b]", "end tag '[b]' is not after start tag 'old'"},
        {"1[b]old here", "[b]ol", "ld", "end tag 'ld' is not after start tag '[b]ol'"},
        {"1[b]old here", "[b]", "here", "content between '[b]' and 'here' contains tag 'here'"},
        {"1[b]]first", "[b]", "]first",
         "the new content would form a tag with the text next to it"},
        {"1[b]2", "[b]", "2", "the new content would mix line ends with the text around it"},
    };
    for (const auto& row : rows) {
        save("region.txt", row.text);
        save("manifest.json", regionBetween(row.start, row.end));
        const std::string error = "vespermoor-utils: in/region.txt: "s + row.reason + '\n';
        EXPECT_EQ(generate(), error + "exit 1\n");
        EXPECT_EQ(outputOf(VESPERMOOR_PROGRAM
                           " tags in/region.txt --output in/region.txt --region '"s +
                           row.start + "' '" + row.end + "' in/content 2>&1"),
                  error);
        EXPECT_EQ(content("region.txt"), row.text);
    }
}

TEST(Generate, RegionsKeepTheLineEndsOfTheirFile) {
    const Project project;
    save("value.tmpl", "{{ @value }}\r\n");
    save("manifest.json", manifestOf(R"("regions": [{"start": "[a]\n", "end": "[/a]",
                                         "template": "value.tmpl", "each": "/words"}])",
                                     "region.txt"));
    const std::pair<const char*, const char*> rows[]{
        {"1\r\n[a]\r\nold[/a]\n2", "1\r\n[a]\r\nx\r\ny\r\n[/a]\n2"},
        {"1\n[a]\nold[/a]\r\n2", "1\n[a]\nx\ny\n[/a]\r\n2"},
    };
    for (const auto& [before, after] : rows) {
        save("region.txt", before);
        EXPECT_EQ(generate("--quiet"), "exit 0\n");
        EXPECT_EQ(content("region.txt"), after);
    }
}

/* Redirected files too. The log already contains the text that is to be written. */
TEST(Generate, WritesToStandardOutputDirectly) {
    const Project project;
    save("manifest.json", manifestOf(R"("template": "item.tmpl"},
        {"file": "/dev/stdout", "data": ["second.json"], "template": "item.tmpl")",
                                     "/dev/stdout"));
    save("log", "<first><second>");
    const std::string log = program + "in/manifest.json >> in/log; ";
    EXPECT_EQ(outputOf(log + program + "--check in/manifest.json; cat in/log | cat"),
              "<first><second><first><second>");
    EXPECT_EQ(generate(), "<first><second>exit 0\n");
}

TEST(Generate, SeparatesElementsAndMakesDirectories) {
    const Project project;
    save("manifest.json",
         manifestOf(R"("template": "value.tmpl", "each": "/words", "separator": ",\n")", "a/b/c"));
    EXPECT_EQ(generate("--list"),
              "input in/first.json\ninput in/value.tmpl\noutput in/a/b/c\nexit 0\n");
    EXPECT_EQ(generate(), "wrote in/a/b/c\nexit 0\n");
    EXPECT_EQ(content("a/b/c"), "(x),\n(y)");
}

/* The output of `command` on a terminal. */
std::string onTerminal(const std::string& command) {
    return outputOf("TERM=xterm script -qec '" + command + "' /dev/null");
}

TEST(Generate, DiffShowsChanges) {
    const Project project;
    save("manifest.json", manifestOf(R"("template": "t")"));
    std::string old = "1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n", made = old;
    save("whole.txt", old.replace(old.find("12"), 2, "old"));
    save("t", made.replace(made.find("3\n"), 2, "{{ name }}") + "end");
    const std::string hunks = "@@ -1,7 +1,6 @@\n 1\n 2\n-3\n-4\n+first4\n 5\n 6\n 7\n"
                              "@@ -9,4 +8,5 @@\n 9\n 10\n 11\n-old\n+12\n+end\n"
                              "\\ No newline at end of file\n";
    EXPECT_EQ(generate("--check --diff"), "out of date: in/whole.txt\n--- in/whole.txt\n"
                                          "+++ in/whole.txt\n" +
                                              hunks + "exit 1\n");
    const std::string check = program + "--check --diff in/manifest.json";
    EXPECT_THAT(onTerminal(check), HasSubstr("\x1b[31m-old\x1b[m\r\n\x1b[32m+12\x1b[m\r\n"));
    EXPECT_THAT(onTerminal("NO_COLOR=1 " + check), HasSubstr("\r\n-old\r\n+12\r\n"));
    fs::remove("in/whole.txt");
    EXPECT_THAT(generate("--check --diff"),
                HasSubstr("--- /dev/null\n+++ in/whole.txt\n@@ -0,0 +1,12 @@\n+1\n+2\n"));
}

/* The data of the second output arrives half a second after the program opens the file. */
TEST(Generate, CountsOutputsOnATerminal) {
    const Project project;
    fs::rename("in/second.json", "in/data");
    ASSERT_EQ(mkfifo("in/second.json", 0600), 0);
    const ChildProcess writer{"exec > in/second.json; sleep 0.5; exec cat in/data"};
    EXPECT_THAT(onTerminal(program + "in/manifest.json"),
                HasSubstr("\r1 of 4 outputs\x1b[K\r\x1b[Kwrote in/whole.txt"));
}

/* Waits until a new file would be newer than all existing files. Build tools compare time stamps,
   and file systems take them from a clock with long ticks. */
void awaitNewTime() {
    writeFile("probe", "");
    const fs::file_time_type before = fs::last_write_time("probe");
    while (fs::last_write_time("probe") == before) {
        writeFile("probe", "");
    }
}

/* A second build does nothing. A changed input or a deleted output causes a run of the program. */
TEST(Generate, WritesDependenciesForBuildTools) {
    const struct {
        std::string file, text, command, idle;
    } rows[]{
        {"build.ninja",
         "rule g\n command = " + program +
             "--depfile d $in\n depfile = d\n restat = 1\n"
             "build in/o$ o: g in/manifest.json\n",
         "ninja", "ninja: no work to do.\n"},
        {"Makefile",
         "stamp: ; @" + program + "--depfile d --stamp stamp in/manifest.json\n-include d\n",
         "make", "make: 'stamp' is up to date.\n"},
    };
    for (const auto& row : rows) {
        const Project project;
        save("manifest.json", manifestOf(R"("template": "a #b")", "o o"));
        writeFile(project.directory / row.file, row.text);
        for (const std::string text : {"first", "second"}) {
            awaitNewTime();
            save("a #b", text);
            EXPECT_THAT(outputOf(row.command + " 2>&1"), HasSubstr("wrote in/o o\n"));
            EXPECT_EQ(content("o o"), text);
            EXPECT_EQ(outputOf(row.command + " 2>&1"), row.idle);
        }
        awaitNewTime();
        save("first.json", first("other"));
        outputOf(row.command);
        EXPECT_EQ(outputOf(row.command + " 2>&1"), row.idle);
        awaitNewTime();
        save("a #b", "{{ x }}");
        for (const char* const time : {"first", "again"}) {
            EXPECT_THAT(outputOf(row.command + " 2>&1"), HasSubstr("Undefined name x")) << time;
        }
    }
}

/* A change by a shell command, and the expected content of a file. */
struct Step {
    std::string command, file, content;
};

const std::string watchingOne = "watching 1 directories\n";

struct WatchRow {
    const char* name;
    std::string prepare;
    std::vector<Step> steps;
    /* Printed to standard error when it is ready. */
    std::string ready = watchingOne;
};

const std::string lists = "wrote in/list.txt\nwrote in/keys.txt\n";
const std::string allButRegion = "wrote in/whole.txt\n" + lists;
const std::string noSecond = "vespermoor-utils: in/second.json: No such file or directory, for in/";
const std::string lostSecond =
    watchingOne + noSecond + "whole.txt\n" + noSecond + "list.txt\n" + noSecond + "keys.txt\n";

const WatchRow watchRows[]{
    {"saves",
     "",
     {{saving("in/t", "[{{ name }}]") + " && mv in/t in/item.tmpl", "in/list.txt", "[i][second]"},
      {"rm in/second.json", "error", lostSecond},
      {"echo { > in/m && mv in/m in/manifest.json", "error",
       lostSecond + "vespermoor-utils: in/manifest.json:2:1: Missing a name for object member\n"},
      {saving("in/second.json", second("back")), "in/list.txt", "[back][second]"},
      {saving("in/first.json", R"({"words": [], "name": "first", "only": "here"})"),
       "in/region.txt", "1[a][/a]2[b]first here\n[/b]3"},
      {"", "output",
       allButRegion + "wrote in/region.txt\nwrote in/list.txt\nwrote in/list.txt\n"
                      "wrote in/region.txt\n"}}},
    {"save through another name, with the same size and time",
     "mkdir z && ln in/first.json z/other",
     {{"touch -r z/other z/time && " + saving("z/other", first("other")) +
           " && touch -r z/time z/other",
       "in/whole.txt", "other here\n"}}},
    {"output whose missing region is added",
     saving("in/region.txt", "1[a][/a]2"),
     {{saving("in/region.txt", "[a][/a][b][/b]"), "in/region.txt",
       "[a](x)(y)[/a][b]first here\n[/b]"},
      {saving("in/value.tmpl", "{{ @value }}"), "in/region.txt", "[a]xy[/a][b]first here\n[/b]"},
      {"", "output", allButRegion + "wrote in/region.txt\nwrote in/region.txt\n"}},
     "vespermoor-utils: in/region.txt: missing tag '[b]'\n" + watchingOne},
    {"output edited, then deleted with its directory",
     saving("in/manifest.json", manifestOf(R"("template": "item.tmpl")", "a/b/c")),
     {{"echo edited > in/a/b/c", "in/a/b/c", "<first>"},
      {"rm -r in/a", "in/a/b/c", "<first>"},
      {"", "output", "wrote in/a/b/c\nwrote in/a/b/c\nwrote in/a/b/c\n"}}},
    {"unreadable file in an unreadable directory",
     saving("closed/t", "1") + " && chmod 0 closed/t && chmod 0300 closed && " +
         saving("in/manifest.json", manifestOf(R"("template": "../closed/t")")),
     {{"chmod 0600 closed/t", "in/whole.txt", "1"},
      {"printf 22 > closed/t", "in/whole.txt", "22"},
      {"chmod 0700 closed", "error",
       "vespermoor-utils: in/../closed/t: Permission denied, for in/whole.txt\n" + watchingOne}}},
    {"missing directory, without watching the whole tree above it",
     saving("in/manifest.json", manifestOf(R"("template": "../none/late/t")")) +
         " && mkdir -p a/b/c",
     {{saving("none/late/t", "late"), "in/whole.txt", "late"},
      {"rm -r none && " + saving("none/late/t", "again"), "in/whole.txt", "again"},
      {"printf last > none/late/t", "in/whole.txt", "last"}},
     "No such file or directory, for in/whole.txt\n" + watchingOne},
    {"links that change their targets",
     saving("z/t", "old") + " && " + saving("z/b/json", first("1")) + " && " +
         saving("z/m", manifestOf(R"("template": "a/t")")) +
         " && ln -sfn ../z in/a && ln -sf a/b/json in/first.json && ln -sf ../z/m in/manifest.json",
     {{saving("z/t", "z{{ name }}"), "in/whole.txt", "z1"},
      {saving("z/b/json", first("2")), "in/whole.txt", "z2"},
      {saving("y/b/json", first("3")) + " && " + saving("y/t", "y{{ name }}") +
           " && ln -sfn ../y in/a",
       "in/whole.txt", "y3"},
      {saving("y/b/json", first("4")), "in/whole.txt", "y4"},
      {saving("x/json", first("5")) + " && ln -sf ../x/json in/first.json", "in/whole.txt", "y5"},
      {saving("x/json", first("6")), "in/whole.txt", "y6"},
      {saving("z/m", manifestOf(R"("template": "a/t")", "new.txt")), "in/new.txt", "y6"}},
     " directories\n"},
    {"generated data",
     savingChain,
     {{saving("in/first.json", first("second")), "in/last.txt", "name=second;"},
      {saving("in/each.tmpl", "{{ @value }}"), "in/last.txt", "second"},
      {"", "output", madeChain + madeChain + "wrote in/last.txt\n"},
      {"", "error", watchingOne}}},
};

TEST(Generate, WatchRegeneratesDependentOutputs) {
    dropPrivileges();
    for (const WatchRow& row : watchRows) {
        SCOPED_TRACE(row.name);
        const Project project;
        outputOf(row.prepare);
        ChildProcess running{watching};
        waitUntil([&] { return readFile("error").find(row.ready) != std::string::npos; });
        for (const Step& step : row.steps) {
            outputOf(step.command);
            waitUntil([&] { return fs::exists(step.file) && readFile(step.file) == step.content; });
        }
        EXPECT_EQ(running.stop({SIGTERM}), 0);
    }
}

TEST(Generate, PollTakesNoKernelWatches) {
    const Project project;
    const ChildProcess running{watching + " --poll"};
    waitUntil([] { return readFile("error") == "comparing the files once a second\n"; });
    EXPECT_EQ(outputOf("cat /proc/$(cat id)/fdinfo/* | grep -c 'inotify wd'"), "0\n");
    save("item.tmpl", "[{{ name }}]");
    waitUntil([] { return content("list.txt") == "[i][second]"; });
}

/* The template is replaced again and again, with pauses shorter than a tick. */
TEST(Generate, WatchUpdatesDuringEndlessSaves) {
    const Project project;
    const ChildProcess running{watching};
    waitUntil([&] { return !readFile("error").empty(); });
    const ChildProcess writer{[]() -> std::string {
        for (int i = 0;; ++i) {
            replace("item.tmpl", std::to_string(i));
        }
    }};
    waitUntil([&] { return readFile("output").rfind("wrote in/list.txt") > allButRegion.size(); });
}

/* The manifest is a pipe, which delays reading it until another manifest is saved. */
TEST(Generate, WatchRereadsAManifestSavedDuringARead) {
    const Project project;
    fs::remove("in/manifest.json");
    ASSERT_EQ(mkfifo("in/manifest.json", 0600), 0);
    ChildProcess running{watching};
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

/* Retries if a delay longer than a tick splits the burst. */
TEST(Generate, ABurstOfSavesIsOneUpdate) {
    const Project project;
    generate();
    int saves = 0;
    waitUntil([&] {
        writeFile("error", "");
        ChildProcess running{watching};
        waitUntil([&] { return !readFile("error").empty(); });
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds{200};
        for (int i = 0; i < 50 || std::chrono::steady_clock::now() < end; ++i) {
            replace("item.tmpl", std::to_string(++saves) + ';');
        }
        const std::string last = std::to_string(saves) + ';';
        waitUntil([&] { return content("list.txt") == last + last; });
        return running.stop({SIGTERM}) == 0 && readFile("output") == "wrote in/list.txt\n";
    });
}

} // namespace
} // namespace VespermoorEngine::Test
