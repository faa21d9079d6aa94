#include "portable-file-dialogs.h"

#include <csignal>
#include <fstream>

#include <sys/stat.h>

#include "Processes.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using Texts = std::vector<std::string>;

std::string savePath() {
    return pfd::save_file{"title"}.result();
}

/* @ is the directory of the test, which is the current one. */
TEST(PortableFileDialogs, RunTheHelperOfTheDesktop) {
    const std::tuple<const char*, const char*, Texts, std::string> rows[]{
        {"@/bin", "", {}, ""},
        {"@/bin", "", {"bin/kdialog", "bin/qarma", "bin/matedialog", "bin/zenity"}, "bin/zenity"},
        {"@/bin", "KDE", {"bin/kdialog", "bin/zenity"}, "bin/kdialog"},
        {"@/bin", "KDE", {"bin/kdialog", "bin/zenity", "bin/qarma"}, "bin/qarma"},
        {"@/bin", "KDE", {"bin/zenity"}, "bin/zenity"},
        {"@/bin:@/b:@/c", "", {"b/zenity", "c/zenity", "bin/zenity/folder"}, "b/zenity"},
        {":@/bin", "", {"zenity"}, "zenity"},
        {"@/bin:", "", {"zenity"}, "zenity"},
        {"", "", {"zenity"}, ""}};
    for (const auto& [searched, session, installed, chosen] : rows) {
        const Stubs stubs{installed, "echo /a"};
        const ScopedVariable path{"PATH", stubs.directory.expanded(searched)};
        const ScopedVariable desktop{"XDG_SESSION_DESKTOP", session};
        EXPECT_EQ(Stubs::result(savePath), chosen.empty() ? "" : "/a");
        const Texts run = stubs.runs();
        EXPECT_EQ(run.empty() ? "" : fs::proximate(stubs.directory.expanded(run[0])), chosen);
    }
}

TEST(PortableFileDialogs, ReadAnAnswerWithAnyExitStatus) {
    const Stubs stubs{{"bin/zenity"}, "/bin/cat answer; exit 1"};
    std::string many;
    for (int i = 0; i != 20000; ++i) {
        many += "/a\n";
    }
    const std::tuple<std::string, std::string, const char*> rows[]{
        {"\n", "", "0"},
        {"/a\n\n/b\n", "/a\n\n/b", "1"},
        {"/a\n/cut", "/a\n/cut", "1"},
        {many + "/b\n", many + "/b", "20001"}};
    for (const auto& [answer, path, count] : rows) {
        writeFile("answer", answer);
        EXPECT_EQ(Stubs::result(savePath), path);
        const auto all = [] { return std::to_string(pfd::open_file{"title"}.result().size()); };
        EXPECT_EQ(Stubs::result(all), count);
    }
}

TEST(PortableFileDialogs, EndWithTheHelperAndNotWithItsDaemon) {
    const Stubs stubs{{"bin/zenity"}, "read -r line < gate &\necho $! > daemon\necho /a"};
    ASSERT_EQ(mkfifo("gate", 0600), 0);
    EXPECT_EQ(Stubs::result(savePath), "/a");
    pid_t daemon = 0;
    std::ifstream{"daemon"} >> daemon;
    EXPECT_EQ(kill(daemon, SIGKILL), 0) << "the daemon has ended";
}

} // namespace
} // namespace VespermoorEngine::Test
