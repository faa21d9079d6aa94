#include "VespermoorEditor/Utils/EditorUtils.h"

#include <Corrade/Containers/Optional.h>

#include "Processes.h"
#include "Support.h"
#include "Tree.h"

namespace VespermoorEngine::Test {
namespace {

/* An empty start would find both decoys near the current directory. */
TEST(ExecutablesPath, IsEmptyAndNoRootIsSearchedIfTheSystemCannotTell) {
    EXPECT_EQ(text(Utils::executablesPath()), fs::read_symlink("/proc/self/exe").parent_path());
    const TemporaryDirectory directory;
    makeTree(directory.path(), {"a/shaders/phong", "share/vespermoorengine/x"});
    const ScopedCurrentDirectory current{directory / "a"};
    const std::optional<std::string> result = resultWithMount("/proc", [] {
        const Messages messages;
        const std::string path = text(Utils::executablesPath());
        const char* const root = Utils::findEditorRoot() ? "found " : "none ";
        return path + root + messages.text();
    });
    if (!result) {
        GTEST_SKIP() << "mounts are not allowed here, so /proc cannot be hidden";
    }
    const std::string message =
        "Utility::Path::executableLocation(): can't read /proc/self/exe: error 2 "
        "(No such file or directory)\n";
    EXPECT_EQ(*result, "none " + message + message);
}

/* @ is the directory of the test, which is the current one. */
TEST(FindEditorRoot, SearchesUpwardsAndThenTheInstallation) {
    const std::tuple<std::vector<std::string>, std::string, std::string> rows[]{
        {{"a/shaders/x", "a/share/vespermoorengine/x"}, "@/a/bin", "@/a"},
        {{"a/shaders/x"}, "a/bin", "a"},
        {{"a/share/vespermoorengine/x"}, "a/bin", "@/a/share/vespermoorengine"},
        {{"a/share/vespermoorengine"}, "@/a/bin", "@/a/share/vespermoorengine"},
        {{"a/share/vespermoorengine/x"}, "@/a/bin/b", "none"}};
    for (const auto& [entries, start, expected] : rows) {
        const TemporaryDirectory directory;
        makeTree(directory.path(), entries);
        const ScopedCurrentDirectory current{directory.path()};
        const auto root = Utils::findEditorRoot(view(directory.expanded(start)));
        EXPECT_EQ(root ? directory.shortened(text(*root)) : "none", expected) << start;
    }
}

} // namespace
} // namespace VespermoorEngine::Test
