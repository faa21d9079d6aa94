#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/Pair.h>
#include <Corrade/Containers/String.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include "Processes.h"
#include "Recorder.h"
#include "Support.h"
#include "VespermoorEditor/Utils/System.h"

namespace VespermoorEngine::Test {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

/* A home without a profile, so that the login shell has nothing of its own to print. */
class Shell : public testing::Test {
protected:
    const TemporaryDirectory directory;
    const ScopedVariable home{"HOME", directory.path()};
};

struct CaptureRow {
    const char* name;
    std::string command;
    std::string output;
    int status;
};

class RunShellCommandCapture : public Shell, public testing::WithParamInterface<CaptureRow> {};

TEST_P(RunShellCommandCapture, GivesOutputAndWaitStatus) {
    const CaptureRow& row = GetParam();
    Containers::String output = "of an earlier command";
    EXPECT_EQ(runShellCommandCapture(view(row.command), output, {}), row.status);
    EXPECT_EQ(output.size(), row.output.size());
    EXPECT_TRUE(text(output) == row.output);
    EXPECT_EQ(output.data()[output.size()], '\0');
}

CaptureRow zeros(const char* const name, const std::size_t count) {
    return {name, "head -c " + std::to_string(count) + " /dev/zero", std::string(count, '\0'), 0};
}

const CaptureRow captureRows[]{
    {"nothing printed", "true", "", 0},
    zeros("one byte", 1),
    zeros("one less than a block", 8191),
    zeros("one block", 8192),
    zeros("one more than a block", 8193),
    zeros("64 MiB", 64 << 20),
    {"zero bytes within", R"(printf "a\000b\000")", "a\0b\0"s, 0},
    {"both streams in order", "echo out; echo error >&2; echo out", "out\nerror\nout\n", 0},
    {"exit code after output", "echo before; exit 1", "before\n", 1 << 8},
    {"braces stay", "echo {} {0} }{", "{} {0} }{\n", 0},
    {"quotes are not escaped", "echo a'; echo 'b", "a\nb\n", 0},
};
INSTANTIATE_TEST_SUITE_P(, RunShellCommandCapture, testing::ValuesIn(captureRows),
                         rowName<CaptureRow>);

TEST_F(Shell, ReadsTheProfileOfALoginShell) {
    writeFile(directory / ".profile", "echo profile; variable=set");
    Containers::String output;
    EXPECT_EQ(runShellCommandCapture("echo $variable", output, {}), 0);
    EXPECT_EQ(text(output), "profile\nset\n");
}

TEST_F(Shell, RunsInTheDirectoryAndLeavesThatOfTheProcess) {
    const std::string name = "{} a b";
    fs::create_directory(directory / name);
    const std::string before = fs::current_path();
    Containers::String output;
    EXPECT_EQ(runShellCommandCapture("pwd", output, view(directory / name)), 0);
    EXPECT_EQ(text(output), directory / name + "\n");
    EXPECT_EQ(runShellCommandCapture("pwd", output, ""), 0);
    EXPECT_EQ(text(output), before + "\n");
    EXPECT_EQ(fs::current_path(), before);
}

TEST_F(Shell, RunsNothingInAMissingDirectory) {
    Containers::String output = "of an earlier command";
    testing::internal::CaptureStderr();
    const int status = runShellCommandCapture("touch made", output, view(directory / "missing"));
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("missing"));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) != 0) << status;
    EXPECT_EQ(text(output), "");
    EXPECT_TRUE(fs::is_empty(directory.path()));
}

TEST_F(Shell, TellsOfAKilledCommand) {
    Containers::String output;
    const int status = runShellCommandCapture("echo before; kill -9 $$", output, {});
    /* Whether the outer shell makes room for the inner one or waits for it, and then reports its
       end, is its own choice. */
    EXPECT_THAT(text(output), testing::StartsWith("before\n"));
    EXPECT_TRUE((WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) ||
                (WIFEXITED(status) && WEXITSTATUS(status) == 128 + SIGKILL))
        << status;
}

