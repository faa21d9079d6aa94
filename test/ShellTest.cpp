#include <csignal>

#include <Corrade/Containers/Pair.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include "Processes.h"
#include "Support.h"
#include "VespermoorEditor/Utils/System.h"

namespace VespermoorEngine::Test {
namespace {

using namespace std::string_literals;

/* A home without a profile, so that the login shell has nothing of its own to print. */
class Shell : public testing::Test {
protected:
    const TemporaryDirectory directory;
    const ScopedVariable home{"HOME", directory.path()};
};

TEST_F(Shell, GivesOutputAndWaitStatus) {
    writeFile(directory / ".profile", "variable=of_a_login_shell");
    struct Row {
        std::string command, output;
        int status = 0;
    };
    std::vector<Row> rows{
        {R"(printf "a\000b\000")", "a\0b\0"s},
        {"echo out; echo error >&2; echo out", "out\nerror\nout\n"},
        {"echo before; exit 1", "before\n", 1 << 8},
        {"echo {} {0} }{ $variable", "{} {0} }{ of_a_login_shell\n"},
        {"echo a'; echo 'b", "a\nb\n"},
    };
    for (const std::size_t size : {0, 1, 8191, 8192, 8193, 64 << 20}) {
        rows.push_back({"head -c " + std::to_string(size) + " /dev/zero", std::string(size, '\0')});
    }
    for (const Row& row : rows) {
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
    const std::pair<const char*, const char*> rows[]{
        {"", "@\n"}, {"{} a b", "@/{} a b\n"}, {"missing", ""}};
    for (const auto& [in, expected] : rows) {
        Containers::String output = "of an earlier command";
        testing::internal::CaptureStderr();
        const int status = runShellCommandCapture("pwd", output, in);
        EXPECT_EQ(testing::internal::GetCapturedStderr().empty(), status == 0);
        EXPECT_EQ(WIFEXITED(status) && WEXITSTATUS(status) == 0, *expected != 0) << status;
        EXPECT_EQ(directory.shortened(text(output)), expected);
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

TEST_F(Shell, GivesAStatusOfItsOwnWhereThereIsNone) {
    Containers::String output = "of an earlier command";
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{3, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const int notStarted = runShellCommandCapture("true", output, {});
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(notStarted, 1);
    EXPECT_EQ(text(output), "of an earlier command");

    /* The kernel itself reaps the children of a process that ignores their end. */
    const sighandler_t handler = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(runShellCommandCapture("echo new", output, {}), -1);
    std::signal(SIGCHLD, handler);
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
        /* Program, directory and arguments, with @ for the directory of the test. */
        std::vector<std::string> run;
    } rows[]{
        // clang-format off
        {[] { openBrowser("https://a.example/{}?b=c"); },
         {"@/bin/xdg-open", "@", "https://a.example/{}?b=c"}},
        {[] { openBrowser("a b;true"); }, {"@/bin/xdg-open", "@", "a", "b"}},
        {[] { openWithSystemFilebrowser("a {}  'b'"); }, {"@/bin/xdg-open", "@", "a {}  'b'"}},
        {[] { openWithSystemDefault("a  b.txt", "a folder"); },
         {"@/bin/xdg-open", "@/a folder", "a  b.txt"}},
        {[] { openWithSystemDefault("a", ""); }, {"@/bin/xdg-open", "@", "a"}},
        {[] { openWithSystemDefault("a", "missing"); }, {}},
        // clang-format on
    };
    for (const auto& row : rows) {
        const TemporaryDirectory directory;
        writeRecorder(directory, "bin/xdg-open");
        fs::create_directory(directory / "a folder");
        const ScopedVariable path{"PATH", directory / "bin:" + std::getenv("PATH")};
        const ScopedCurrentDirectory current{directory.path()};
        testing::internal::CaptureStderr();
        row.launch();
        testing::internal::GetCapturedStderr();
        EXPECT_EQ(recorded(directory), row.run);
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
