#include <algorithm>
#include <csignal>
#include <filesystem>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "Program.h"
#include "Support.h"
#include "Tree.h"

namespace VespermoorEngine::Test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAreArray;

/* The command while it runs, with its output at hand. */
class Watcher {
public:
    Watcher(const std::string& tick, std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {VESPERMOOR_PROGRAM, "watch", "--tick", tick});
        std::vector<char*> pointers;
        for (std::string& argument : arguments) {
            pointers.push_back(argument.data());
        }
        pointers.push_back(nullptr);
        int outputEnds[2], errorEnds[2];
        EXPECT_EQ(pipe2(outputEnds, O_CLOEXEC), 0);
        EXPECT_EQ(pipe2(errorEnds, O_CLOEXEC), 0);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, outputEnds[1], 1);
        posix_spawn_file_actions_adddup2(&actions, errorEnds[1], 2);
        EXPECT_EQ(posix_spawn(&child, pointers[0], &actions, nullptr, pointers.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        close(outputEnds[1]);
        close(errorEnds[1]);
        output = outputEnds[0];
        error = errorEnds[0];
    }

    ~Watcher() {
        if (child > 0) {
            end(SIGKILL);
        }
        close(output);
        close(error);
    }

    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    std::string outputLine() { return line(output); }
    std::string errorLine() { return line(error); }

    /* Sends the signal and returns the exit code. */
    int end(const int signal) {
        kill(child, signal);
        return wait();
    }

    int wait() {
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        child = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    /* The next line; empty at the end of the output, or where none comes for a long time. */
    static std::string line(const int descriptor) {
        std::string text;
        pollfd ready{descriptor, POLLIN, 0};
        char c;
        while (poll(&ready, 1, 30'000) == 1 && read(descriptor, &c, 1) == 1 && c != '\n') {
            text += c;
        }
        return text;
    }

    pid_t child = 0;
    int output;
    int error;
};

struct WatchRow {
    const char* name;
    std::vector<std::string> paths;
    const char* ready;
    void (*change)(const std::string& root);
    std::vector<std::string> lines;
};

void PrintTo(const WatchRow& row, std::ostream* const out) {
    *out << row.name;
}

const WatchRow rows[]{
    // clang-format off
    {"directory", {"w"}, "watching 3 directories", [](const std::string& r) {
     fs::rename(r + "/w/f", r + "/w/g"); fs::rename(r + "/n", r + "/w/a/n"); },
     {"Remove w/f", "Modify w/g", "Modify w/a/n/x", "Modify w/a/n"}},
    {"file", {"w/f"}, "watching 3 directories", [](const std::string& r) {fs::remove(r + "/w/g");
     fs::remove(r + "/w/f"); }, {"Remove w/f"}},
    {"one change is one line, however many paths it concerns", {"w", "w/f", "w/a", "o"},
     "watching 4 directories", [](const std::string& r) {fs::rename(r + "/w/f", r + "/w/a/f");
     fs::rename(r + "/w/a/f", r + "/o/f"); },
     {"Remove w/f", "Modify w/a/f", "Remove w/a/f", "Modify o/f"}},
    // clang-format on
};

class HostWatchTest : public testing::TestWithParam<WatchRow> {};

TEST_P(HostWatchTest, PrintsChanges) {
    const WatchRow& row = GetParam();
    const TemporaryDirectory root;
    makeTree(root.path(), {"w/f", "w/g", "w/a/b/", "o/", "n/x"});
    std::vector<std::string> paths;
    std::transform(row.paths.begin(), row.paths.end(), std::back_inserter(paths),
                   [&](const std::string& path) { return root / path; });
    Watcher watcher{"1", paths};
    EXPECT_EQ(watcher.errorLine(), row.ready);
    row.change(root.path());
    for (const std::string& expected : row.lines) {
        const std::size_t blank = expected.find(' ') + 1;
        EXPECT_EQ(watcher.outputLine(),
                  expected.substr(0, blank) + (root / expected.substr(blank)));
    }
    EXPECT_EQ(watcher.end(SIGINT), 0);
}

INSTANTIATE_TEST_SUITE_P(, HostWatchTest, testing::ValuesIn(rows), rowName<WatchRow>);

TEST(HostWatch, EndsWithALastLook) {
    const TemporaryDirectory root;
    Watcher watcher{"60000", {root.path()}};
    EXPECT_EQ(watcher.errorLine(), "watching 1 directories");
    writeFile(root / "f", "");
    EXPECT_EQ(watcher.end(SIGTERM), 0);
    EXPECT_EQ(watcher.outputLine(), "Modify " + (root / "f"));
}

TEST(HostWatch, EndsByItself) {
    const TemporaryDirectory root;
    Watcher watcher{"1", {"--for", "0.01", root.path()}};
    EXPECT_EQ(watcher.wait(), 0);
}

TEST(HostWatch, RefusesAPathThatDoesNotExist) {
    const TemporaryDirectory root;
    const ProgramRun run = runProgram({"watch", root.path(), root / "none"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.error,
              "vespermoor-utils: " + (root / "none") + ": there is no such file or directory\n");
}

} // namespace
} // namespace VespermoorEngine::Test
