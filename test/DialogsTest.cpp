#include <fstream>

#include <Corrade/Containers/StringIterable.h>

#include "Processes.h"
#include "Support.h"
#include "Tree.h"
#include "VespermoorEditor/Utils/System.h"

namespace VespermoorEngine::Test {
namespace {

using namespace std::chrono_literals;

using Filters = std::initializer_list<Containers::StringView>;
using Texts = std::vector<std::string>;

const std::string title = "It's a \"title\" \xc3\xa4 \xe6\xbc\xa2";

/* Characters with a meaning in the shell, a newline, a dash at the start. */
const std::string odd = "-a 'b' \"c\"\n$(d) `e` \\ | %s";

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

std::string notify(const NotificationIcon icon) {
    notification(view(title), view(odd), icon);
    return "";
}

template <class... T>
Texts dialog(const std::string& start, const T&... further) {
    return {"--file-selection", "--filename=" + start, "--title=" + title,
            "--separator=\n",   "--confirm-overwrite", further...};
}

const Filters several = {view(odd), "*.a *.b", "All", "*", "no pattern"};

/* The answer of a helper, the result, and the helper's arguments. The current directory holds
   `bin/`. */
const struct {
    const char* helper;
    std::string (*show)();
    const char* answer;
    const char* result;
    Texts options;
} handOvers[]{
    {"zenity", [] { return openFiles("bin/which", false); }, "/a b\n", "/a b|",
     dialog("bin/which")},
    {"zenity", [] { return openFiles("bin/none/x", false); }, "/a\nb\nc\n", "/a\nb\nc|",
     dialog("bin/")},
    {"zenity", [] { return openFiles("/none/such/x", true); }, "/b\n/a\n/c\n", "/b|/a|/c|",
     dialog("/", "--multiple")},
    {"zenity", [] { return openFiles("none/x", false, several); }, "", "",
     dialog("", "--file-filter=" + odd + "|*.a *.b", "--file-filter=All|*")},
    {"zenity",
     [] {
         return saveFile("bin/x", {"Text", "*.txt"});
     },
     "/new\n", "/new", dialog("bin/", "--save", "--file-filter=Text|*.txt")},
    {"zenity", [] { return openFolder("bin"); }, "/a b\n", "/a b", dialog("bin", "--directory")},
    {"zenity", [] { return notify(NotificationIcon::Error); }, "", "",
     Texts{"--notification", "--window-icon=error", "--text=" + title + '\n' + odd}},
    {"kdialog", [] { return openFiles("bin", true, several); }, "/b\n/a\n", "/b|/a|",
     Texts{"--getopenfilename", "--multiple", "--separate-output", "--title=" + title, "bin",
           odd + "(*.a *.b) | All(*)"}},
    {"kdialog", [] { return openFolder(odd); }, "/a/\n", "/a",
     Texts{"--getexistingdirectory", "--title=" + title, odd, ""}},
    {"kdialog", [] { return notify(NotificationIcon::Warning); }, "", "",
     Texts{"--icon=warning", "--title=" + title, "--passivepopup=" + odd, "5"}},
};

/* Ends without an answer if a text can be taken for an option. */
#ifdef VESPERMOOR_STANDINS_EXPORT
constexpr const char* helper =
    "for text; do case $text in --) break ;; --*) ;; -*) exit ;; esac; done; /bin/cat answer";
#else
constexpr const char* helper = "/bin/cat answer";
#endif

TEST(Dialogs, PassArgumentsToTheHelper) {
    for (const auto& row : handOvers) {
        SCOPED_TRACE(testing::PrintToString(row.options));
        const Stubs stubs{{std::string{"bin/"} + row.helper}, helper};
        writeFile("answer", row.answer);
        EXPECT_EQ(Stubs::result(row.show), row.result);
        EXPECT_THAT(stubs.options(), testing::UnorderedElementsAreArray(row.options));
    }
}

/* An empty display, a home and a runtime folder. The server keeps going when its last client
   leaves, since the next one may be about to connect. No session bus listens at the address, which
   keeps the helpers from starting one. */
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
    const ScopedCurrentDirectory _current{directory.path()};
};

/* Types the keys until the dialog has closed: keys have no effect until the chooser has read the
   folder. */
std::optional<std::string> typeUntilClosed(ChildProcess& dialog, const std::string& keys) {
    const std::string search = "xdotool search --onlyvisible --name . 2> /dev/null | head -n 1";
    std::string window;
    waitUntil([&] { return !(window = outputOf(search)).empty() || dialog.result(0s); });
    window = window.substr(0, window.find('\n'));
    EXPECT_THAT(outputOf("xdotool getwindowname " + window), testing::StartsWith(title));
    std::optional<std::string> result;
    for (int attempt = 0; attempt != 60 && !result; ++attempt) {
        outputOf("xdotool windowfocus " + window + " key " + keys + " 2> /dev/null");
        result = dialog.result(1s);
    }
    return result;
}

/* The dialog shows the folder of the missing file; zenity starts in the parent of a folder. */
const auto pick = [] { return openFiles(fs::absolute("files/none/x.txt"), false); };
const auto pickSeveral = [] { return openFiles(fs::absolute("files"), true, {"Text", "*.txt"}); };
const auto save = [] { return saveFile(fs::absolute("files/none/x.txt")); };
const auto pickFolder = [] { return openFolder(fs::absolute("home")); };

const struct {
    const char* desktop;
    std::string (*show)();
    const char* keys;
    const char* result;
} helperRows[]{
    {"gnome", pick, "ctrl+l ctrl+a type --args 1 b.txt key Return", "@/files/b.txt|"},
    {"gnome", pickSeveral, "ctrl+a key Return", "@/files/a.txt|@/files/b.txt|"},
    {"gnome", save, "ctrl+a type --args 1 new.txt key Return", "@/files/new.txt"},
    {"gnome", pickFolder, "ctrl+l ctrl+a type --args 1 home/in key Return", "@/home/in"},
    {"KDE", pick, "ctrl+a type --args 1 b.txt key Return", "@/files/b.txt|"},
    {"KDE", pickSeveral, "ctrl+a type --args 1 '\"a.txt\" \"b.txt\"' key Return",
     "@/files/a.txt|@/files/b.txt|"},
    {"KDE", save, "ctrl+a type --args 1 new.txt key Return", "@/files/new.txt"},
    {"KDE", pickFolder, "ctrl+a type --args 1 new key Return", "@/home/new"},
};

TEST(RealHelper, GivesTheUsersChoice) {
    const std::string missing = outputOf("for program in Xvfb xdotool zenity kdialog; do "
                                         "command -v $program > /dev/null || echo $program; done");
    if (!missing.empty()) {
        GTEST_SKIP() << "not installed: " << missing;
    }
    const Desktop desktop;
    makeTree(desktop.directory.path(), {"files/a.txt", "files/b.txt", "home/in/"});
    for (const auto& row : helperRows) {
        SCOPED_TRACE(std::string{row.desktop} + ": " + row.keys);
        const ScopedVariable preferred{"XDG_SESSION_DESKTOP", row.desktop};
        ChildProcess dialog{row.show};
        const auto result = typeUntilClosed(dialog, row.keys);
        ASSERT_TRUE(result);
        EXPECT_EQ(desktop.directory.shortened(*result), row.result);
    }
}

} // namespace
} // namespace VespermoorEngine::Test
