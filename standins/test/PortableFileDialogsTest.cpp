#include "portable-file-dialogs.h"

#include <csignal>
#include <fstream>

#include <sys/stat.h>
#include <sys/wait.h>

#include "Processes.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

/* A PATH with stubs for the helpers and with what the real header runs to find them or instead of
   them. The current directory is that of the stubs, too. */
struct Stubs {
    Stubs(const Texts& helpers, const std::string& commands) {
        fs::create_directories(directory / "bin");
        fs::create_symlink("/usr/bin/which", directory / "bin/which");
        fs::create_symlink("/bin/echo", directory / "bin/echo");
        for (const std::string& helper : helpers) {
            writeRecorder(directory, helper, commands);
        }
    }

    /* The result of `show` in a process of its own, since the real header looks for its helper once
       in a process. */
    static std::string result(const std::function<std::string()>& show) {
        ChildProcess dialogs{[&]() -> std::string {
            const auto descriptors = [] {
                return std::distance(fs::directory_iterator{"/proc/self/fd"}, {});
            };
            const auto before = descriptors();
            const std::string result = show();
            return waitpid(-1, nullptr, WNOHANG) != -1 ? "a child is left"
                   : descriptors() != before           ? "a descriptor is left"
                                                       : result;
        }};
        return dialogs.result(1min).value_or("a dialog goes on");
    }

    const TemporaryDirectory directory;
    const ScopedVariable path{"PATH", directory / "bin"};
    const ScopedVariable desktop{"XDG_SESSION_DESKTOP", std::nullopt};
    const ScopedCurrentDirectory current{directory.path()};
};

/* With @ for the directory of the test, which is the current one. */
TEST(PortableFileDialogs, RunTheHelperOfTheDesktop) {
    const std::tuple<const char*, const char*, Texts, std::string> rows[]{
        {"@/bin", "", {}, ""},
        {"@/bin", "", {"bin/kdialog", "bin/qarma", "bin/matedialog", "bin/zenity"}, "bin/zenity"},
        {"@/bin", "KDE", {"bin/kdialog", "bin/zenity"}, "bin/kdialog"},
        {"@/bin", "KDE", {"bin/kdialog", "bin/zenity", "bin/qarma"}, "bin/qarma"},
        {"@/bin", "KDE", {"bin/zenity"}, "bin/zenity"},
        {"@/bin", "gnome", {"bin/kdialog"}, "bin/kdialog"},
        {"@/bin:@/b:@/c", "", {"b/zenity", "c/zenity", "bin/zenity/folder"}, "b/zenity"},
        {":@/bin", "", {"zenity"}, "zenity"},
        {"@/bin:", "", {"zenity"}, "zenity"},
        {"", "", {"zenity"}, ""}};
    for (const auto& [searched, session, installed, chosen] : rows) {
        const Stubs stubs{installed, "echo /a"};
        const ScopedVariable path{"PATH", stubs.directory.expanded(searched)};
        const ScopedVariable desktop{"XDG_SESSION_DESKTOP", session};
        EXPECT_EQ(Stubs::result([] { return pfd::select_folder{"title"}.result(); }),
                  chosen.empty() ? "" : "/a");
        const Texts run = recorded(stubs.directory);
        EXPECT_EQ(run.empty() ? "" : fs::proximate(stubs.directory.expanded(run[0])), chosen);
    }
}

/* Quotes, blanks, a line end, characters that a shell acts on, a dash at the start. */
const std::string odd = "-a 'b' \"c\"\n$(d) `e` \\ | %s";

/* The options that kdialog gets. */
template <class Show>
Texts options(const Show show) {
    const Stubs stubs{{"bin/kdialog"}, ""};
    EXPECT_EQ(Stubs::result([&] { return show(), ""; }), "");
    return recordedOptions(stubs.directory);
}

TEST(PortableFileDialogs, HandEveryTextOverToKdialog) {
    const auto open = [] {
        pfd::open_file(odd, odd, {odd, "*.a *.b", "All", "*"}, pfd::opt::multiselect);
    };
    EXPECT_THAT(options(open), testing::UnorderedElementsAre("--getopenfilename", "--multiple",
                                                             "--separate-output", "--title=" + odd,
                                                             odd, odd + "(*.a *.b) | All(*)"));
    EXPECT_THAT(options([] { pfd::select_folder("t", "p"); }),
                testing::UnorderedElementsAre("--getexistingdirectory", "--title=t", "p", ""));
    EXPECT_THAT(options([] { pfd::notify(odd, odd, pfd::icon::warning); }),
                testing::UnorderedElementsAre("--icon=warning", "--title=" + odd,
                                              "--passivepopup=" + odd, "5"));
}

TEST(PortableFileDialogs, ReadAnAnswerWhateverTheExitStatus) {
    const Stubs stubs{{"bin/zenity"}, "/bin/cat answer; exit 1"};
    const auto answers = [&](const std::string& answer) {
        writeFile(stubs.directory / "answer", answer);
        const auto one = [] { return pfd::save_file{"title"}.result(); };
        const auto all = [] { return std::to_string(pfd::open_file{"title"}.result().size()); };
        return Texts{Stubs::result(one), Stubs::result(all)};
    };
    std::string many;
    for (int i = 0; i != 20000; ++i) {
        many += "/a\n";
    }
    EXPECT_EQ(answers("\n"), (Texts{"", "0"}));
    EXPECT_EQ(answers("/a/\n"), (Texts{"/a", "1"}));
    EXPECT_EQ(answers("/a\n\n/b\n"), (Texts{"/a\n\n/b", "1"}));
    EXPECT_EQ(answers("/a\n/cut"), (Texts{"/a\n/cut", "1"}));
    EXPECT_EQ(answers(many + "/b\n"), (Texts{many + "/b", "20001"}));
}

TEST(PortableFileDialogs, EndWithTheHelperAndNotWithItsDaemon) {
    const Stubs stubs{{"bin/zenity"}, "read -r line < gate &\necho $! > daemon\necho /a"};
    ASSERT_EQ(mkfifo("gate", 0600), 0);
    EXPECT_EQ(Stubs::result([] { return pfd::save_file{"title"}.result(); }), "/a");
    pid_t daemon = 0;
    std::ifstream{"daemon"} >> daemon;
    EXPECT_EQ(kill(daemon, SIGKILL), 0) << "the daemon has ended";
}

} // namespace
} // namespace VespermoorEngine::Test
