#include "SystemCalls.h"

#include "Tree.h"
#include "VespermoorEditor/Utils/FileWatch.h"

namespace VespermoorEngine::Test {
namespace {

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

} // namespace
} // namespace VespermoorEngine::Test
