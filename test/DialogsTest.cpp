#include <cstdlib>
#include <fstream>
#include <optional>

#include <Corrade/Containers/StringIterable.h>

#include "Processes.h"
#include "Support.h"
#include "VespermoorEditor/Utils/System.h"

namespace VespermoorEngine::Test {
namespace {

using namespace std::chrono_literals;

using Filters = std::initializer_list<Containers::StringView>;
using Options = std::vector<std::string>;

const std::string title = "It's a \"title\" \xc3\xa4 \xe6\xbc\xa2";

std::string openFiles(const std::string& path, const bool multiple, const Filters filters = {}) {
    std::string lines;
    for (const auto& file : openFileDialog(view(title), view(path), filters, multiple)) {
        lines += text(file) + '\n';
    }
    return lines;
}

std::string saveFile(const std::string& path, const Filters filters = {}) {
    return text(saveFileDialog(view(title), view(path), filters));
}

std::string openFolder(const std::string& path) {
    return text(openFolderDialog(view(title), view(path)));
}

std::string notify(const std::string& message) {
    notification(view(title), view(message), NotificationIcon::Error);
    return "";
}

/* What every dialog of zenity has, and what comes behind. */
Options dialog(const std::string& start, const Options& further) {
    Options all{"--file-selection", "--filename=" + start, "--title=" + title, "--separator=\n"};
    all.insert(all.end(), further.begin(), further.end());
    return all;
}

/* A stub in the place of zenity records its options and answers. @ stands for the directory of
   the test. */
TEST(Dialogs, HandOverToTheHelper) {
    const struct {
        std::string (*show)(const std::string& directory);
        const char *answer, *result;
        Options options;
    } rows[]{
        // clang-format off
        {[](auto& d) { return openFiles(d + "/file.txt", false); },
         "/a b\n", "/a b\n", dialog("@/file.txt", {"--confirm-overwrite"})},
        {[](auto& d) { return openFiles(d, true); },
         "/b\n/a\n/c\n", "/b\n/a\n/c\n", dialog("@/", {"--confirm-overwrite", "--multiple"})},
        {[](auto& d) { return openFiles(d, false, {"A", "*.a *.b", "All", "*", "odd"}); },
         "", "", dialog("@/", {"--file-filter=A|*.a *.b", "--file-filter=All|*",
                               "--confirm-overwrite"})},
        {[](auto&) { return openFiles("/none/such/x", false); },
         "", "", dialog("/", {"--confirm-overwrite"})},
        {[](auto&) { return saveFile("none/x"); },
         "", "", dialog("", {"--save", "--confirm-overwrite"})},
        {[](auto& d) { return saveFile(d + "/none/x", {"Text", "*.txt"}); },
         "/new\n", "/new",
         dialog("@/", {"--file-filter=Text|*.txt", "--save", "--confirm-overwrite"})},
        {[](auto& d) { return openFolder(d + "/none/x"); },
         "/a b\n", "/a b", dialog("@/none/x", {"--directory", "--confirm-overwrite"})},
        {[](auto&) { return notify("--a \"message\""); },
         "", "",
         {"--notification", "--window-icon=error", "--text=" + title + "\n--a \"message\""}},
        // clang-format on
    };
    for (const auto& row : rows) {
        const TemporaryDirectory directory;
        writeFile(directory / "file.txt", "");
        writeFile(directory / "answer", row.answer);
        writeRecorder(directory, "bin/zenity", "cat answer");
        const ScopedVariable path{"PATH", directory / "bin:" + std::getenv("PATH")};
        const ScopedVariable desktop{"XDG_SESSION_DESKTOP", "gnome"};
        const ScopedCurrentDirectory current{directory.path()};
        ChildProcess dialog{[&] { return row.show(directory.path()); }};
        EXPECT_EQ(dialog.result(1min), row.result);
        EXPECT_EQ(recordedOptions(directory), row.options);
    }
}

/* A display with nothing on it, a home and a runtime folder. The server keeps going when its last
   client leaves, since the next one may be about to connect. No session bus listens at the address,
   which keeps the helpers from starting one. */
class Desktop {
public:
    const TemporaryDirectory directory;

private:
    std::string displayName() const {
        std::string number;
        waitUntil([&] {
            std::ifstream file{directory / "display"};
            return std::getline(file, number) && !file.eof();
        });
        return ':' + number;
    }

