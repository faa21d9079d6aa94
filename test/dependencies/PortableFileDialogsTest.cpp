#include "portable-file-dialogs.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "Processes.h"
#include "Recorder.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

using Texts = std::vector<std::string>;

std::set<int> openDescriptors() {
    std::set<int> listed, open;
    for (const auto& entry : fs::directory_iterator{"/proc/self/fd"}) {
        listed.insert(std::stoi(entry.path().filename()));
    }
    /* The one of the listing itself is closed by now. */
    for (const int descriptor : listed) {
        if (fcntl(descriptor, F_GETFD) != -1) {
            open.insert(descriptor);
        }
    }
    return open;
}

/* A PATH with stubs for the helpers and with what the real header runs to find them or instead of
   them. */
class PortableFileDialogs : public testing::Test {
protected:
    PortableFileDialogs() {
        fs::create_directory(directory / "bin");
        fs::create_symlink("/usr/bin/which", directory / "bin/which");
        fs::create_symlink("/bin/echo", directory / "bin/echo");
    }

    void install(const std::string& helper, const std::string& commands = {}) const {
        writeRecorder(directory / helper, directory / "record", commands);
    }

    /* What `show` returns in a process of its own, since the real header looks for its helper once
       in a process; or what is left of its dialogs. */
    std::string result(const std::function<std::string()>& show) const {
        ChildProcess dialogs{[&]() -> std::string {
            const std::set<int> before = openDescriptors();
            const std::string result = show();
            return waitpid(-1, nullptr, WNOHANG) != -1 ? "a child is left"
                   : openDescriptors() != before       ? "a descriptor is left"
                                                       : result;
        }};
        return dialogs.result(1min).value_or("a dialog goes on");
    }

    const TemporaryDirectory directory;
    const ScopedVariable path{"PATH", directory / "bin"};
    const ScopedVariable desktop{"XDG_SESSION_DESKTOP", std::nullopt};
    const ScopedCurrentDirectory current{directory.path()};
};

struct HelperRow {
    const char* name;
    Texts installed;
    const char* path;
    const char* desktop;
    /* The one that runs, if any. */
    const char* chosen;
};

class ChooseHelper : public PortableFileDialogs, public testing::WithParamInterface<HelperRow> {};

/* `D` stands for the directory of the test, which is the current one. */
TEST_P(ChooseHelper, InPathAndForTheDesktop) {
    const HelperRow& row = GetParam();
    fs::create_directories(directory / "folder/zenity");
    for (const std::string& helper : row.installed) {
        install(helper, "echo /a");
    }
    const ScopedVariable searched{"PATH",
                                  std::regex_replace(row.path, std::regex{"D"}, directory.path())};
    const ScopedVariable preferred{"XDG_SESSION_DESKTOP", row.desktop};
    EXPECT_EQ(result([] { return pfd::select_folder{"title"}.result(); }), row.chosen ? "/a" : "");
    const Texts run = recorded(directory / "record");
    ASSERT_EQ(!run.empty(), !!row.chosen);
    EXPECT_EQ(run.empty() ? "" : (directory.path() / fs::path{run[0]}).lexically_normal(),
              row.chosen ? directory / row.chosen : "");
}

const HelperRow helperRows[]{
    {"all",
     {"bin/zenity", "bin/matedialog", "bin/qarma", "bin/kdialog"},
     "D/bin",
     "",
     "bin/zenity"},
    {"kdialog where it is at home", {"bin/zenity", "bin/kdialog"}, "D/bin", "KDE", "bin/kdialog"},
    {"zenity at KDE", {"bin/zenity"}, "D/bin", "KDE", "bin/zenity"},
    {"matedialog before qarma", {"bin/matedialog", "bin/qarma"}, "D/bin", "", "bin/matedialog"},
    {"qarma at KDE", {"bin/zenity", "bin/qarma", "bin/kdialog"}, "D/bin", "KDE", "bin/qarma"},
    {"kdialog elsewhere", {"bin/kdialog"}, "D/bin", "gnome", "bin/kdialog"},
    {"first of several elements", {"b/zenity", "c/zenity"}, "D/bin:D/b:D/c", "", "b/zenity"},
    {"no folder of that name", {"b/zenity"}, "D/bin:D/folder:D/b", "", "b/zenity"},
    {"empty element at the beginning", {"zenity"}, ":D/bin", "", "zenity"},
    {"empty element at the end", {"zenity"}, "D/bin:", "", "zenity"},
    {"empty path", {"zenity"}, "", "", nullptr},
};
INSTANTIATE_TEST_SUITE_P(, ChooseHelper, testing::ValuesIn(helperRows), rowName<HelperRow>);

