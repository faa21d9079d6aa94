#include <csignal>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Program.h"
#include "Support.h"
#include "Tree.h"

namespace VespermoorEngine::Test {
namespace {

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

TEST_F(HostWatch, PrintsChanges) {
    const struct {
        std::vector<std::string> paths;
        const char* ready;
        void (*change)();
        const char* output;
    } rows[]{
        // clang-format off
        /* One change is one line, however many paths it concerns. */
        {{"w", "w/g", "w/a", "o"}, "watching 4 directories\n",
         [] { fs::rename("w/g", "w/a/g"); fs::rename("w/a/g", "o/g"); },
         "Remove @/w/g\nModify @/w/a/g\nRemove @/w/a/g\nModify @/o/g\n"},
        {{"w/f"}, "watching 3 directories\n", [] { writeFile("w/g", ""); fs::remove("w/f"); },
         "Remove @/w/f\n"},
        {{"w"}, "watching 3 directories\n",
         [] { fs::rename("w/g", "w/f"); fs::rename("n", "w/a/n"); },
         "Remove @/w/g\nModify @/w/f\nModify @/w/a/n/x\nModify @/w/a/n\n"},
        // clang-format on
    };
    for (const auto& row : rows) {
        start(row.paths);
        EXPECT_EQ(program->error(), row.ready);
        row.change();
        const std::string expected = root.expanded(row.output);
        waitUntil([&] { return program->output() == expected; });
        EXPECT_EQ(program->stop({SIGINT}), 0);
        EXPECT_EQ(program->output(), expected);
    }
}

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
    EXPECT_EQ(run.output + run.error, "vespermoor-utils: none: No such file or directory\n");
}

} // namespace
} // namespace VespermoorEngine::Test
