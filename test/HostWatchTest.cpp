#include <csignal>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Processes.h"
#include "Support.h"
#include "Tree.h"

namespace VespermoorEngine::Test {
namespace {

using namespace std::string_literals;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

/* The command in a small tree, which is the current directory. Its output and its errors are files
   there. */
class HostWatch : public testing::Test {
protected:
    HostWatch() {
        makeTree(root.path(), {"w/f", "w/g", "w/a/b/", "o/", "n/x", "link -> w/f", "down -> w"});
    }

    /* The arguments are quoted for the shell. */
    void run(const std::string& arguments) {
        fs::remove("error");
        program.emplace("echo $$ > pid; exec '" VESPERMOOR_PROGRAM "' watch > output 2> error " +
                        arguments);
    }

    void start(const std::string& arguments) {
        run(arguments);
        waitUntil([] { return testing::Value(contentOf("error"), HasSubstr(" directories\n")); });
    }

    /* Runs the shell's `commands`. Changes between `stop` and `go` arrive together; after `idle` no
       command is running. */
    static void change(const std::string& commands) {
        outputOf("stop() { kill -STOP $(cat pid); }; go() { kill -CONT $(cat pid); }; "
                 "idle() { while grep -q . /proc/$(cat pid)/task/*/children; do :; done; }; " +
                 commands);
    }

    static std::string contentOf(const std::string& file) {
        return fs::exists(file) ? readFile(file) : "";
    }