TEST_F(PortableFileDialogs, NothingIsChosenWithoutHelper) {
    EXPECT_EQ(result([] {
                  pfd::notify{"title", "message"};
                  return pfd::save_file{"title"}.result() + pfd::select_folder{"title"}.result() +
                         std::to_string(pfd::open_file{"title"}.result().size());
              }),
              "0");
}

TEST_F(PortableFileDialogs, RunAScriptThatDoesNotSayWhatRunsIt) {
    install("bin/zenity", "echo /a");
    const std::string script = readFile(directory / "bin/zenity");
    writeFile(directory / "bin/zenity", script.substr(script.find('\n') + 1));
    EXPECT_EQ(result([] { return pfd::select_folder{"title"}.result(); }), "/a");
    EXPECT_THAT(recordedOptions(directory / "record"), testing::Contains("--title=title"));
}

/* Quotes, blanks, a line end, what a shell would take to heart, a dash at the start. */
const std::string odd = "-a 'b' \"c\"\n$(d) `e` \\ | %s";

struct HandOverRow {
    const char* name;
    const char* helper;
    void (*show)(const std::string& directory);
    Texts options;
};

class HandOver : public PortableFileDialogs, public testing::WithParamInterface<HandOverRow> {};

/* `D/` stands for the directory of the test. */
TEST_P(HandOver, EveryTextWhole) {
    const HandOverRow& row = GetParam();
    install("bin/" + std::string{row.helper});
    EXPECT_EQ(result([&] {
                  row.show(directory.path());
                  return "";
              }),
              "");
    Texts options;
    for (const std::string& option : recordedOptions(directory / "record")) {
        options.push_back(std::regex_replace(option, std::regex{directory.path()}, "D"));
    }
    EXPECT_THAT(options, testing::UnorderedElementsAreArray(row.options));
}

const HandOverRow handOverRows[]{
    {"open",
     "zenity",
     [](auto&) {
         pfd::open_file(odd, odd, {odd, "*.a *.b", "All", "*"});
     },
     {"--file-selection", "--filename=" + odd, "--title=" + odd, "--separator=\n",
      "--file-filter=" + odd + "|*.a *.b", "--file-filter=All|*", "--confirm-overwrite"}},
    {"open by default",
     "zenity",
     [](auto&) { pfd::open_file("t"); },
     {"--file-selection", "--filename=", "--title=t", "--separator=\n", "--file-filter=All Files|*",
      "--confirm-overwrite"}},
    {"open several in a directory",
     "zenity",
     [](auto& d) { pfd::open_file("t", d, {}, pfd::opt::multiselect); },
     {"--file-selection", "--filename=D/", "--title=t", "--separator=\n", "--confirm-overwrite",
      "--multiple"}},
    {"save without a question",
     "zenity",
     [](auto& d) { pfd::save_file("t", d + "/", {"odd one out"}, pfd::opt::force_overwrite); },
     {"--file-selection", "--filename=D/", "--title=t", "--separator=\n", "--save"}},
    {"folder",
     "zenity",
     [](auto& d) { pfd::select_folder("t", d, pfd::opt::force_path); },
     {"--file-selection", "--filename=D", "--title=t", "--separator=\n", "--directory",
      "--confirm-overwrite"}},
    {"notification",
     "zenity",
     [](auto&) { pfd::notify(odd, odd, pfd::icon::error); },
     {"--notification", "--window-icon=error", "--text=" + odd + "\n" + odd}},
    {"question",
     "zenity",
     [](auto&) { pfd::notify("t", "m", pfd::icon::question); },
     {"--notification", "--window-icon=information", "--text=t\nm"}},
    {"open several with kdialog",
     "kdialog",
     [](auto&) {
         pfd::open_file(odd, odd, {odd, "*.a *.b", "All", "*"}, pfd::opt::multiselect);
     },
     {"--getopenfilename", "--multiple", "--separate-output", "--title=" + odd, odd,
      odd + "(*.a *.b) | All(*)"}},
    {"save with kdialog",
     "kdialog",
     [](auto& d) { pfd::save_file("t", d); },
     {"--getsavefilename", "--title=t", "D", "All Files(*)"}},
    {"folder with kdialog",
     "kdialog",
     [](auto&) { pfd::select_folder("t", "p"); },
     {"--getexistingdirectory", "--title=t", "p", ""}},
    {"notification with kdialog",
     "kdialog",
     [](auto&) { pfd::notify(odd, odd, pfd::icon::warning); },
     {"--icon=warning", "--title=" + odd, "--passivepopup=" + odd, "5"}},
};
INSTANTIATE_TEST_SUITE_P(, HandOver, testing::ValuesIn(handOverRows), rowName<HandOverRow>);

