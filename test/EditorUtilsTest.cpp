#include "VespermoorEditor/Utils/EditorUtils.h"

#include <filesystem>
#include <iostream>
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
        mountPrivately("/proc");
        const Messages messages;
        std::cerr << "path '" << text(Utils::executablesPath()) << "', root "
                  << (Utils::findEditorRoot() ? "found" : "none");
        _exit(0); // The leak check at a usual exit needs /proc.
    };
    EXPECT_EXIT(report(), testing::ExitedWithCode(0), testing::Eq("path '', root none"));
}

struct RootRow {
    const char* name;
    std::vector<const char*> files;
    const char* start;
    const char* expected;
    bool isInstalled;
};

class FindEditorRoot : public testing::TestWithParam<RootRow> {};

TEST_P(FindEditorRoot, FromAnAbsoluteAndFromARelativeStart) {
    const RootRow& row = GetParam();
    const TemporaryDirectory directory;
    for (const char* const file : row.files) {
        writeFile(directory / file, "");
    }
    fs::create_directories(directory / row.start);
    const ScopedCurrentDirectory current{directory.path()};

    const auto fromAbsolute =
        Utils::findEditorRoot(Containers::StringView{(directory / row.start).data()});
    const auto fromRelative = Utils::findEditorRoot(Containers::StringView{row.start});
    ASSERT_EQ(!!fromAbsolute, !!row.expected);
    ASSERT_EQ(!!fromRelative, !!row.expected);
    if (row.expected) {
        EXPECT_EQ(text(*fromAbsolute), directory / row.expected);
        EXPECT_EQ(text(*fromRelative), row.isInstalled ? directory / row.expected : row.expected);
    }
}

const RootRow rootRows[]{
    {"nothing there", {}, "a/bin", nullptr, false},
    {"in the start itself", {"a/b/shaders/phong"}, "a/b", "a/b", false},
    {"nearest of two above", {"a/shaders/x", "a/b/shaders/x"}, "a/b/c/d", "a/b", false},
    {"a plain file of that name", {"a/shaders"}, "a/b", "a", false},
    {"only a longer name", {"a/shaders2/x"}, "a/b", nullptr, false},
    {"search before installed", {"a/shaders/x", "a/share/vespermoorengine/x"}, "a/bin", "a", false},
    {"installed", {"a/share/vespermoorengine/x"}, "a/bin", "a/share/vespermoorengine", true},
    {"installed as a plain file",
     {"a/share/vespermoorengine"},
     "a/bin",
     "a/share/vespermoorengine",
     true},
    {"installed beside the start only", {"a/share/vespermoorengine/x"}, "a/bin/b", nullptr, false},
    {"start with a slash at its end", {"a/shaders/x"}, "a/b/", "a", false},
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
