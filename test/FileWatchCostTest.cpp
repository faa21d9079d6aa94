#include "VespermoorEditor/Utils/FileWatch.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "FileWatchState.h"
#include "Support.h"
#include "Tree.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define __SANITIZE_ADDRESS__ 1
#endif
#endif

namespace {

/* Calls of one kind, counted while the test says so. */
struct Counts {
    int reads;
    int stats;
    int linkStats;
    int kernelWatches;
    int allocations;
};

Counts counts;
int lastReadSize = 0;

} // namespace

/* Take the places of the system's functions for the libraries as well. */
#pragma GCC visibility push(default)
extern "C" {

ssize_t read(const int fd, void* const buffer, const std::size_t size) {
    ++counts.reads;
    lastReadSize = size;
    return syscall(SYS_read, fd, buffer, size);
}

int stat(const char* const path, struct stat* const status) noexcept {
    ++counts.stats;
    return syscall(SYS_newfstatat, AT_FDCWD, path, status, 0);
}

int lstat(const char* const path, struct stat* const status) noexcept {
    ++counts.linkStats;
    return syscall(SYS_newfstatat, AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
}

int inotify_add_watch(const int fd, const char* const path, const std::uint32_t mask) noexcept {
    ++counts.kernelWatches;
    return syscall(SYS_inotify_add_watch, fd, path, mask);
}

#ifdef __SANITIZE_ADDRESS__
/* Declared here, since g++ comes without the header of its sanitizer. */
int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*, std::size_t),
                                              void (*)(const volatile void*));
#else
void* __libc_malloc(std::size_t size);

void* malloc(const std::size_t size) {
    ++counts.allocations;
    return __libc_malloc(size);
}
#endif
}
#pragma GCC visibility pop

namespace VespermoorEngine::Test {
namespace {

#ifdef __SANITIZE_ADDRESS__
[[maybe_unused]] const int hooks = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, std::size_t) { ++counts.allocations; }, [](const volatile void*) {});
#endif

struct FileWatchCostTest : testing::Test {
    /* What one call of `body` takes. */
    template <class Body>
    Counts cost(Body&& body) {
        counts = {};
        body();
        return counts;
    }

    TemporaryDirectory root;
    FileWatch watch;
};

TEST_F(FileWatchCostTest, QuietTickIsOneReadAndNoAllocation) {
    makeTree(root.path(), {"a/b/", "c/"});
    const Counts idle = cost([&] { watch.update(); });
    EXPECT_EQ(idle.reads, 0);
    const Counts registered = cost([&] { watch.watch(root.path().data(), {}); });
    EXPECT_GT(registered.allocations, 0);
    watch.update();
    const Counts quiet = cost([&] { watch.update(); });
    EXPECT_EQ(quiet.reads, 1);
    EXPECT_EQ(lastReadSize, 2720);
    EXPECT_EQ(quiet.allocations, 0);
    EXPECT_EQ(quiet.stats + quiet.linkStats + quiet.kernelWatches, 0);
    const Counts covered = cost([&] { EXPECT_EQ(watch.watch((root / "a").data(), {}), 2); });
    EXPECT_EQ(covered.kernelWatches + covered.linkStats, 0);
}

TEST_F(FileWatchCostTest, WalksLookUpEachEntryOnce) {
    makeTree(root.path(), {"w/a/b/", "w/a/f", "w/c/", "n/d/f", "n/d/e/"});
    const Counts registered = cost([&] { watch.watch((root / "w").data(), {}); });
    /* watch() looks the path up as well. */
    EXPECT_EQ(registered.kernelWatches, 4);
    EXPECT_EQ(registered.linkStats, 4);
    EXPECT_EQ(registered.stats, 1 + 4);
    std::filesystem::rename(root / "n", root / "w/n");
    const Counts followed = cost([&] { watch.update(); });
    /* Three of the four entries are directories. */
    EXPECT_EQ(followed.kernelWatches, 3);
    EXPECT_EQ(followed.linkStats, 4);
    EXPECT_EQ(followed.stats, 4);
}

} // namespace
} // namespace VespermoorEngine::Test