    const TemporaryDirectory root;
    const ScopedCurrentDirectory current{root.path()};
    std::optional<ChildProcess> program;
};

struct Step {
    std::string changes;
    /* The added output, with the path of the tree as @. */
    std::string output;
};

struct Row {
    const char* name;
    const char* arguments;
    std::vector<Step> steps;
    std::string error = "";
    /* Above 0 if the command ends by itself. */
    int exitCode = 0;
};

class HostWatchRow : public HostWatch, public testing::WithParamInterface<Row> {};

TEST_P(HostWatchRow, PrintsAndRuns) {
    const Row& row = GetParam();
    start(row.arguments);
    const std::string error = contentOf("error") + row.error;
    std::string output;
    for (const Step& step : row.steps) {
        change(step.changes);
        output += root.expanded(step.output);
        waitUntil([&] { return contentOf("output") == output && contentOf("error") == error; });
    }
    EXPECT_EQ(program->stop(row.exitCode ? std::vector<int>{} : std::vector{SIGINT}), row.exitCode);
    EXPECT_EQ(contentOf("output"), output);
    EXPECT_EQ(contentOf("error"), error);
}

constexpr const char* waitingProgram =
    "w --exec sh -c 'echo begin $*; until rm go; do sleep .01; done 2> no; echo end' sh {} ';'";
constexpr const char* repeatedProgram =
    "w --repeat --exec sh -c 'echo begin $*; until rm go; do sleep .01; done 2> no' sh {} ';'";

const Row rows[]{
    {"OneLineForAChangeOfSeveralPaths",
     "w w/g w/a o",
     {{"mv w/g w/a/g; mv w/a/g o/g; truncate -s 9 o/g",
       "Remove @/w/g\nModify @/w/a/g\nRemove @/w/a/g\nModify @/o/g\nModify @/o/g\n"}}},
    {"OnlyTheFile",
     "w/f",
     {{"touch w/a/f w/x; rm w/f w/a/f; touch w/f", "Remove @/w/f\nModify @/w/f\n"}}},
    {"LinkToAFile", "link", {{"truncate -s 9 w/f; rm link", "Modify @/w/f\nRemove @/link\n"}}},
    {"LinkToADirectory", "down", {{"mkdir w/a/b/c", "Modify @/w/a/b/c\n"}}},
    {"ExcludedNames",
     "w --exclude '*.o' --exclude b/ --exclude c",
     {{"touch w/a/x.o w/a/b/x w/c w/a/.o2", "Modify @/w/a/.o2\n"}}},
    {"ExcludedPathsBelowEach", "w w/a --exclude 'a/b'", {{"mkdir w/a/b/x", "Modify @/w/a/b/x\n"}}},
    {"ExcludedPaths", "w --exclude 'a/?'", {{"mkdir w/a/b/x w/x", "Modify @/w/x\n"}}},
    {"Escaped", "w", {{"mkdir 'w/\n\302\233'", "Modify @/w/\\x0a\\xc2\\x9b\n"}}},
    {"Null", "w --null", {{"mkdir 'w/\n'", "Modify @/w/\n\0"s}}},
    {"Json",
     "w --format json",
     {{"mkdir 'w/\"\n\302\233'; rm w/f", "{\"event\":\"Modify\",\"path\":\"@/w/\\\"\\n\302\233\"}\n"
                                         "{\"event\":\"Remove\",\"path\":\"@/w/f\"}\n"}}},
    {"VanishedIsNoError",
     "w",
     {{"stop; mkdir w/x; rmdir w/x; go", "Modify @/w/x\nRemove @/w/x\n"}}},
    {"NotItsOwnOutput", ". w", {{"mkdir x", "Modify @/x\n"}, {"mkdir o/x", "Modify @/o/x\n"}}},
    {"NothingLeft",
     "w/a n/x",
     {{"stop; rm -r w/a n; go", "Remove @/w/a/b\nRemove @/n/x\n"}},
     "vespermoor-utils: w/a: no longer watched: the directory is gone\n"
     "vespermoor-utils: n/x: no longer watched: its directory is gone\n",
     1},
    {"AnotherDirectory",
     "o w",
     {{"stop; mv o q; mkdir o o/x w/x; go", "Modify @/w/x\n"}},
     "vespermoor-utils: o: no longer watched: the directory was replaced by another one\n"},
    {"EachPathIsAnArgument",
     "w --exec echo {} -p={}{}, {} ';'",
     {{"stop; touch 'w/x $HOME' w/y; go",
       "@/w/x $HOME @/w/y -p=@/w/x $HOME@/w/x $HOME, -p=@/w/y@/w/y, @/w/x $HOME @/w/y\n"}}},
    {"TemporaryFilesAreLeftOut",
     "w --exec echo {} ';'",
     {{"stop; touch w/t w/f~; mv w/f~ w/f; rm w/t w/g; go", "@/w/f @/w/g\n"}}},
    {"NotItsOwnChanges",
     "w --exec sh -c 'touch w/own; echo $*' sh {} ';'",
     {{"touch w/x", "@/w/x\n"}, {"idle; touch w/y", "@/w/y\n"}}},
    {"OneRunAtATime",
     waitingProgram,
     {{"touch w/x", "begin @/w/x\n"},
      {"touch w/y go", "end\n"},
      {"idle; touch w/z", "begin @/w/z\n"},
      {"touch go", "end\n"}}},
    {"RunsAgain",
     repeatedProgram,
     {{"touch w/x", "begin @/w/x\n"}, {"touch w/y go", "begin @/w/y\n"}}},
    {"LongCommandLines",
     "w --exec sh -c 'echo $#' sh {} ';'",
     {{"stop; (cd w; seq -f %0250g 600 | xargs touch); go", "300\n300\n"}}},
    {"NoSuchProgram",
     "w --exec ./none {} ';'",
     {{"touch w/x", ""}},
     "vespermoor-utils: ./none: No such file or directory\n"},
    {"KilledProgram",
     "w --exec sh -c 'kill -SEGV $$' ';'",
     {{"touch w/x", ""}},
     "vespermoor-utils: sh: Segmentation fault\n"},
    {"ProgramsInheritNoWatch",
     "w --exec sh -c 'ls -l /proc/self/fd | grep -c inotify' ';'",
     {{"touch w/x", "0\n"}}},
};

INSTANTIATE_TEST_SUITE_P(Rows, HostWatchRow, testing::ValuesIn(rows), rowName<Row>);

TEST_F(HostWatch, PathsThatAreNotUtf8) {
    start("w --format json");
    change("mkdir 'w/\377'");
    waitUntil([] { return !contentOf("output").empty(); });
    EXPECT_EQ(outputOf("sed 's/{\"event\":\"Modify\",\"pathBase64\":\"\\(.*\\)\"}/\\1/' output | "
                       "base64 -d"),
              root / "w/\377");
}

TEST_F(HostWatch, PassesTheSignalOnToTheProgram) {
    start("w --exec sh -c 'trap \"echo term; exit\" TERM; echo run; "
          "while :; do sleep .01; done' ';'");
    change("touch w/x");
    waitUntil([] { return contentOf("output") == "run\n"; });
    EXPECT_EQ(program->stop({SIGTERM}), 0);
    EXPECT_EQ(contentOf("output"), "run\nterm\n");
}

/* Both signals arrive before the program handles either. */
TEST_F(HostWatch, ChecksOnceMoreAfterAnyNumberOfSignals) {
    for (const std::string option : {"--tick 60000", "--for 1e10"}) {
        start("w/a " + option);
        change("mkdir w/a/x");
        EXPECT_EQ(program->stop({SIGSTOP, SIGINT, SIGTERM, SIGCONT}), 0);
        EXPECT_EQ(contentOf("output"), "Modify " + (root / "w/a/x\n")) << option;
        change("rmdir w/a/x");
    }
}

/* A pipe that is full, and that nobody reads. */
class HostWatchUnread : public HostWatch {
protected:
    HostWatchUnread() {
        mkfifo("pipe", 0600);
        pipe = open("pipe", O_RDWR | O_NONBLOCK | O_CLOEXEC);
        while (write(pipe, "", 1) == 1) {
        }
    }

