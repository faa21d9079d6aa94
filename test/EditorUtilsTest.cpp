#include "VespermoorEditor/Utils/EditorUtils.h"

#include <filesystem>
#include <iostream>
#include <regex>
#include <string>
#include <vector>

#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/String.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include "Processes.h"
#include "Support.h"
#include "VespermoorEditor/Utils/System.h"

namespace VespermoorEngine::Test {
namespace {

namespace fs = std::filesystem;

TEST(ExecutablesPath, IsTheDirectoryOfTheRunningProgram) {
    EXPECT_EQ(text(Utils::executablesPath()), fs::read_symlink("/proc/self/exe").parent_path());
}

TEST(ExecutablesPath, IsEmptyAndNoRootIsSearchedWhereTheSystemCannotTell) {
    if (!mayMountPrivately()) {
        GTEST_SKIP() << "mounts are not allowed here, so /proc cannot be hidden";
    }
    const TemporaryDirectory directory;
    writeFile(directory / "shaders/phong", "");
    const ScopedCurrentDirectory current{directory.path()};
    const auto report = [] {
        if (!mountPrivately("/proc")) {
            _exit(1);
        }
        const Messages messages;
        std::cerr << "path '" << text(Utils::executablesPath()) << "', root "
                  << (Utils::findEditorRoot() ? "found" : "none") << '\n'
                  << messages.text();
        _exit(0); // The leak check at a usual exit needs /proc.
    };
    const std::string message =
        "Utility::Path::executableLocation(): can't read /proc/self/exe: error 2 "
        "(No such file or directory)\n";
    EXPECT_EXIT(report(), testing::ExitedWithCode(0),
                testing::Eq("path '', root none\n" + message + message));
}

struct RootRow {
    const char* name;
    std::vector<const char*> files;
    std::string start;
    std::string expected;
};

class FindEditorRoot : public testing::TestWithParam<RootRow> {};

/* `D` stands for the directory of the test, which is the current one. */
TEST_P(FindEditorRoot, SearchesUpwardsAndThenTheInstallation) {
    const RootRow& row = GetParam();
    const TemporaryDirectory directory;
    for (const char* const file : row.files) {
        writeFile(directory / file, "");
    }
    const ScopedCurrentDirectory current{directory.path()};
    const std::regex letter{"^D"};
    const std::string start = std::regex_replace(row.start, letter, directory.path());
    const auto root = Utils::findEditorRoot(view(start));
    EXPECT_EQ(root ? text(*root) : "none",
              std::regex_replace(row.expected, letter, directory.path()));
}

const RootRow rootRows[]{
    {"nothing there", {}, "D/a/bin", "none"},
    {"search before installed", {"a/shaders/x", "a/share/vespermoorengine/x"}, "D/a/bin", "D/a"},
    {"search from a relative start", {"a/shaders/x"}, "a/bin", "a"},
    {"installed", {"a/share/vespermoorengine/x"}, "D/a/bin", "D/a/share/vespermoorengine"},
    {"installed from a relative start",
     {"a/share/vespermoorengine/x"},
     "a/bin",
     "D/a/share/vespermoorengine"},
    {"installed as a plain file",
     {"a/share/vespermoorengine"},
     "D/a/bin",
     "D/a/share/vespermoorengine"},
    {"installed further up", {"a/share/vespermoorengine/x"}, "D/a/bin/b", "none"},
};
INSTANTIATE_TEST_SUITE_P(, FindEditorRoot, testing::ValuesIn(rootRows), rowName<RootRow>);

TEST(AppDirectory, IsInTheHomeDirectoryAndNotMade) {
    const TemporaryDirectory home;
    const ScopedVariable variable{"HOME", home.path()};
    EXPECT_EQ(text(appDirectory()), home / ".VespermoorEngine");
    EXPECT_TRUE(fs::is_empty(home.path()));
}

TEST(AppDirectory, IsEmptyWithoutAHomeDirectory) {
    const ScopedVariable variable{"HOME", std::nullopt};
    const Messages messages;
    EXPECT_EQ(text(appDirectory()), "");
    EXPECT_EQ(messages.text(), "Utility::Path::homeDirectory(): $HOME not available\n");
}

} // namespace
} // namespace VespermoorEngine::Test
