#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <regex>
#include <string>
#include <tuple>
#include <vector>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringIterable.h>
#include <gmock/gmock.h>

#include "Processes.h"
#include "Recorder.h"
#include "Support.h"
#include "VespermoorEditor/Utils/System.h"

namespace VespermoorEngine::Test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

using Filters = std::initializer_list<Containers::StringView>;

std::string openFiles(const std::string& title, const std::string& path, const bool multiple,
                      const Filters filters = {}) {
    std::string lines;
    for (const Containers::String& file :
         openFileDialog(view(title), view(path), filters, multiple)) {
        lines += text(file) + '\n';
    }
    return lines;
}

std::string saveFile(const std::string& title, const std::string& path,
                     const Filters filters = {}) {
    return text(saveFileDialog(view(title), view(path), filters));
}

std::string openFolder(const std::string& title, const std::string& path) {
    return text(openFolderDialog(view(title), view(path)));
}

/* Has a stub in the place of zenity that records its arguments and answers. */
class WithStub : public testing::Test {
protected:
    /* What `show` returns for that answer. */
    std::string result(const std::string& answer, const std::function<std::string()>& show) const {
        writeFile(directory / "answer", answer);
        writeRecorder(directory / "bin/zenity", directory / "record",
                      "cat '" + directory / "answer" + "'");
        ChildProcess dialog{show};
        return dialog.result(1min).value_or("the dialog goes on");
    }

    const TemporaryDirectory directory;
    const ScopedVariable path{"PATH", directory / "bin:" + std::getenv("PATH")};
    const ScopedVariable desktop{"XDG_SESSION_DESKTOP", "gnome"};
    const ScopedCurrentDirectory current{directory.path()};
};

const std::string oddTitle = "--\"it's\" $HOME\n`x`";

struct HandOverRow {
    const char* name;
    std::string (*show)(const std::string& directory);
    const char* answer;
    const char* result;
    const char* start;
    /* What comes behind the options that every dialog has. */
    const char* options;
};

class HandOver : public WithStub, public testing::WithParamInterface<HandOverRow> {};

/* `D` stands for the directory of the test, and each option is in brackets. */
TEST_P(HandOver, ToTheHelper) {
    const HandOverRow& row = GetParam();
    writeFile(directory / "file.txt", "");
    EXPECT_EQ(result(row.answer, [&] { return row.show(directory.path()); }), row.result);
    std::string options;
    for (const std::string& option : recordedOptions(directory / "record")) {
        options += '[' + std::regex_replace(option, std::regex{directory.path()}, "D") + ']';
    }
    EXPECT_EQ(options, "[--file-selection][--filename=" + std::string{row.start} +
                           "][--title=" + oddTitle + "][--separator=\n]" + row.options);
}

const HandOverRow handOverRows[]{
    {"existing file", [](auto& d) { return openFiles(oddTitle, d + "/file.txt", false); }, "/a b\n",
     "/a b\n", "D/file.txt", "[--confirm-overwrite]"},
    {"existing directory", [](auto& d) { return openFiles(oddTitle, d, true); }, "/b\n/a\n/c\n",
     "/b\n/a\n/c\n", "D/", "[--confirm-overwrite][--multiple]"},
    {"missing file to open", [](auto& d) { return openFiles(oddTitle, d + "/none/x", false); }, "",
     "", "D/", "[--confirm-overwrite]"},
    {"missing file to save", [](auto& d) { return saveFile(oddTitle, d + "/x"); }, "/a/new\n",
     "/a/new", "D/", "[--save][--confirm-overwrite]"},
    {"nothing above exists", [](auto&) { return saveFile(oddTitle, "none/x"); }, "", "", "",
     "[--save][--confirm-overwrite]"},
    {"only the root exists", [](auto&) { return openFiles(oddTitle, "/none/such/x", false); }, "",
     "", "/", "[--confirm-overwrite]"},
    {"missing folder stays", [](auto& d) { return openFolder(oddTitle, d + "/none/x"); }, "/a b\n",
     "/a b", "D/none/x", "[--directory][--confirm-overwrite]"},
    {"filters to open",
     [](auto& d) {
         return openFiles(oddTitle, d, false,
                          {"Images", "*.png *.jpg", "All", "*", "without patterns"});
     },
     "", "", "D/", "[--file-filter=Images|*.png *.jpg][--file-filter=All|*][--confirm-overwrite]"},
    {"filters to save",
     [](auto& d) {
         return saveFile(oddTitle, d, {"Text", "*.txt"});
     },
     "", "", "D/", "[--file-filter=Text|*.txt][--save][--confirm-overwrite]"},
};
INSTANTIATE_TEST_SUITE_P(, HandOver, testing::ValuesIn(handOverRows), rowName<HandOverRow>);

