#include "portable-file-dialogs.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

using Texts = std::vector<std::string>;

/* Records its name and arguments with a zero behind each, leaves a daemon behind that holds the
   output open, waits at a gate, answers from a file; the middle two only where asked for. */
constexpr const char* StubScript = R"(#!/bin/sh
printf '%s\0' "${0##*/}" "$@" > "$STUB_ARGUMENTS"
if [ -n "$STUB_DAEMON" ]; then
    read -r line < "$STUB_DAEMON" &
    echo $! > "$STUB_DAEMON.pid"
fi
[ -z "$STUB_GATE" ] || read -r line < "$STUB_GATE"
/bin/cat "$STUB_ANSWER"
exit $STUB_STATUS
)";

std::set<int> openDescriptors() {
    std::set<int> listed, open;
    for (const auto& entry : fs::directory_iterator{"/proc/self/fd"})
        listed.insert(std::stoi(entry.path().filename()));
    /* The one of the listing itself is closed by now. */
    for (const int descriptor : listed)
        if (fcntl(descriptor, F_GETFD) != -1)
            open.insert(descriptor);
    return open;
}

/* A PATH with stubs for the helpers and with what the real header runs to find them or instead of
   them. At the end no process and no descriptor may be left of any dialog. */
class PortableFileDialogsTest : public testing::Test {
protected:
    PortableFileDialogsTest() {
        std::string name = testing::TempDir() + "dialogs-XXXXXX";
        EXPECT_TRUE(mkdtemp(name.data()));
        root = name;
        fs::create_directory(root / "bin");
        fs::create_symlink("/usr/bin/which", root / "bin/which");
        fs::create_symlink("/bin/echo", root / "bin/echo");
        setenv("PATH", (root / "bin").c_str(), 1);
        setenv("STUB_ARGUMENTS", (root / "arguments").c_str(), 1);
        setenv("STUB_ANSWER", (root / "answer").c_str(), 1);
        setenv("STUB_STATUS", "0", 1);
        for (const char* unset : {"STUB_GATE", "STUB_DAEMON", "XDG_SESSION_DESKTOP"})
            unsetenv(unset);
        answer("");
        /* Ends the program where a dialog never does. */
        alarm(60);
    }

    ~PortableFileDialogsTest() override {
        alarm(0);
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
        EXPECT_EQ(openDescriptors(), descriptors);
        setenv("PATH", path.c_str(), 1);
        fs::remove_all(root);
    }

    void install(const Texts& helpers) const {
        for (const char* helper : {"zenity", "matedialog", "qarma", "kdialog"})
            fs::remove(root / "bin" / helper);
        for (const std::string& helper : helpers) {
            std::ofstream{root / "bin" / helper} << StubScript;
            fs::permissions(root / "bin" / helper, fs::perms::owner_all);
        }
        pfd::settings::rescan();
    }

    void answer(const std::string& text) const { std::ofstream{root / "answer"} << text; }

    /* A pipe of that name, named to the stub by the variable. */
    fs::path makePipe(const char* variable) const {
        fs::path pipe = root / variable;
        EXPECT_EQ(mkfifo(pipe.c_str(), 0600), 0);
        setenv(variable, pipe.c_str(), 1);
        return pipe;
    }

    /* Name and arguments of the helper that ran last. */
    Texts arguments() const {
        std::ifstream file{root / "arguments", std::ios::binary};
        Texts all;
        for (std::string argument; std::getline(file, argument, '\0');)
            all.push_back(argument);
        return all;
    }

    fs::path root;
    const std::string path = std::getenv("PATH");
    const std::set<int> descriptors = openDescriptors();
};

/* A value may stand in an argument of its own or behind a `=`, and the order is free. */
std::multiset<std::string> options(const Texts& arguments) {
    const std::set<std::string> withValue{"--title", "--file-filter",  "--window-icon",
                                          "--text",  "--passivepopup", "--icon"};
    std::multiset<std::string> all;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        if (arguments[i] == "--")
            continue;
        const bool takesNext = withValue.count(arguments[i]) && i + 1 < arguments.size();
        all.insert(takesNext ? arguments[i] + '=' + arguments[i + 1] : arguments[i]);
        i += takesNext;
    }
    return all;
}

