#include "SystemCalls.h"

#include <Corrade/Containers/Optional.h>

#include "Processes.h"
#include "Tree.h"
#include "VespermoorEditor/Utils/EditorUtils.h"
#include "VespermoorEditor/Utils/FileWatch.h"
#include "VespermoorEditor/Utils/System.h"

namespace VespermoorEngine::Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/* The calls of `body`, one per line, with an at sign for the directory of the test. */
std::string calls(const TemporaryDirectory& root, const std::function<void()>& body) {
    std::string lines;
    for (const std::string& call : SystemCalls::callsOf(body)) {
        lines += root.shortened(call) + '\n';
    }
    return lines;
}

TEST(SystemCallsTest, WatcherIsQuietInAQuietTick) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"w/a/f", "n/d/f"});
    FileWatch watch;
    const std::string path = root / "w";
    const std::string below = root / "w/a";
    const auto update = [&] { watch.update(); };
    const auto add = [&](const std::string& added) {
        return [&] { watch.watch(added.data(), {}); };
    };
    EXPECT_EQ(calls(root, update), "");
    /* Each directory is looked up twice by the walk, and watched before it is listed. */
    EXPECT_EQ(calls(root, add(path)), "@/w\n@/w\nwatch @/w\n"
                                      "@/w\n@/w\n@/w\n"
                                      "@/w/a\n@/w/a\nwatch @/w/a\n");
    EXPECT_EQ(calls(root, add(below)), "@/w/a\n@/w/a\n");
    EXPECT_EQ(calls(root, update), "read 2720\n");
    EXPECT_EQ(SystemCalls::allocationsOf(update), 0);
    fs::rename(root / "n", root / "w/n");
    EXPECT_EQ(calls(root, update), "read 2720\n"
                                   "@/w/n\n@/w/n\n@/w/n\nwatch @/w/n\n"
                                   "@/w/n/d\n@/w/n/d\nwatch @/w/n/d\n"
                                   "@/w/n/d/f\n@/w/n/d/f\n"
                                   "read 2720\n");
}

TEST(SystemCallsTest, SearchesLookUpNoMoreThanNeeded) {
    const struct {
        const char* name;
        std::vector<std::string> entries;
        /* The start of the search for the root; null for a search of the trash. */
        const char* start;
        const char* calls;
    } rows[]{
        {"trash with files", {"data/Trash/files/"}, nullptr, "@/data/Trash/files\n"},
        {"no trash", {}, nullptr, "@/data/Trash/files\n@/data/Trash\n"},
        {"root above", {"a/b/", "a/shaders/"}, "a/b", "a/b/shaders\na/shaders\n"},
        {"installed",
         {"a/bin/", "a/share/vespermoorengine/"},
         "a/bin",
         "a/bin/shaders\na/shaders\n@/a/share/vespermoorengine\n"},
        {"no root", {"bin/"}, "bin", "bin/shaders\n@/share/vespermoorengine\n"},
        {"absolute start", {"shaders/", "bin/"}, "@/bin", "@/bin/shaders\n@/shaders\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const TemporaryDirectory root;
        makeTree(root.path(), row.entries);
        const ScopedVariable data{"XDG_DATA_HOME", root / "data"};
        const ScopedCurrentDirectory current{root.path()};
        const std::string start = row.start ? root.expanded(row.start) : "";
        EXPECT_EQ(calls(root,
                        [&] {
                            if (row.start) {
                                Utils::findEditorRoot(view(start));
                            } else {
                                findTrashPath();
                            }
                        }),
                  row.calls);
    }
}

} // namespace
} // namespace VespermoorEngine::Test