    const ChildProcess _server{
        "exec Xvfb -displayfd 1 -noreset -screen 0 1280x1024x24 -nolisten tcp > '" +
        directory / "display" + "' 2> /dev/null"};
    const ScopedVariable _display{"DISPLAY", displayName()};
    const ScopedVariable _home{"HOME", directory / "home"};
    const ScopedVariable _data{"XDG_DATA_HOME", directory / "home"};
    const ScopedVariable _config{"XDG_CONFIG_HOME", directory / "home"};
    const ScopedVariable _runtime{"XDG_RUNTIME_DIR", directory.path()};
    const ScopedVariable _bus{"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + directory / "bus"};
    const ScopedVariable _accessibility{"NO_AT_BRIDGE", "1"};
    const ScopedVariable _settings{"GSETTINGS_BACKEND", "memory"};
    const ScopedVariable _locale{"LC_ALL", "C.UTF-8"};
};

/* The window on the display that has a name, as xdotool knows it; empty where there is none yet. */
std::string namedWindow() {
    const std::string windows = outputOf("xdotool search --onlyvisible --name . 2> /dev/null");
    return windows.substr(0, windows.find('\n'));
}

/* Types the keys until the dialog has closed: what is typed before the chooser has read the folder
   has no effect. */
std::optional<std::string> typeUntilClosed(ChildProcess& dialog, const std::string& window,
                                           const std::string& keys) {
    const std::string command = "xdotool windowfocus " + window + ' ' + keys + " 2> /dev/null";
    std::optional<std::string> result;
    for (int attempt = 0; attempt != 60 && !result; ++attempt) {
        outputOf(command);
        result = dialog.result(1s);
    }
    return result;
}

struct Helper {
    const char *name, *desktop, *titleSuffix;
};
const Helper helpers[]{{"zenity", "gnome", ""}, {"kdialog", "KDE", " \xe2\x80\x94 KDialog"}};

struct WindowRow {
    std::string (*show)(const std::string& directory);
    /* What is typed into the window of each helper; nothing where it has no part in the row. */
    const char* keys[2];
    const char* result;
};

const WindowRow windowRows[]{
    // clang-format off
    {[](auto& d) { return openFiles(d + "/files", true, {"Text", "*.txt"}); },
     {"key ctrl+a key Return", "key ctrl+a type --args 1 '\"a.txt\" \"b.txt\"' key Return"},
     "@/files/a.txt\n@/files/b.txt\n"},
    /* The window opens where the missing one would be. */
    {[](auto& d) { return openFiles(d + "/files/none/x.txt", false); },
     {"key ctrl+l ctrl+a type --args 1 b.txt key Return",
      "key ctrl+a type --args 1 b.txt key Return"}, "@/files/b.txt\n"},
    {[](auto& d) { return openFiles(d, true); }, {"key Escape", "key Escape"}, ""},
    {[](auto& d) { return saveFile(d); }, {"key Escape", "key Escape"}, ""},
    {[](auto& d) { return openFolder(d); }, {"key Escape", "key Escape"}, ""},
    {[](auto& d) { return saveFile(d + "/files/none/x.txt"); },
     {"key ctrl+a type --args 1 new.txt key Return", "key ctrl+a type --args 1 new.txt key Return"},
     "@/files/new.txt"},
    /* zenity starts in the folder above, with the given one selected. */
    {[](auto& d) { return openFolder(d + "/home"); },
     {"key ctrl+l ctrl+a type --args 1 home/inner key Return", nullptr}, "@/home/inner"},
    /* kdialog alone, without the theme of a KDE desktop, enters every folder that exists. */
    {[](auto& d) { return openFolder(d + "/home"); },
     {nullptr, "key ctrl+a type --args 1 new key Return"}, "@/home/new"},
    // clang-format on
};

class RealHelper : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(, RealHelper, testing::Values(0, 1),
                         [](const auto& info) { return helpers[info.param].name; });

TEST_P(RealHelper, GivesWhatTheUserChose) {
    const Helper& helper = helpers[GetParam()];
    const std::string missing = missingPrograms(std::string{"Xvfb xdotool "} + helper.name);
    if (!missing.empty()) {
        GTEST_SKIP() << "not installed: " << missing;
    }
    const Desktop desktop;
    const std::string& directory = desktop.directory.path();
    writeFile(directory + "/files/a.txt", "");
    writeFile(directory + "/files/b.txt", "");
    fs::create_directories(directory + "/home/inner");
    const ScopedVariable preferred{"XDG_SESSION_DESKTOP", helper.desktop};
    for (const WindowRow& row : windowRows) {
        const char* const keys = row.keys[GetParam()];
        if (!keys) {
            continue;
        }
        SCOPED_TRACE(keys);
        ChildProcess dialog{[&] { return row.show(directory); }};
        std::string window;
        waitUntil([&] { return !(window = namedWindow()).empty() || dialog.result(0s); });
        ASSERT_NE(window, "");
        EXPECT_EQ(outputOf("xdotool getwindowname " + window), title + helper.titleSuffix + '\n');
        const std::optional<std::string> result = typeUntilClosed(dialog, window, keys);
        ASSERT_TRUE(result);
        EXPECT_EQ(desktop.directory.shortened(*result), row.result);
    }
}

TEST_P(RealHelper, NotifiesTheDaemonOfTheSession) {
    const Helper& helper = helpers[GetParam()];
    const std::string missing =
        missingPrograms(std::string{"Xvfb dbus-daemon dbus-send dunst "} + helper.name);
    if (!missing.empty()) {
        GTEST_SKIP() << "not installed: " << missing;
    }
    const Desktop desktop;
    const TemporaryDirectory& directory = desktop.directory;
    writeScript(directory / "record.sh", "exec dunst -print > '" + directory / "record" + "'");
    writeFile(directory / "home/dbus-1/services/notifications.service",
              "[D-BUS Service]\nName=org.freedesktop.Notifications\nExec=" +
                  directory / "record.sh" + '\n');
    const ScopedVariable preferred{"XDG_SESSION_DESKTOP", helper.desktop};
    const ChildProcess bus{"exec dbus-daemon --session --nofork --nopidfile --address=unix:path='" +
                           directory / "bus" + "' 2> /dev/null"};
    waitUntil([&] { return fs::exists(directory / "bus"); });
    /* Some helpers show a window of their own unless the daemon runs already. */
    outputOf("dbus-send --session --print-reply --dest=org.freedesktop.DBus / "
             "org.freedesktop.DBus.StartServiceByName "
             "string:org.freedesktop.Notifications uint32:0");
    ChildProcess sender{[] { return notify("a message \xc3\xa4"); }};
    ASSERT_EQ(sender.result(1min), "");
    waitUntil([&] { return readFile(directory / "record").find("\n}\n") != std::string::npos; });
    EXPECT_THAT(readFile(directory / "record"),
                testing::AllOf(testing::HasSubstr("summary: '" + title + "'\n"),
                               testing::HasSubstr("body: 'a message \xc3\xa4'\n"),
                               testing::HasSubstr("icon: 'error'\n")));
}

} // namespace
} // namespace VespermoorEngine::Test