TEST_F(PortableFileDialogsTest, ChoosesHelper) {
    const struct {
        Texts installed;
        const char *desktop, *chosen;
    } rows[]{
        {{"zenity", "matedialog", "qarma", "kdialog"}, "", "zenity"},
        {{"zenity", "kdialog"}, "gnome", "zenity"},
        {{"zenity", "kdialog"}, "KDE", "kdialog"},
        {{"zenity"}, "KDE", "zenity"},
        {{"matedialog", "qarma"}, "", "matedialog"},
        {{"qarma", "kdialog"}, "gnome", "qarma"},
        {{"zenity", "qarma", "kdialog"}, "KDE", "qarma"},
        {{"kdialog"}, "gnome", "kdialog"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.chosen + std::string{" on "} + row.desktop);
        setenv("XDG_SESSION_DESKTOP", row.desktop, 1);
        install(row.installed);
        EXPECT_TRUE(pfd::settings::available());
        pfd::select_folder{"title"}.result();
        ASSERT_FALSE(arguments().empty());
        EXPECT_EQ(arguments()[0], row.chosen);
    }
}

TEST_F(PortableFileDialogsTest, NothingChosenWithoutHelper) {
    install({});
    fs::create_directory(root / "bin/zenity");
    pfd::settings::rescan();
    EXPECT_FALSE(pfd::settings::available());
    EXPECT_EQ(pfd::open_file("title").result(), Texts{});
    EXPECT_EQ(pfd::save_file("title").result(), "");
    EXPECT_EQ(pfd::select_folder("title").result(), "");
    const pfd::notify notification{"title", "message"};
    EXPECT_EQ(arguments(), Texts{});
}

/* Quotes, blanks, a line end, what a shell would take to heart, a dash at the start. */
const std::string Odd = "-a 'b' \"c\"\n$(d) `e` \\ | %s";

