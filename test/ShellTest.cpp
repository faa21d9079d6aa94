#include <csignal>
#include <filesystem>
#include <regex>
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

TEST_F(Shell, GivesOutputAndWaitStatus) {
    writeFile(directory / ".profile", "variable=of_a_login_shell");
    const struct {
        std::string command, output;
        int status;
    } rows[]{
        {"true", "", 0},
        {"head -c 8192 /dev/zero", std::string(8192, '\0'), 0},
        {"head -c 8193 /dev/zero", std::string(8193, '\0'), 0},
        {"head -c 67108864 /dev/zero", std::string(67108864, '\0'), 0},
        {R"(printf "a\000b\000")", "a\0b\0"s, 0},
        {"echo out; echo error >&2; echo out", "out\nerror\nout\n", 0},
        {"echo before; exit 1", "before\n", 1 << 8},
        {"echo {} {0} }{ $variable", "{} {0} }{ of_a_login_shell\n", 0},
        {"echo a'; echo 'b", "a\nb\n", 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.command);
        Containers::String output = "of an earlier command";
        EXPECT_EQ(runShellCommandCapture(view(row.command), output, {}), row.status);
        EXPECT_EQ(output.size(), row.output.size());
        EXPECT_TRUE(text(output) == row.output);
        EXPECT_EQ(output.data()[output.size()], '\0');
    }
}

TEST_F(Shell, RunsInTheDirectoryOrNotAtAll) {
    const ScopedCurrentDirectory current{directory.path()};
    fs::create_directory(directory / "{} a b");
    const struct {
        const char *in, *output;
        bool runs;
    } rows[]{{"", "\n", true}, {"{} a b", "/{} a b\n", true}, {"missing", "", false}};
    for (const auto& row : rows) {
        Containers::String output = "of an earlier command";
        testing::internal::CaptureStderr();
        const int status = runShellCommandCapture("pwd", output, row.in);
        EXPECT_EQ(testing::internal::GetCapturedStderr().empty(), row.runs);
        EXPECT_TRUE(WIFEXITED(status) && (WEXITSTATUS(status) == 0) == row.runs) << status;
        EXPECT_EQ(std::regex_replace(text(output), std::regex{directory.path()}, ""), row.output);
        EXPECT_EQ(fs::current_path(), directory.path());
    }
}

/* Whether the outer shell makes room for the inner one or waits for it, and then reports its end,
   is its own choice. */
TEST_F(Shell, TellsOfAKilledCommand) {
    Containers::String output;
    const int status = runShellCommandCapture("echo before; kill -9 $$", output, {});
    EXPECT_THAT(text(output), testing::StartsWith("before\n"));
    EXPECT_THAT(status, testing::AnyOf(SIGKILL, (128 + SIGKILL) << 8));
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

using Variable = Containers::Pair<Containers::String, Containers::String>;

TEST(SetShellEnvironment, KeepsWhatIsSetAndGoesOnAfterAFailure) {
    const ScopedVariable kept{"VESPERMOOR_KEPT", "before"};
    const ScopedVariable fresh{"VESPERMOOR_NEW", std::nullopt};
    const ScopedVariable last{"VESPERMOOR_LAST", std::nullopt};
    const auto set = [](std::initializer_list<Variable> variables) {
        return setShellEnvironment(Containers::Array<Variable>{Corrade::InPlaceInit, variables});
    };
    EXPECT_EQ(set({}), 0);
    EXPECT_EQ(set({{"VESPERMOOR_KEPT", "after"}, {"VESPERMOOR_NEW", "new"}}), 0);
    EXPECT_EQ(set({{"VESPERMOOR=BAD", "value"}, {"VESPERMOOR_LAST", "value"}}), -1);
    EXPECT_STREQ(std::getenv("VESPERMOOR_KEPT"), "before");
    EXPECT_STREQ(std::getenv("VESPERMOOR_NEW"), "new");
    EXPECT_STREQ(std::getenv("VESPERMOOR_LAST"), "value");
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

/* An `xdg-open` first in PATH records its runs. */
TEST(Launch, HandsOverToTheDesktop) {
    const struct {
        void (*launch)();
        /* Directory, below that of the test, and arguments; nothing where it is not to run. */
        std::vector<std::string> run;
    } rows[]{
        // clang-format off
        {[] { openBrowser("https://a.example/{}?b=c"); }, {"", "https://a.example/{}?b=c"}},
        {[] { openBrowser("a b;true"); }, {"", "a", "b"}},
        {[] { openWithSystemFilebrowser("a {}  'b'"); }, {"", "a {}  'b'"}},
        {[] { openWithSystemDefault("a  b.txt", "a folder"); }, {"/a folder", "a  b.txt"}},
        {[] { openWithSystemDefault("a", ""); }, {"", "a"}},
        {[] { openWithSystemDefault("a", "missing"); }, {}},
        // clang-format on
    };
    for (const auto& row : rows) {
        const TemporaryDirectory directory;
        writeRecorder(directory / "bin/xdg-open", directory / "record");
        fs::create_directory(directory / "a folder");
        const ScopedVariable path{"PATH", directory / "bin:" + std::getenv("PATH")};
        const ScopedCurrentDirectory current{directory.path()};
        testing::internal::CaptureStderr();
        row.launch();
        testing::internal::GetCapturedStderr();
        std::vector<std::string> expected = row.run;
        if (!expected.empty()) {
            expected[0].insert(0, directory.path());
            expected.insert(expected.begin(), directory / "bin/xdg-open");
        }
        EXPECT_EQ(recorded(directory / "record"), expected);
        EXPECT_EQ(fs::current_path(), directory.path());
    }
}

TEST(GenerateUUID, IsRandomAndOfVersion4) {
    const std::string first = text(generateUUID());
    const std::string form = "[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}";
    EXPECT_THAT(first, testing::MatchesRegex(form));
    EXPECT_NE(first, text(generateUUID()));
}

} // namespace
} // namespace VespermoorEngine::Test