TEST_F(Shell, LeavesTheOutputWhereNoShellCanBeStarted) {
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{3, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    Containers::String output = "of an earlier command";
    const int status = runShellCommandCapture("true", output, {});
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(text(output), "of an earlier command");
}

TEST_F(Shell, GivesTheStatusOfAShellThatSomethingElseWaitedFor) {
    /* The kernel itself reaps the children of a process that ignores their end. */
    const sighandler_t before = std::signal(SIGCHLD, SIG_IGN);
    Containers::String output = "of an earlier command";
    const int status = runShellCommandCapture("echo new", output, {});
    std::signal(SIGCHLD, before);
    EXPECT_EQ(status, -1);
    EXPECT_EQ(text(output), "new\n");
}

TEST(SetShellEnvironment, KeepsWhatIsSetAndGoesOnAfterAFailure) {
    const ScopedVariable kept{"VESPERMOOR_KEPT", "before"};
    const ScopedVariable twice{"VESPERMOOR_TWICE", std::nullopt};
    const ScopedVariable last{"VESPERMOOR_LAST", std::nullopt};
    using Variables = Containers::Array<Containers::Pair<Containers::String, Containers::String>>;
    const auto value = [](const char* name) { return Containers::StringView{std::getenv(name)}; };

    EXPECT_EQ(setShellEnvironment(Variables{}), 0);
    EXPECT_EQ(setShellEnvironment(Variables{Corrade::InPlaceInit,
                                            {{"VESPERMOOR_KEPT", "after"},
                                             {"VESPERMOOR_TWICE", "first"},
                                             {"VESPERMOOR_TWICE", "second"}}}),
              0);
    EXPECT_EQ(value("VESPERMOOR_KEPT"), "before");
    EXPECT_EQ(value("VESPERMOOR_TWICE"), "first");
    EXPECT_EQ(
        setShellEnvironment(Variables{Corrade::InPlaceInit,
                                      {{"VESPERMOOR=BAD", "value"}, {"VESPERMOOR_LAST", "value"}}}),
        -1);
    EXPECT_EQ(value("VESPERMOOR_LAST"), "value");
}

TEST(ChangeDirectory, ChangesThatOfTheProcessOrNothing) {
    const ScopedCurrentDirectory current{fs::current_path()};
    const TemporaryDirectory directory;
    const std::string longer = directory.path() + "missing";
    EXPECT_EQ(changeDirectory(view(longer).exceptSuffix("missing")), 0);
    EXPECT_EQ(fs::current_path(), directory.path());
    const Messages messages;
    EXPECT_EQ(changeDirectory("missing"), -1);
    EXPECT_EQ(fs::current_path(), directory.path());
    EXPECT_EQ(messages.text(), "");
}

struct LaunchRow {
    const char* name;
    void (*launch)();
    /* Directory and arguments of `xdg-open`; nothing where it is not to run. */
    std::vector<std::string> run;
};

class Launch : public testing::TestWithParam<LaunchRow> {};

/* `D` stands for the directory of the test, where an `xdg-open` first in PATH records its runs. */
TEST_P(Launch, HandsOver) {
    const TemporaryDirectory directory;
    writeRecorder(directory / "bin/xdg-open", directory / "record");
    fs::create_directory(directory / "a folder");
    const ScopedVariable path{"PATH", directory / "bin:" + std::getenv("PATH")};
    const ScopedCurrentDirectory current{directory.path()};

    testing::internal::CaptureStderr();
    GetParam().launch();
    testing::internal::GetCapturedStderr();
    std::vector<std::string> expected = GetParam().run;
    if (!expected.empty()) {
        expected[0].replace(0, 1, directory.path());
        expected.insert(expected.begin(), directory / "bin/xdg-open");
    }
    EXPECT_EQ(recorded(directory / "record"), expected);
    EXPECT_EQ(fs::current_path(), directory.path());
}

const LaunchRow launchRows[]{
    {"url", [] { openBrowser("https://a.example/{}?b=c"); }, {"D", "https://a.example/{}?b=c"}},
    {"url is bare", [] { openBrowser("a b;true"); }, {"D", "a", "b"}},
    {"file browser", [] { openWithSystemFilebrowser("a {}  'b'"); }, {"D", "a {}  'b'"}},
    {"default", [] { openWithSystemDefault("a  b.txt", "a folder"); }, {"D/a folder", "a  b.txt"}},
    {"default without directory", [] { openWithSystemDefault("a", ""); }, {"D", "a"}},
    {"default in a missing directory", [] { openWithSystemDefault("a", "missing"); }, {}},
};
INSTANTIATE_TEST_SUITE_P(, Launch, testing::ValuesIn(launchRows), rowName<LaunchRow>);

TEST(GenerateUUID, IsRandomAndOfVersion4) {
    const std::string first = text(generateUUID());
    const std::string form = "[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}";
    EXPECT_THAT(first, testing::MatchesRegex(form));
    EXPECT_NE(first, text(generateUUID()));
}

} // namespace
} // namespace VespermoorEngine::Test