TEST_F(PortableFileDialogsTest, HandsOverEveryTextWhole) {
    const std::string directory = root.string();
    const struct {
        const char* name;
        const char* helper;
        std::function<void()> show;
        std::multiset<std::string> expected;
    } rows[]{
        {"open",
         "zenity",
         [&] {
             pfd::open_file{Odd, Odd, {Odd, "*.a *.b", "All", "*"}};
         },
         {"--file-selection", "--filename=" + Odd, "--title=" + Odd, "--separator=\n",
          "--file-filter=" + Odd + "|*.a *.b", "--file-filter=All|*", "--confirm-overwrite"}},
        {"open by default",
         "zenity",
         [&] { pfd::open_file{"t"}; },
         {"--file-selection", "--filename=", "--title=t", "--separator=\n",
          "--file-filter=All Files|*", "--confirm-overwrite"}},
        {"open several in a directory",
         "zenity",
         [&] {
             pfd::open_file{"t", directory, {}, pfd::opt::multiselect};
         },
         {"--file-selection", "--filename=" + directory + "/", "--title=t", "--separator=\n",
          "--confirm-overwrite", "--multiple"}},
        {"save without a question",
         "zenity",
         [&] {
             pfd::save_file{"t", directory + "/", {"odd one out"}, pfd::opt::force_overwrite};
         },
         {"--file-selection", "--filename=" + directory + "/", "--title=t", "--separator=\n",
          "--save"}},
        {"folder",
         "zenity",
         [&] {
             pfd::select_folder{"t", directory, pfd::opt::force_path};
         },
         {"--file-selection", "--filename=" + directory, "--title=t", "--separator=\n",
          "--directory", "--confirm-overwrite"}},
        {"notification",
         "zenity",
         [&] {
             pfd::notify{Odd, Odd, pfd::icon::error};
         },
         {"--notification", "--window-icon=error", "--text=" + Odd + "\n" + Odd}},
        {"question",
         "zenity",
         [&] {
             pfd::notify{"t", "m", pfd::icon::question};
         },
         {"--notification", "--window-icon=information", "--text=t\nm"}},
        {"open several",
         "kdialog",
         [&] {
             pfd::open_file{Odd, Odd, {Odd, "*.a *.b", "All", "*"}, pfd::opt::multiselect};
         },
         {"--getopenfilename", "--multiple", "--separate-output", "--title=" + Odd, Odd,
          Odd + "(*.a *.b) | All(*)"}},
        {"save",
         "kdialog",
         [&] {
             pfd::save_file{"t", directory};
         },
         {"--getsavefilename", "--title=t", directory, "All Files(*)"}},
        {"folder",
         "kdialog",
         [&] {
             pfd::select_folder{"t", "p"};
         },
         {"--getexistingdirectory", "--title=t", "p", ""}},
        {"notification",
         "kdialog",
         [&] {
             pfd::notify{Odd, Odd, pfd::icon::warning};
         },
         {"--icon=warning", "--title=" + Odd, "--passivepopup=" + Odd, "5"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.helper + std::string{": "} + row.name);
        install({row.helper});
        row.show();
        EXPECT_EQ(options(arguments()), row.expected);
    }
}

TEST_F(PortableFileDialogsTest, ReadsAnswers) {
    install({"zenity"});
    std::string longLines;
    for (int i = 0; i != 20000; ++i)
        longLines += "/a/path\n";
    const struct {
        std::string answer;
        std::string one;
        Texts all;
    } rows[]{
        {"", "", {}},
        {"\n", "", {}},
        {"/a b\n", "/a b", {"/a b"}},
        {"/a/\n", "/a", {"/a/"}},
        {"/a\n/b\n", "/a\n/b", {"/a", "/b"}},
        {"/a\n\n/b\n", "/a\n\n/b", {"/a"}},
        {"/a\n/cut", "/a\n/cut", {"/a"}},
        {longLines, longLines.substr(0, longLines.size() - 1), Texts(20000, "/a/path")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.answer.substr(0, 20));
        answer(row.answer);
        pfd::open_file open{"title"};
        EXPECT_EQ(open.result(), row.all);
        EXPECT_EQ(open.result(), row.all) << "asked again";
        EXPECT_EQ(pfd::save_file{"title"}.result(), row.one);
        setenv("STUB_STATUS", "1", 1);
        EXPECT_EQ(pfd::select_folder{"title"}.result(), row.one) << "whatever the exit status";
        setenv("STUB_STATUS", "0", 1);
    }
}

TEST_F(PortableFileDialogsTest, ReadyWhenClosed) {
    install({"zenity"});
    answer("/a\n");
    const int gate = open(makePipe("STUB_GATE").c_str(), O_RDWR | O_CLOEXEC);
    {
        pfd::select_folder dialog{"title"};
        EXPECT_FALSE(dialog.ready(0));
        EXPECT_FALSE(dialog.ready());
        EXPECT_EQ(write(gate, "\n", 1), 1);
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds{20};
        while (!dialog.ready() && std::chrono::steady_clock::now() < end)
            continue;
        EXPECT_TRUE(dialog.ready(0));
        EXPECT_EQ(dialog.result(), "/a");
    }
    close(gate);
}

TEST_F(PortableFileDialogsTest, KilledWithNothingChosen) {
    install({"kdialog"});
    answer("/a\n");
    makePipe("STUB_GATE");
    pfd::open_file dialog{"title"};
    EXPECT_TRUE(dialog.kill());
    EXPECT_TRUE(dialog.ready(0));
    EXPECT_EQ(dialog.result(), Texts{});
}

TEST_F(PortableFileDialogsTest, EndsWithHelperAndNotWithItsDaemon) {
    install({"kdialog"});
    answer("/a\n");
    const fs::path pipe = makePipe("STUB_DAEMON");
    EXPECT_EQ(pfd::save_file{"title"}.result(), "/a");
    pid_t daemon = 0;
    std::ifstream{pipe.string() + ".pid"} >> daemon;
    ASSERT_GT(daemon, 0);
    EXPECT_EQ(kill(daemon, SIGKILL), 0) << "the daemon is still there";
}

TEST_F(PortableFileDialogsTest, AnswersWhereChildrenAreReapedAtOnce) {
    install({"zenity"});
    answer("/a\n");
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    for (int i = 0; i != 10; ++i)
        EXPECT_EQ(pfd::save_file{"title"}.result(), "/a");
    std::signal(SIGCHLD, before);
}

/* The real one hands its descriptors down to every program that the host starts meanwhile. */
#ifdef VespermoorStandins_portable_file_dialogs_h
TEST_F(PortableFileDialogsTest, HandsDownNoDescriptor) {
    install({"zenity"});
    makePipe("STUB_GATE");
    pfd::open_file dialog{"title"};
    for (const int descriptor : openDescriptors())
        EXPECT_TRUE(descriptors.count(descriptor) || fcntl(descriptor, F_GETFD) & FD_CLOEXEC)
            << descriptor;
    dialog.kill();
}
#endif

} // namespace