TEST_F(WithStub, NotificationHandsOverItsTexts) {
    result("", [] {
        notification(view(oddTitle), "--a \"message\"", NotificationIcon::Error);
        return "";
    });
    EXPECT_THAT(recordedOptions(directory / "record"),
                testing::ElementsAre("--notification", "--window-icon=error",
                                     "--text=" + oddTitle + "\n--a \"message\""));
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

const std::string windowTitle = "It's a \"title\" \xc3\xa4 \xe6\xbc\xa2";

struct WindowRow {
    const char* name;
    std::string (*show)(const std::string& directory);
    const char* zenityKeys;
    const char* kdialogKeys;
    const char* result;
};

struct Helper {
    const char* name;
    const char* desktop;
    const char* titleSuffix;
    const char* WindowRow::*keys;
};

class Windows : public testing::TestWithParam<std::tuple<Helper, WindowRow>> {};

TEST_P(Windows, GiveWhatTheUserChose) {
    const auto& [helper, row] = GetParam();
    const std::string missing = missingPrograms({"Xvfb", "xdotool", helper.name});
    if (!missing.empty()) {
        GTEST_SKIP() << "not installed: " << missing;
    }
    const Desktop desktop;
    const std::string& directory = desktop.directory.path();
    writeFile(directory + "/files/a.txt", "");
    writeFile(directory + "/files/b.txt", "");
    fs::create_directories(directory + "/home/inner");
    const ScopedVariable preferred{"XDG_SESSION_DESKTOP", helper.desktop};

    ChildProcess dialog{[&, &row = row] { return row.show(directory); }};
    std::string window;
    waitUntil([&] { return !(window = namedWindow()).empty() || dialog.result(0s); });
    ASSERT_NE(window, "");
    EXPECT_EQ(outputOf("xdotool getwindowname " + window), windowTitle + helper.titleSuffix + '\n');
    const std::optional<std::string> result = typeUntilClosed(dialog, window, row.*helper.keys);
    ASSERT_TRUE(result);
    EXPECT_EQ(std::regex_replace(*result, std::regex{directory}, "D"), row.result);
}

const Helper helpers[]{{"zenity", "gnome", "", &WindowRow::zenityKeys},
                       {"kdialog", "KDE", " \xe2\x80\x94 KDialog", &WindowRow::kdialogKeys}};

const char* const chooseB = "key ctrl+l ctrl+a type --args 1 b.txt key Return";
const char* const writeB = "key ctrl+a type --args 1 b.txt key Return";
const char* const cancel = "key Escape";
const char* const writeNew = "key ctrl+a type --args 1 new.txt key Return";

const WindowRow windowRows[]{
    {"a file", [](auto& d) { return openFiles(windowTitle, d + "/files", false); }, chooseB, writeB,
     "D/files/b.txt\n"},
    {"several files",
     [](auto& d) {
         return openFiles(windowTitle, d + "/files", true, {"Text", "*.txt"});
     },
     "key ctrl+a key Return", "key ctrl+a type --args 1 '\"a.txt\" \"b.txt\"' key Return",
     "D/files/a.txt\nD/files/b.txt\n"},
    {"the file it starts at",
     [](auto& d) { return openFiles(windowTitle, d + "/files/b.txt", false); }, "key Return",
     "key Return", "D/files/b.txt\n"},
    {"a file beside a missing one",
     [](auto& d) { return openFiles(windowTitle, d + "/files/none/x.txt", false); }, chooseB,
     writeB, "D/files/b.txt\n"},
    {"no file", [](auto& d) { return openFiles(windowTitle, d, true); }, cancel, cancel, ""},
    {"a name to save", [](auto& d) { return saveFile(windowTitle, d + "/files/none/x.txt"); },
     writeNew, writeNew, "D/files/new.txt"},
    {"no name to save", [](auto& d) { return saveFile(windowTitle, d); }, cancel, cancel, ""},
    /* zenity starts in the folder above, with the given one selected. */
    {"a folder", [](auto& d) { return openFolder(windowTitle, d + "/home"); },
     "key ctrl+l ctrl+a type --args 1 home/inner key Return", nullptr, "D/home/inner"},
    /* kdialog alone, without the theme of a KDE desktop, enters every folder that exists. */
    {"a folder to make", [](auto& d) { return openFolder(windowTitle, d + "/home"); }, nullptr,
     "key ctrl+a type --args 1 new key Return", "D/home/new"},
    {"no folder", [](auto& d) { return openFolder(windowTitle, d); }, cancel, cancel, ""},
};
std::vector<std::tuple<Helper, WindowRow>> windowRowsOfEachHelper() {
    std::vector<std::tuple<Helper, WindowRow>> rows;
    for (const Helper& helper : helpers) {
        for (const WindowRow& row : windowRows) {
            if (row.*helper.keys) {
                rows.emplace_back(helper, row);
            }
        }
    }
    return rows;
}

INSTANTIATE_TEST_SUITE_P(, Windows, testing::ValuesIn(windowRowsOfEachHelper()),
                         [](const auto& info) {
                             const std::string name = std::get<1>(info.param).name;
                             return std::get<0>(info.param).name +
                                    std::regex_replace(name, std::regex{" "}, "");
                         });

class Notifications : public testing::TestWithParam<const char*> {};

TEST_P(Notifications, ReachTheDaemonOfTheSession) {
    const std::string missing =
        missingPrograms({"Xvfb", "dbus-daemon", "dbus-send", "dunst", GetParam()});
    if (!missing.empty()) {
        GTEST_SKIP() << "not installed: " << missing;
    }
    const Desktop desktop;
    const TemporaryDirectory& directory = desktop.directory;
    writeScript(directory / "record.sh", "exec dunst -print > '" + directory / "record" + "'");
    writeFile(directory / "home/dbus-1/services/notifications.service",
              "[D-BUS Service]\nName=org.freedesktop.Notifications\nExec=" +
                  directory / "record.sh" + '\n');
    const ScopedVariable preferred{"XDG_SESSION_DESKTOP",
                                   GetParam() == std::string{"kdialog"} ? "KDE" : "gnome"};
    const ChildProcess bus{"exec dbus-daemon --session --nofork --nopidfile --address=unix:path='" +
                           directory / "bus" + "' 2> /dev/null"};
    waitUntil([&] { return fs::exists(directory / "bus"); });
    /* Some helpers show a window of their own unless the daemon runs already. */
    outputOf("dbus-send --session --print-reply --dest=org.freedesktop.DBus / "
             "org.freedesktop.DBus.StartServiceByName "
             "string:org.freedesktop.Notifications uint32:0");

    ChildProcess sender{[] {
        notification("It's a \"title\"", "a message \xc3\xa4", NotificationIcon::Warning);
        return std::string{"sent"};
    }};
    ASSERT_EQ(sender.result(1min), "sent");
    waitUntil([&] { return readFile(directory / "record").find("\n}\n") != std::string::npos; });
    EXPECT_THAT(readFile(directory / "record"),
                testing::AllOf(testing::HasSubstr("summary: 'It's a \"title\"'\n"),
                               testing::HasSubstr("body: 'a message \xc3\xa4'\n"),
                               testing::HasSubstr("icon: 'warning'\n")));
}
INSTANTIATE_TEST_SUITE_P(, Notifications, testing::Values("zenity", "kdialog"),
                         [](const auto& info) { return std::string{info.param}; });

} // namespace
} // namespace VespermoorEngine::Test