    ~HostWatchUnread() override { close(pipe); }

    std::string readPipe() const {
        std::string text(65536, '\0');
        text.resize(std::size_t(std::max(read(pipe, text.data(), text.size()), ssize_t{})));
        return text;
    }

    int pipe;
};

TEST_F(HostWatchUnread, OutputDoesNotBlockItsExit) {
    start("o > pipe");
    change("mkdir o/x");
    EXPECT_EQ(program->stop({SIGTERM}), 1);
    EXPECT_THAT(contentOf("error"),
                EndsWith("\nvespermoor-utils: standard output: nobody reads it\n"));
}

TEST_F(HostWatchUnread, ErrorsDoNotStopIt) {
    outputOf("mkdir d; cd d; seq -f %0250g 300 | xargs mkdir");
    run("w d/* 2> pipe");
    waitUntil([] {
        change("rm -f w/x; touch w/x");
        return !contentOf("output").empty();
    });
    change("rm -r d; mkdir w/last");
    waitUntil([] { return testing::Value(contentOf("output"), HasSubstr("last")); });
    std::string errors;
    waitUntil([&] { return testing::Value(errors += readPipe(), EndsWith("standard error\n")); });
    EXPECT_THAT(errors.substr(errors.find('w'), 25), StartsWith("watching 303 directories\n"));
    EXPECT_THAT(errors.substr(errors.rfind("the directory is gone")),
                ContainsRegex("^the directory is gone\nvespermoor-utils: [0-9]+ messages are lost, "
                              "since nobody read standard error\n$"));
}

TEST_F(HostWatch, EndsByItself) {
    const std::tuple<const char*, int, const char*> rows[]{
        {"o --for=0.01 --tick=60000", 0, "watching 1 directories\n"},
        {"w none", 1, "vespermoor-utils: none: No such file or directory\n"},
        {"-- --exec", 1, "vespermoor-utils: --exec: No such file or directory\n"}};
    for (const auto& [arguments, exitCode, error] : rows) {
        run(arguments);
        EXPECT_EQ(program->stop({}), exitCode);
        EXPECT_EQ(contentOf("error"), error);
    }
}

} // namespace
} // namespace VespermoorEngine::Test