struct AnswerRow {
    const char* name;
    std::string answer;
    std::string one;
    std::string all;
};

class Answer : public PortableFileDialogs, public testing::WithParamInterface<AnswerRow> {};

std::string bracketed(const Texts& paths) {
    std::string all;
    for (const std::string& path : paths) {
        all += '[' + path + ']';
    }
    return all;
}

TEST_P(Answer, IsReadWhateverTheExitStatus) {
    const AnswerRow& row = GetParam();
    writeFile(directory / "answer", row.answer);
    install("bin/zenity", "/bin/cat answer; exit 1");
    EXPECT_EQ(result([] {
                  pfd::open_file open{"title"};
                  const std::string first = bracketed(open.result());
                  return bracketed(open.result()) == first ? first : "not the same twice";
              }),
              row.all);
    EXPECT_EQ(result([] { return pfd::save_file{"title"}.result(); }), row.one);
    EXPECT_EQ(result([] { return pfd::select_folder{"title"}.result(); }), row.one);
}

std::string repeated(const std::string& text) {
    std::string all;
    for (int i = 0; i != 20000; ++i) {
        all += text;
    }
    return all;
}

const AnswerRow answerRows[]{
    {"nothing", "", "", ""},
    {"line end alone", "\n", "", ""},
    {"blank", "/a b\n", "/a b", "[/a b]"},
    {"slash at the end", "/a/\n", "/a", "[/a/]"},
    {"several", "/a\n/b\n", "/a\n/b", "[/a][/b]"},
    {"empty line", "/a\n\n/b\n", "/a\n\n/b", "[/a]"},
    {"no line end", "/a\n/cut", "/a\n/cut", "[/a]"},
    {"many", repeated("/a\n") + "/b\n", repeated("/a\n") + "/b", repeated("[/a]") + "[/b]"},
};
INSTANTIATE_TEST_SUITE_P(, Answer, testing::ValuesIn(answerRows), rowName<AnswerRow>);

TEST_F(PortableFileDialogs, EndWithTheHelperAndNotWithItsDaemon) {
    ASSERT_EQ(mkfifo((directory / "gate").data(), 0600), 0);
    install("bin/kdialog", "read -r line < gate &\necho $! > daemon\necho /a");
    EXPECT_EQ(result([] {
                  const std::string answer = pfd::save_file{"title"}.result();
                  pid_t daemon = 0;
                  std::ifstream{"daemon"} >> daemon;
                  return daemon > 0 && kill(daemon, SIGKILL) == 0 ? answer : "the daemon has ended";
              }),
              "/a");
}

TEST_F(PortableFileDialogs, AnswerWhereChildrenAreReapedAtOnce) {
    install("bin/zenity", "echo /a");
    EXPECT_EQ(result([] {
                  std::signal(SIGCHLD, SIG_IGN);
                  std::string answers;
                  for (int i = 0; i != 10; ++i) {
                      answers += pfd::save_file{"title"}.result();
                  }
                  return answers;
              }),
              "/a/a/a/a/a/a/a/a/a/a");
}

/* The real one hands its descriptors down to every program that the host starts meanwhile. */
#ifdef VespermoorStandins_portable_file_dialogs_h
TEST_F(PortableFileDialogs, HandDownNoDescriptor) {
    install("bin/zenity");
    EXPECT_EQ(result([] {
                  const std::set<int> before = openDescriptors();
                  pfd::open_file dialog{"title"};
                  std::string handedDown;
                  for (const int descriptor : openDescriptors()) {
                      if (!before.count(descriptor) && !(fcntl(descriptor, F_GETFD) & FD_CLOEXEC)) {
                          handedDown += std::to_string(descriptor) + ' ';
                      }
                  }
                  return openDescriptors() == before ? "no dialog" : handedDown;
              }),
              "");
}
#endif

} // namespace
} // namespace VespermoorEngine::Test
