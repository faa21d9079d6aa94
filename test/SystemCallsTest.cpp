#include "SystemCalls.h"

#include "Tree.h"
#include "VespermoorEditor/Utils/FileWatch.h"

namespace VespermoorEngine::Test {
namespace {

TEST(SystemCallsTest, WatcherIsQuietInAQuietTick) {
    const TemporaryDirectory root;
    makeTree(root.path(), {"w/a/f", "n/d/f"});
    FileWatch watch;
    /* The calls, one per line, with an at sign for the directory of the test. */
    const auto calls = [&](const std::function<void()>& body) {
        std::string lines;
        for (const std::string& call : SystemCalls::callsOf(body)) {
            lines += root.shortened(call) + '\n';
        }
        return lines;
    };
    const auto update = [&] { watch.update(); };
    EXPECT_EQ(calls(update), "");
    /* Each directory is looked up twice by the walk, and watched before it is listed. */
    EXPECT_EQ(calls([&] { watch.watch((root / "w").data(), {}); }), "@/w\n@/w\nwatch @/w\n"
                                                                    "@/w\n@/w\n@/w\n"
                                                                    "@/w/a\n@/w/a\nwatch @/w/a\n");
    EXPECT_EQ(calls([&] { watch.watch((root / "w/a").data(), {}); }), "@/w/a\n@/w/a\n");
    EXPECT_EQ(calls(update), "read 2720\n");
    EXPECT_EQ(SystemCalls::allocationsOf(update), 0);
    fs::rename(root / "n", root / "w/n");
    EXPECT_EQ(calls(update), "read 2720\n"
                             "@/w/n\n@/w/n\n@/w/n\nwatch @/w/n\n"
                             "@/w/n/d\n@/w/n/d\nwatch @/w/n/d\n"
                             "@/w/n/d/f\n@/w/n/d/f\n"
                             "read 2720\n");
}

} // namespace
} // namespace VespermoorEngine::Test
