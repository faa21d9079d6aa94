#include "SystemCalls.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace VespermoorEngine::Test::SystemCalls {

std::function<void(const std::string&)> aroundKernelWatch;
std::function<void()> onEmptyRead;

namespace {

bool recording = false;
std::vector<std::string> calls;
int allocations = 0;

void record(const char* const name, const std::string& argument) {
    if (recording) {
        calls.push_back(name + argument);
    }
}

} // namespace

std::vector<std::string> callsOf(const std::function<void()>& body) {
    recording = true;
    body();
    recording = false;
    return std::exchange(calls, {});
}

int allocationsOf(const std::function<void()>& body) {
    const int before = allocations;
    body();
    return allocations - before;
}

} // namespace VespermoorEngine::Test::SystemCalls

using namespace VespermoorEngine::Test::SystemCalls;

#pragma GCC visibility push(default)
extern "C" {

ssize_t read(const int fd, void* const buffer, const std::size_t size) {
    record("read ", std::to_string(size));
    const ssize_t count = syscall(SYS_read, fd, buffer, size);
    if (count <= 0 && onEmptyRead) {
        const int error = errno;
        std::exchange(onEmptyRead, nullptr)();
        errno = error;
    }
    return count;
}

int access(const char* const path, const int mode) noexcept {
    record("", path);
    return syscall(SYS_faccessat, AT_FDCWD, path, mode);
}

int stat(const char* const path, struct stat* const status) noexcept {
    record("", path);
    return syscall(SYS_newfstatat, AT_FDCWD, path, status, 0);
}

int lstat(const char* const path, struct stat* const status) noexcept {
    record("", path);
    return syscall(SYS_newfstatat, AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
}

int inotify_add_watch(const int fd, const char* const path, const std::uint32_t mask) noexcept {
    record("watch ", path);
    const std::function<void(const std::string&)> change = aroundKernelWatch;
    if (change) {
        change(path);
    }
    const int descriptor = syscall(SYS_inotify_add_watch, fd, path, mask);
    const int error = errno;
    if (change) {
        change(path);
    }
    errno = error;
    return descriptor;
}

/* The address sanitizer calls this, instead of the function below. */
void __sanitizer_malloc_hook(const volatile void*, std::size_t) { // NOLINT
    ++allocations;
}

#ifndef __SANITIZE_ADDRESS__
void* __libc_malloc(std::size_t size);

void* malloc(const std::size_t size) {
    ++allocations;
    return __libc_malloc(size);
}
#endif
}
#pragma GCC visibility pop
