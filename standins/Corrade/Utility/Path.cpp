#include "Corrade/Utility/Path.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Corrade/Containers/Array.h"
#include "Corrade/Containers/ArrayView.h"
#include "Corrade/Containers/GrowableArray.h"
#include "Corrade/Containers/Implementation/Assertion.h"
#include "Corrade/Containers/Optional.h"
#include "Corrade/Containers/Pair.h"
#include "Corrade/Containers/String.h"
#include "Corrade/Containers/StringStl.h"
#include "Corrade/Containers/StringView.h"
#include "Corrade/Utility/Debug.h"
#include "Corrade/Utility/Format.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {
namespace Path {

namespace {

namespace fs = std::filesystem;

using Containers::Optional;
using Containers::StringView;
using namespace Containers::Literals;

/* Prints the failed operation and the system's reason. */
template <class... Args>
bool fail(std::error_code error, const char* message, const Args&... args) {
    Error{} << format(message, args...) << Debug::nospace << ": error" << error.value() << "("
            << Debug::nospace << error.message() << Debug::nospace << ")";
    return false;
}

/* Reads `errno` first, before anything here can overwrite it. */
template <class... Args>
bool fail(const char* message, const Args&... args) {
    return fail(std::error_code{errno, std::generic_category()}, message, args...);
}

/* An entry of a directory that is being read, as a file type of `st_mode`. A link counts as its
   target; a dangling one has the type 0. */
mode_t typeOf(DIR* directory, const dirent& entry) {
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN)
        return DTTOIF(entry.d_type);
    struct stat status;
    return fstatat(dirfd(directory), entry.d_name, &status, 0) == 0 ? status.st_mode & S_IFMT : 0;
}

/* A dangling link is never skipped. */
bool isSkipped(DIR* directory, const dirent& entry, ListFlags flags) {
    const StringView name = entry.d_name;
    if (name == "."_s || name == ".."_s)
        return true;
    if (!(flags & (ListFlag::SkipFiles | ListFlag::SkipSpecial)))
        return false;
    const mode_t type = typeOf(directory, entry);
    return (S_ISREG(type) && flags >= ListFlag::SkipFiles) ||
           (!S_ISREG(type) && !S_ISDIR(type) && type && flags >= ListFlag::SkipSpecial);
}

class File {
public:
    File(StringView filename, int flags) { open(filename, flags); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() { close(); }

    /* Must not be open. */
    void open(StringView filename, int flags) {
        _descriptor = ::open(Containers::String::nullTerminatedView(filename).data(),
                             flags | O_CLOEXEC, 0666);
    }

    int descriptor() const { return _descriptor; }
    bool isOpen() const { return _descriptor != -1; }

    /* Some file systems report a failed write only here. */
    bool close() {
        const int descriptor = _descriptor;
        _descriptor = -1;
        return descriptor == -1 || ::close(descriptor) == 0;
    }

private:
    int _descriptor = -1;
};

/* The status of an open file; on failure that of an empty special file. */
struct stat statusOf(const File& file) {
    struct stat status {};
    if (fstat(file.descriptor(), &status) != 0)
        status = {};
    return status;
}

/* Both continue after a signal. */
ssize_t readSome(const File& file, void* data, std::size_t size) {
    ssize_t count;
    do
        count = ::read(file.descriptor(), data, size);
    while (count == -1 && errno == EINTR);
    return count;
}

bool writeAll(const File& file, const char* data, std::size_t size) {
    while (size) {
        const ssize_t count = ::write(file.descriptor(), data, size);
        if (count == -1 && errno != EINTR)
            return false;
        if (count > 0) {
            data += count;
            size -= std::size_t(count);
        }
    }
    return true;
}

} // namespace

StringView fromNativeSeparators(StringView path) {
    return path;
}

StringView toNativeSeparators(StringView path) {
    return path;
}

Containers::Pair<StringView, StringView> split(StringView path) {
    const StringView slash = path.findLastOr('/', path.begin());
    const StringView directory = path.prefix(slash.end());
    const bool isRoot = directory == "/"_s || directory == "//"_s;
    return {isRoot ? directory : path.prefix(slash.begin()), path.suffix(slash.end())};
}

Containers::String join(StringView path, StringView filename) {
    if (path.isEmpty() || filename.hasPrefix('/'))
        return filename;
    const StringView directory = path.hasSuffix('/') ? path.exceptSuffix(1) : path;
    return directory + "/"_s + filename;
}

bool exists(StringView filename) {
    return access(Containers::String::nullTerminatedView(filename).data(), F_OK) == 0;
}

bool isDirectory(StringView path) {
    struct stat status;
    return stat(Containers::String::nullTerminatedView(path).data(), &status) == 0 &&
           S_ISDIR(status.st_mode);
}

bool make(StringView path) {
    if (mkdir(Containers::String::nullTerminatedView(path).data(), 0777) == 0)
        return true;
    std::error_code error;
    fs::create_directories(std::string_view{path.data(), path.size()}, error);
    return !error || fail(error, "Utility::Path::make(): can't create {}", path);
}

bool remove(StringView path) {
    return std::remove(Containers::String::nullTerminatedView(path).data()) == 0 ||
           fail("Utility::Path::remove(): can't remove {}", path);
}

bool move(StringView from, StringView to) {
    return std::rename(Containers::String::nullTerminatedView(from).data(),
                       Containers::String::nullTerminatedView(to).data()) == 0 ||
           fail("Utility::Path::move(): can't move {} to {}", from, to);
}

Optional<Containers::String> executableLocation() {
    char location[PATH_MAX];
    const ssize_t size = readlink("/proc/self/exe", location, sizeof(location));
    if (size == -1) {
        fail("Utility::Path::executableLocation(): can't read /proc/self/exe");
        return {};
    }
    return Containers::String{location, std::size_t(size)};
}

Optional<Containers::String> currentDirectory() {
    std::error_code error;
    const fs::path directory = fs::current_path(error);
    if (error) {
        fail(error, "Utility::Path::currentDirectory()");
        return {};
    }
    return Containers::String{directory.c_str()};
}

Optional<Containers::String> homeDirectory() {
    if (const char* const home = std::getenv("HOME"))
        return Containers::String{home};
    Error{} << "Utility::Path::homeDirectory(): $HOME not available";
    return {};
}

Optional<Containers::Array<Containers::String>> list(StringView path, ListFlags flags) {
    VESPERMOOR_STANDINS_DEBUG_ASSERT(
        flags >= ListFlag::SkipDotAndDotDot,
        "Utility::Path::list(): the stand-in always skips . and .., ask for that");
    DIR* const directory = opendir(Containers::String::nullTerminatedView(path).data());
    if (!directory) {
        fail("Utility::Path::list(): can't list {}", path);
        return {};
    }
    Containers::Array<Containers::String> names;
    errno = 0;
    while (const dirent* const entry = readdir(directory)) {
        if (!isSkipped(directory, *entry, flags))
            arrayAppend(names, InPlaceInit, entry->d_name);
        errno = 0;
    }
    const std::error_code error{errno, std::generic_category()};
    closedir(directory);
    if (error) {
        fail(error, "Utility::Path::list(): can't list {}", path);
        return {};
    }
    if (flags & ListFlag::SortAscending)
        std::sort(names.begin(), names.end());
    return Optional<Containers::Array<Containers::String>>{std::move(names)};
}

/* Reads to the end and does not rely on the reported size: files in /proc hold more than their size
   of 0, those in /sys less than their 4096. The array always has room for one more byte than was
   read, which is the NUL in the end. */
Optional<Containers::String> readString(StringView filename) {
    const File file{filename, O_RDONLY};
    if (!file.isOpen()) {
        fail("Utility::Path::read(): can't open {}", filename);
        return {};
    }
    const struct stat status = statusOf(file);
    if (S_ISDIR(status.st_mode)) {
        Error{} << "Utility::Path::read():" << filename << "is a directory";
        return {};
    }

    constexpr std::size_t Block = 4096;
    Containers::Array<char> data{NoInit,
                                 status.st_size > 0 ? std::size_t(status.st_size) + 1 : Block};
    std::size_t filled = 0;
    ssize_t count;
    while ((count = readSome(file, data.data() + filled, data.size() - filled)) > 0) {
        filled += std::size_t(count);
        if (filled == data.size())
            arrayResize(data, NoInit, 2 * filled);
    }
    if (count == -1) {
        fail("Utility::Path::read(): can't read from {}", filename);
        return {};
    }
    data[filled] = '\0';
    const auto deleter = data.deleter();
    return Containers::String{data.release(), filled, deleter};
}

bool write(StringView filename, Containers::ArrayView<const void> data) {
    File file{filename, O_WRONLY | O_CREAT | O_TRUNC};
    if (!file.isOpen())
        return fail("Utility::Path::write(): can't open {}", filename);
    return (writeAll(file, static_cast<const char*>(data.data()), data.size()) && file.close()) ||
           fail("Utility::Path::write(): can't write to {}", filename);
}

namespace {

/* Fits the caches, and most files need one round. */
constexpr std::size_t CopyBlock = std::size_t(128) << 10;

/* Lets the kernel copy as much as it can, which advances both positions: without a detour through
   this process, and on some file systems by sharing blocks. If it ends early (two file systems, a
   device, an old kernel, a full disk), the plain copy continues from there and reports errors.
   Returns whether anything was copied. */
bool copyInKernel(const File& in, const File& out) {
    constexpr std::size_t step = std::size_t(1) << 30;
    bool copied = false;
    while (copy_file_range(in.descriptor(), nullptr, out.descriptor(), nullptr, step, 0) > 0)
        copied = true;
    return copied;
}

/* Whether the path, with links followed, is that of the open file. */
bool isFileAt(const File& file, StringView path) {
    const struct stat opened = statusOf(file);
    struct stat named;
    return stat(Containers::String::nullTerminatedView(path).data(), &named) == 0 &&
           named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
}

} // namespace

/* Reads the first block before it touches the target: this shows whether the source can be read,
   and whether a copy by the kernel is worthwhile for the rest. Refuses a copy of a file to itself,
   which would empty it; the real one does not check. */
bool copy(StringView from, StringView to) {
    const File in{from, O_RDONLY};
    if (!in.isOpen())
        return fail("Utility::Path::copy(): can't open {} for reading", from);
    char block[CopyBlock];
    ssize_t count = readSome(in, block, sizeof(block));
    if (count == -1 && errno == EISDIR) {
        Error{} << "Utility::Path::copy(): can't read from" << from << "which is a directory";
        return false;
    }
    if (count == -1)
        return fail("Utility::Path::copy(): can't read from {}", from);

    File out{to, O_WRONLY | O_CREAT | O_EXCL};
    /* Only a file that existed before can be the source itself. */
    if (!out.isOpen() && isFileAt(in, to)) {
        Error{} << "Utility::Path::copy(): can't copy" << from << "to itself";
        return false;
    }
    if (!out.isOpen())
        out.open(to, O_WRONLY | O_CREAT | O_TRUNC);
    if (!out.isOpen())
        return fail("Utility::Path::copy(): can't open {} for writing", to);
    bool kernelMayCopy = std::size_t(count) == sizeof(block);
    for (; count > 0; count = readSome(in, block, sizeof(block))) {
        if (!writeAll(out, block, std::size_t(count)))
            return fail("Utility::Path::copy(): can't write to {}", to);
        kernelMayCopy = kernelMayCopy && copyInKernel(in, out);
    }
    if (count == -1)
        return fail("Utility::Path::copy(): can't read from {}", from);
    return out.close() || fail("Utility::Path::copy(): can't write to {}", to);
}

} // namespace Path
} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade
