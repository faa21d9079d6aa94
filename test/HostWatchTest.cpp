#include <csignal>
#include <filesystem>
#include <optional>
#include <regex>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Processes.h"
#include "Program.h"
#include "Support.h"
#include "Tree.h"

namespace VespermoorEngine::Test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

/* The command in a small tree, with its output in the directory `logs`. */
class HostWatch : public testing::Test {
protected:
    HostWatch() { makeTree(root.path(), {"w/f", "w/g", "w/a/b/", "o/", "n/x"}); }

    /* Waits until all paths are watched. */
    void start(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "watch");
        program.emplace(logs.path(), arguments);
        waitUntil([&] { return testing::Value(program->error(), HasSubstr(" directories\n")); });
    }

    const TemporaryDirectory root;
    const ScopedCurrentDirectory current{root.path()};
    const TemporaryDirectory logs;
    std::optional<BackgroundProgram> program;
};

struct WatchRow {
    const char* name;
    std::vector<std::string> paths;
    const char* ready;
    void (*change)();
    /* With @ for the tree. */
    std::string output;
};

class HostWatchTest : public HostWatch, public testing::WithParamInterface<WatchRow> {};

TEST_P(HostWatchTest, PrintsChanges) {
    start(GetParam().paths);
    EXPECT_EQ(program->error(), GetParam().ready);
    GetParam().change();
    const std::string expected =
        std::regex_replace(GetParam().output, std::regex{"@"}, root.path());
    waitUntil([&] { return program->output() == expected; });
    EXPECT_EQ(program->stop({SIGINT}), 0);
    EXPECT_EQ(program->output(), expected);
}

const std::vector<WatchRow> rows{
    // clang-format off
    {"directory", {"w"}, "watching 3 directories\n",
     [] { fs::rename("w/f", "w/g"); fs::rename("n", "w/a/n"); },
     "Remove @/w/f\nModify @/w/g\nModify @/w/a/n/x\nModify @/w/a/n\n"},
    {"file", {"w/f"}, "watching 3 directories\n", [] { fs::remove("w/g"); fs::remove("w/f"); },
     "Remove @/w/f\n"},
    {"one change is one line, however many paths it concerns", {"w", "w/f", "w/a", "o"},
     "watching 4 directories\n", [] { fs::rename("w/f", "w/a/f"); fs::rename("w/a/f", "o/f"); },
     "Remove @/w/f\nModify @/w/a/f\nRemove @/w/a/f\nModify @/o/f\n"},
    // clang-format on
};

INSTANTIATE_TEST_SUITE_P(, HostWatchTest, testing::ValuesIn(rows), rowName<WatchRow>);

/* Both signals are there before the program can look at either. */
TEST_F(HostWatch, EndsWithALastLookHoweverManySignalsCome) {
    for (const auto& [option, value] : {std::pair{"--tick", "60000"}, {"--for", "1e10"}}) {
        start({"w/a", option, value});
        writeFile(root / "w/a/f", "");
        EXPECT_EQ(program->stop({SIGSTOP, SIGINT, SIGTERM, SIGCONT}), 0);
        EXPECT_EQ(program->output(), "Modify " + (root / "w/a/f") + '\n') << option;
        fs::remove("w/a/f");
    }
}

TEST_F(HostWatch, EndsWhereNothingCanBePrinted) {
    fs::create_symlink("/dev/full", logs / "program.output");
    start({"o"});
    writeFile(root / "o/f", "");
    waitUntil([&] {
        return testing::Value(program->error(), HasSubstr("utils: standard output: No space "));
    });
    EXPECT_EQ(program->stop({}), 1);
    fs::remove(logs / "program.output");
    /* What nobody reads fills a pipe, and would keep the program for ever. */
    const std::string pipe = logs / "program.output";
    ASSERT_EQ(mkfifo(pipe.data(), 0600), 0);
    const int reader = open(pipe.data(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    while (write(reader, "", 1) == 1) {
    }
    start({"o"});
    writeFile(root / "o/f", "");
    EXPECT_EQ(program->stop({SIGTERM}), 1);
    EXPECT_EQ(program->error(),
              "watching 1 directories\nvespermoor-utils: standard output: nobody reads it\n");
    close(reader);
}

TEST_F(HostWatch, EndsByItselfBeforeATickIsOver) {
    ChildProcess run{[] { return runProgram({"watch", "o", "--for=0.01", "--tick=60000"}).error; }};
    EXPECT_EQ(run.result(std::chrono::seconds{30}), "watching 1 directories\n");
}

TEST_F(HostWatch, RefusesAPathThatDoesNotExist) {
    const ProgramRun run = runProgram({"watch", "w", "none"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.output + run.error,
              "vespermoor-utils: none: there is no such file or directory\n");
}

} // namespace
} // namespace VespermoorEngine::Test
