#include <csignal>

#include <Corrade/Containers/Pair.h>
#include <sys/resource.h>

#include "Processes.h"
#include "Support.h"
#include "VespermoorEditor/Utils/System.h"

namespace VespermoorEngine::Test {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

/* A home without a profile, so that the login shell has nothing of its own to print. */
class Shell : public testing::Test {
protected:
    const TemporaryDirectory directory;
    const ScopedVariable home{"HOME", directory.path()};
};

using Captured = std::pair<int, std::string>;

/* Wait status and output. */
Captured captured(const std::string& command, const char* const in = "") {
    Containers::String output = "of an earlier command";
    const int status = runShellCommandCapture(view(command), output, in);
    EXPECT_EQ(output.data()[output.size()], '\0');
    return {status, text(output)};
}

TEST_F(Shell, GivesOutputAndWaitStatus) {
    writeFile(directory / ".profile", "variable=of_a_login_shell");
    EXPECT_EQ(captured(R"(printf "a\000b\000")"), Captured(0, "a\0b\0"s));
    EXPECT_EQ(captured("echo out; echo error >&2; echo out"), Captured(0, "out\nerror\nout\n"));
    EXPECT_EQ(captured("echo {} {0} }{ $variable"), Captured(0, "{} {0} }{ of_a_login_shell\n"));
    EXPECT_EQ(captured("echo a'; echo 'b"), Captured(0, "a\nb\n"));
    EXPECT_EQ(captured("echo before; exit 3"), Captured(3 << 8, "before\n"));
    for (const std::size_t size : {0, 1, 8191, 8192, 8193, 64 << 20}) {
        const std::string command = "head -c " + std::to_string(size) + " /dev/zero";
        EXPECT_TRUE(captured(command) == Captured(0, std::string(size, '\0'))) << command;
    }
}

TEST_F(Shell, RunsInTheDirectoryOrNotAtAll) {
    const ScopedCurrentDirectory current{directory.path()};
    fs::create_directory(directory / "{} a b");
    EXPECT_EQ(captured("pwd"), Captured(0, directory.path() + '\n'));
    EXPECT_EQ(captured("pwd", "{} a b"), Captured(0, directory / "{} a b\n"));
    testing::internal::CaptureStderr();
    const auto [status, output] = captured("pwd", "missing");
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    EXPECT_NE(status, 0);
    EXPECT_EQ(output, "");
    EXPECT_EQ(fs::current_path(), directory.path());
}

TEST_F(Shell, GivesAStatusOfItsOwnIfThereIsNone) {
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{3, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const Captured notStarted = captured("true");
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(notStarted, Captured(1, "of an earlier command"));

    /* The kernel itself reaps the children of a process that ignores their end. */
    const sighandler_t handler = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(captured("echo new"), Captured(-1, "new\n"));
    std::signal(SIGCHLD, handler);
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
    EXPECT_EQ(changeDirectory(view(longer).prefix(directory.path().size())), 0);
    EXPECT_EQ(fs::current_path(), directory.path());
    const Messages messages;
    EXPECT_EQ(changeDirectory("missing"), -1);
    EXPECT_EQ(fs::current_path(), directory.path());
    EXPECT_EQ(messages.text(), "");
}

/* Program, directory and arguments of the `xdg-open` that `launch` runs, if it does. With @ for the
   current directory, which has `a folder`. */
std::vector<std::string> launched(const std::function<void()>& launch) {
    const TemporaryDirectory directory;
    writeRecorder(directory, "bin/xdg-open");
    fs::create_directory(directory / "a folder");
    const ScopedVariable path{"PATH", directory / "bin:" + std::getenv("PATH")};
    const ScopedCurrentDirectory current{directory.path()};
    testing::internal::CaptureStderr();
    launch();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(fs::current_path(), directory.path());
    return recorded(directory);
}

TEST(Launch, HandsOverToTheDesktop) {
    const std::string program = "@/bin/xdg-open";
    EXPECT_THAT(launched([] { openBrowser("https://a.example/{}?b=c"); }),
                ElementsAre(program, "@", "https://a.example/{}?b=c"));
    EXPECT_THAT(launched([] { openBrowser("a b;true"); }), ElementsAre(program, "@", "a", "b"));
    EXPECT_THAT(launched([] { openWithSystemFilebrowser("a {}  'b'"); }),
                ElementsAre(program, "@", "a {}  'b'"));
    EXPECT_THAT(launched([] { openWithSystemDefault("a  b.txt", "a folder"); }),
                ElementsAre(program, "@/a folder", "a  b.txt"));
    EXPECT_THAT(launched([] { openWithSystemDefault("a", ""); }), ElementsAre(program, "@", "a"));
    EXPECT_THAT(launched([] { openWithSystemDefault("a", "missing"); }), ElementsAre());
}

TEST(GenerateUUID, IsRandomAndOfVersion4) {
    const std::string first = text(generateUUID());
    const std::string form = "[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}";
    EXPECT_THAT(first, testing::MatchesRegex(form));
    EXPECT_NE(first, text(generateUUID()));
}

} // namespace
} // namespace VespermoorEngine::Test
