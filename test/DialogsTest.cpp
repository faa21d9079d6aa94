#include <fstream>

#include <Corrade/Containers/StringIterable.h>

#include "Processes.h"
#include "Support.h"
#include "VespermoorEditor/Utils/System.h"

namespace VespermoorEngine::Test {
namespace {

using namespace std::chrono_literals;

using Filters = std::initializer_list<Containers::StringView>;
using Texts = std::vector<std::string>;

const std::string title = "It's a \"title\" \xc3\xa4 \xe6\xbc\xa2";

std::string openFiles(const std::string& path, const bool multiple, const Filters filters = {}) {
    std::string lines;
    for (const auto& file : openFileDialog(view(title), view(path), filters, multiple)) {
        lines += text(file) + '|';
    }
    return lines;
}

std::string saveFile(const std::string& path, const Filters filters = {}) {
    return text(saveFileDialog(view(title), view(path), filters));
}

std::string openFolder(const std::string& path) {
    return text(openFolderDialog(view(title), view(path)));
}

/* The result of a dialog that a stub of zenity answers, and the options that the stub got. With @
   for the directory of the test, which holds `file.txt`. */
template <class Show>
Texts shown(const char* const answer, const Show show) {
    const TemporaryDirectory directory;
    writeFile(directory / "file.txt", "");
    writeFile(directory / "answer", answer);
    writeRecorder(directory, "bin/zenity", "cat answer");
    const ScopedVariable path{"PATH", directory / "bin:" + std::getenv("PATH")};
    const ScopedVariable desktop{"XDG_SESSION_DESKTOP", "gnome"};
    const ScopedCurrentDirectory current{directory.path()};
    ChildProcess dialog{[&] { return show(directory.path()); }};
    Texts all{dialog.result(1min).value_or("goes on")};
    for (const std::string& option : recordedOptions(directory)) {
        all.push_back(option);
    }
    return all;
}

Texts dialog(const char* const result, const std::string& start, const Texts& further) {
    Texts all{result, "--file-selection", "--filename=" + start, "--title=" + title,
              "--separator=\n"};
    all.insert(all.end(), further.begin(), further.end());
    return all;
}

TEST(Dialogs, HandOverToTheHelper) {
    const std::string confirm = "--confirm-overwrite";
    EXPECT_EQ(shown("/a b\n", [](auto& d) { return openFiles(d + "/file.txt", false); }),
              dialog("/a b|", "@/file.txt", {confirm}));
    EXPECT_EQ(shown("/a\nb\nc\n", [](auto& d) { return openFiles(d, false); }),
              dialog("/a\nb\nc|", "@/", {confirm}));
    EXPECT_EQ(shown("/b\n/a\n/c\n", [](auto& d) { return openFiles(d, true); }),
              dialog("/b|/a|/c|", "@/", {confirm, "--multiple"}));
    const Filters filters{"A", "*.a *.b", "All", "*", "odd"};
    EXPECT_EQ(shown("", [&](auto& d) { return openFiles(d, false, filters); }),
              dialog("", "@/",
                     {"--file-filter=A|*.a *.b", "--file-filter=All|*", "--confirm-overwrite"}));
    EXPECT_EQ(shown("", [](auto&) { return openFiles("/none/such/x", false); }),
              dialog("", "/", {confirm}));
    EXPECT_EQ(shown("", [](auto&) { return saveFile("none/x"); }),
              dialog("", "", {"--save", confirm}));
    EXPECT_EQ(shown("/new\n",
                    [](auto& d) {
                        return saveFile(d + "/none/x", {"Text", "*.txt"});
                    }),
              dialog("/new", "@/", {"--file-filter=Text|*.txt", "--save", confirm}));
    EXPECT_EQ(shown("/a b\n", [](auto& d) { return openFolder(d + "/none/x"); }),
              dialog("/a b", "@/none/x", {"--directory", confirm}));
    const auto notify = [](auto&) {
        notification(view(title), "--a \"message\"", NotificationIcon::Error);
        return "";
    };
    EXPECT_EQ(shown("", notify), (Texts{"", "--notification", "--window-icon=error",
                                        "--text=" + title + "\n--a \"message\""}));
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

/* The window on the display that has a name, as xdotool knows it; empty if there is none yet. */
std::string namedWindow() {
    const std::string windows = outputOf("xdotool search --onlyvisible --name . 2> /dev/null");
    return windows.substr(0, windows.find('\n'));
}

/* Types the keys until the dialog has closed: keys that are typed before the chooser has read the
   folder have no effect. */
std::optional<std::string> typeUntilClosed(ChildProcess& dialog, const std::string& keys) {
    std::string window;
    waitUntil([&] { return !(window = namedWindow()).empty() || dialog.result(0s); });
    EXPECT_THAT(outputOf("xdotool getwindowname " + window), testing::StartsWith(title));
    std::optional<std::string> result;
    for (int attempt = 0; attempt != 60 && !result; ++attempt) {
        outputOf("xdotool windowfocus " + window + ' ' + keys + " 2> /dev/null");
        result = dialog.result(1s);
    }
    return result;
}

/* The window opens where the missing file would be. */
std::string pick(const std::string& directory) {
    return openFiles(directory + "/files/none/x.txt", false);
}

std::string pickSeveral(const std::string& directory) {
    return openFiles(directory + "/files", true, {"Text", "*.txt"});
}

std::string save(const std::string& directory) {
    return saveFile(directory + "/files/none/x.txt");
}

/* zenity starts in the folder above, with the given one selected. */
std::string pickFolder(const std::string& directory) {
    return openFolder(directory + "/home");
}

struct HelperRow {
    const char* helper;
    const char* desktop;
    std::string (*show)(const std::string& directory);
    const char* keys;
    const char* result;
};

const char* const zenity = "zenity";
const char* const kdialog = "kdialog";
const HelperRow helperRows[]{
    {zenity, "gnome", pick, "ctrl+l ctrl+a type --args 1 b.txt key Return", "@/files/b.txt|"},
    {zenity, "gnome", pickSeveral, "ctrl+a key Return", "@/files/a.txt|@/files/b.txt|"},
    {zenity, "gnome", save, "ctrl+a type --args 1 new.txt key Return", "@/files/new.txt"},
    {zenity, "gnome", pickFolder, "ctrl+l ctrl+a type --args 1 home/in key Return", "@/home/in"},
    {zenity, "gnome", pick, "Escape", ""},
    {kdialog, "KDE", pick, "ctrl+a type --args 1 b.txt key Return", "@/files/b.txt|"},
    {kdialog, "KDE", pickSeveral, "ctrl+a type --args 1 '\"a.txt\" \"b.txt\"' key Return",
     "@/files/a.txt|@/files/b.txt|"},
    {kdialog, "KDE", save, "ctrl+a type --args 1 new.txt key Return", "@/files/new.txt"},
    {kdialog, "KDE", pickFolder, "ctrl+a type --args 1 new key Return", "@/home/new"},
    {kdialog, "KDE", pick, "Escape", ""},
};

TEST(RealHelper, GivesTheUsersChoice) {
    const std::string missing = missingPrograms("Xvfb xdotool zenity kdialog");
    if (!missing.empty()) {
        GTEST_SKIP() << "not installed: " << missing;
    }
    const Desktop desktop;
    writeFile(desktop.directory / "files/a.txt", "");
    writeFile(desktop.directory / "files/b.txt", "");
    fs::create_directories(desktop.directory / "home/in");
    for (const HelperRow& row : helperRows) {
        SCOPED_TRACE(std::string{row.helper} + ": " + row.keys);
        const ScopedVariable preferred{"XDG_SESSION_DESKTOP", row.desktop};
        ChildProcess dialog{[&] { return row.show(desktop.directory.path()); }};
        const auto result = typeUntilClosed(dialog, std::string{"key "} + row.keys);
        ASSERT_TRUE(result);
        EXPECT_EQ(desktop.directory.shortened(*result), row.result);
    }
}

} // namespace
} // namespace VespermoorEngine::Test
