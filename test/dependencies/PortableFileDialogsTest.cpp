#include "portable-file-dialogs.h"

#include <csignal>
#include <fstream>
#include <functional>

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

    /* What `show` returns in a process of its own, since the real header looks for its helper once
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

/* @ stands for the directory of the test, which is the current one. */
TEST(PortableFileDialogs, RunTheHelperOfTheDesktop) {
    const struct {
        const char* path;
        const char* desktop;
        Texts installed;
        /* The one that runs, if any. */
        std::string chosen;
    } rows[]{
        // clang-format off
        {"@/bin", "", {}, ""},
        {"@/bin", "", {"bin/kdialog", "bin/qarma", "bin/matedialog", "bin/zenity"}, "bin/zenity"},
        {"@/bin", "KDE", {"bin/kdialog", "bin/zenity"}, "bin/kdialog"},
        {"@/bin", "KDE", {"bin/kdialog", "bin/zenity", "bin/qarma"}, "bin/qarma"},
        {"@/bin", "KDE", {"bin/zenity"}, "bin/zenity"},
        {"@/bin", "gnome", {"bin/kdialog"}, "bin/kdialog"},
        {"@/bin:@/b:@/c", "", {"b/zenity", "c/zenity", "bin/zenity/folder"}, "b/zenity"},
        {":@/bin", "", {"zenity"}, "zenity"},
        {"@/bin:", "", {"zenity"}, "zenity"},
        {"", "", {"zenity"}, ""},
        // clang-format on
    };
    for (const auto& row : rows) {
        const Stubs stubs{row.installed, "echo /a"};
        const ScopedVariable path{"PATH", stubs.directory.expanded(row.path)};
        const ScopedVariable desktop{"XDG_SESSION_DESKTOP", row.desktop};
        EXPECT_EQ(Stubs::result([] { return pfd::select_folder{"title"}.result(); }),
                  row.chosen.empty() ? "" : "/a");
        const Texts run = recorded(stubs.directory);
        EXPECT_EQ(run.empty() ? "" : fs::proximate(stubs.directory.expanded(run[0])), row.chosen);
    }
}

/* Quotes, blanks, a line end, what a shell would take to heart, a dash at the start. */
const std::string odd = "-a 'b' \"c\"\n$(d) `e` \\ | %s";

TEST(PortableFileDialogs, HandEveryTextOverToKdialog) {
    const struct {
        void (*show)();
        Texts options;
    } rows[]{
        // clang-format off
        {[] { pfd::open_file(odd, odd, {odd, "*.a *.b", "All", "*"}, pfd::opt::multiselect); },
         {"--getopenfilename", "--multiple", "--separate-output", "--title=" + odd, odd,
          odd + "(*.a *.b) | All(*)"}},
        {[] { pfd::select_folder("t", "p"); }, {"--getexistingdirectory", "--title=t", "p", ""}},
        {[] { pfd::notify(odd, odd, pfd::icon::warning); },
         {"--icon=warning", "--title=" + odd, "--passivepopup=" + odd, "5"}},
        // clang-format on
    };
    for (const auto& row : rows) {
        const Stubs stubs{{"bin/kdialog"}, ""};
        EXPECT_EQ(Stubs::result([&] { return row.show(), ""; }), "");
        EXPECT_THAT(recordedOptions(stubs.directory),
                    testing::UnorderedElementsAreArray(row.options));
    }
}

TEST(PortableFileDialogs, ReadAnAnswerWhateverTheExitStatus) {
    std::string many;
    for (int i = 0; i != 20000; ++i) {
        many += "/a\n";
    }
    const struct {
        std::string answer, one;
        std::size_t files;
    } rows[]{
        // clang-format off
        {"\n", "", 0}, {"/a/\n", "/a", 1}, {"/a\n\n/b\n", "/a\n\n/b", 1},
        {"/a\n/cut", "/a\n/cut", 1}, {many + "/b\n", many + "/b", 20001},
        // clang-format on
    };
    const Stubs stubs{{"bin/zenity"}, "/bin/cat answer; exit 1"};
    for (const auto& row : rows) {
        writeFile(stubs.directory / "answer", row.answer);
        EXPECT_EQ(Stubs::result([] { return pfd::save_file{"title"}.result(); }), row.one);
        EXPECT_EQ(
            Stubs::result([] { return std::to_string(pfd::open_file{"title"}.result().size()); }),
            std::to_string(row.files));
    }
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
