#include "Files.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <new>
#include <optional>
#include <random>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace VespermoorEngine::Host {

namespace {

namespace fs = std::filesystem;

/* As many as the kernel follows. */
constexpr int maxLinks = 40;

[[noreturn]] void fail(const Containers::StringView path, const int error) {
    throw Failure{path, std::strerror(error)};
}

/* Unlike the function of the standard library, does not split the path. */
bool isLink(const std::string& path) {
    struct stat status {};
    return lstat(path.data(), &status) == 0 && S_ISLNK(status.st_mode);
}

/* Holds back signals that end the process, so that it does not leave its temporary file behind. */
class SignalsHeld {
public:
    SignalsHeld() {
        sigset_t held;
        sigemptyset(&held);
        for (const int signal : {SIGHUP, SIGINT, SIGTERM, SIGXFSZ}) {
            sigaddset(&held, signal);
        }
        sigprocmask(SIG_BLOCK, &held, &before);
    }

    ~SignalsHeld() { sigprocmask(SIG_SETMASK, &before, nullptr); }

    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

private:
    sigset_t before;
};

/* Returns 0 or the system's error. Gives up after two interruptions without progress, so a stalled
   reader cannot keep a process that was told to end. */
int writeAll(const int descriptor, Containers::StringView content) {
    bool interrupted = false;
    while (!content.isEmpty()) {
        const ssize_t written = write(descriptor, content.data(), content.size());
        if (written >= 0) {
            content = content.exceptPrefix(std::size_t(written));
            interrupted = false;
        } else if (errno != EINTR || std::exchange(interrupted, true)) {
            return errno;
        }
    }
    return 0;
}

/* The umask cannot be read without setting it. */
mode_t defaultMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

class Descriptor {
public:
    explicit Descriptor(const int number) : number{number} {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    operator int() const { return number; }

    /* Returns 0 or the system's error. */
    int close() { return number < 0 || ::close(std::exchange(number, -1)) == 0 ? 0 : errno; }

private:
    int number;
};

/* The name of a temporary file. Deletes the file unless it was renamed. */
class TemporaryName {
public:
    TemporaryName() = default;
    ~TemporaryName() {
        if (!name.empty()) {
            unlink(name.data());
        }
    }
    TemporaryName(const TemporaryName&) = delete;
    TemporaryName& operator=(const TemporaryName&) = delete;

    /* Returns 0 or the system's error. */
    int rename(const std::string& path) {
        if (::rename(name.data(), path.data()) != 0) {
            return errno;
        }
        name.clear();
        return 0;
    }

    /* Empty while there is no file. */
    std::string name;

private:
    SignalsHeld held;
};

/* Replaces the file `path` in two steps: writes the content to an unnamed file, then gives that
   file the name `path`. If the file system has no unnamed files, the file has a temporary name. */
class Replacement {
public:
    /* `replaced` is the file that exists there, if any. */
    Replacement(std::string path, const struct stat* const replaced,
                const MissingDirectories missing)
        : path{std::move(path)},
          directory{parentOf(this->path)},
          replaced{replaced},
          missing{missing} {}

    /* Returns 0 or the system's error. */
    int write(Containers::StringView content) const;

private:
    int openUnnamed() const;
    int writeNamed(Containers::StringView content) const;
    int fill(int file, Containers::StringView content) const;
    int link(int file) const;

    std::string path;
    std::string directory;
    const struct stat* replaced;
    MissingDirectories missing;
};

int Replacement::write(const Containers::StringView content) const {
    if (replaced && faccessat(AT_FDCWD, path.data(), W_OK, AT_EACCESS) != 0) {
        return errno;
    }
    int number = openUnnamed();
    if (number < 0 && errno == ENOENT && missing == MissingDirectories::Make) {
        std::error_code error;
        fs::create_directories(directory, error);
        if (error) {
            return error.value();
        }
        number = openUnnamed();
    }
    const Descriptor file{number};
    if (file < 0) {
        return writeNamed(content);
    }
    if (const int error = fill(file, content)) {
        return error;
    }
    /* Fails without /proc, through which the file gets its name. */
    return link(file) == 0 ? 0 : writeNamed(content);
}

/* A new file gets its mode here. If a file is replaced, the content is private until fill() sets
   the mode of the old file. */
int Replacement::openUnnamed() const {
    return open(directory.data(), O_TMPFILE | O_WRONLY | O_CLOEXEC, replaced ? 0600 : 0666);
}

int Replacement::writeNamed(const Containers::StringView content) const {
    TemporaryName temporary;
    std::string name = directory + "/.vespermoor-XXXXXX";
    const Descriptor file{mkostemp(name.data(), O_CLOEXEC)};
    if (file < 0) {
        return errno;
    }
    temporary.name = name;
    if (!replaced && fchmod(file, defaultMode()) != 0) {
        return errno;
    }
    const int error = fill(file, content);
    return error ? error : temporary.rename(path);
}

int Replacement::fill(const int file, const Containers::StringView content) const {
    if (const int error = writeAll(file, content)) {
        return error;
    }
    if (replaced) {
        /* Only root may change the owner of a file, so a refusal is not an error. */
        [[maybe_unused]] const int refused = fchown(file, replaced->st_uid, replaced->st_gid);
        if (fchmod(file, replaced->st_mode & 07777) != 0) {
            return errno;
        }
    }
    /* Some file systems report a full disk only when a descriptor is closed. The caller still needs
       this one, so a duplicate is closed. */
    return Descriptor{dup(file)}.close();
}

/* A link cannot replace an existing file, so the new file is linked to a temporary name and then
   renamed. */
int Replacement::link(const int file) const {
    const auto linkTo = [file](const std::string& name) {
        /* The direct way. Kernels before 6.10 allow only root to do it and give others ENOENT. */
        if (linkat(file, "", AT_FDCWD, name.data(), AT_EMPTY_PATH) == 0) {
            return 0;
        }
        if (errno != ENOENT) {
            return errno;
        }
        const std::string own = "/proc/self/fd/" + std::to_string(file);
        return linkat(AT_FDCWD, own.data(), AT_FDCWD, name.data(), AT_SYMLINK_FOLLOW) == 0 ? 0
                                                                                           : errno;
    };
    if (!replaced) {
        const int error = linkTo(path);
        if (error != EEXIST) {
            return error;
        }
    }
    TemporaryName temporary;
    std::string name;
    int error = EEXIST;
    while (error == EEXIST) {
        name = directory + "/.vespermoor-" + std::to_string(std::random_device{}());
        error = linkTo(name);
    }
    if (error) {
        return error;
    }
    temporary.name = name;
    return temporary.rename(path);
}

/* Returns 0 or the system's error. */
int writeInto(const std::string& path, const Containers::StringView content) {
    Descriptor file{open(path.data(), O_WRONLY | O_CLOEXEC)};
    if (file < 0) {
        return errno;
    }
    const int writeError = writeAll(file, content);
    const int closeError = file.close();
    return writeError ? writeError : closeError;
}

/* The descriptor of this process that the link `path` leads to, as /dev/stdout does. The descriptor
   must be written to directly: opening its link in /proc would start at another position in the
   file, and replacing the link's target would detach the descriptor from the file. */
std::optional<int> descriptorAt(const std::string& path) {
    std::error_code error;
    const std::string own = "/proc/" + std::to_string(getpid()) + "/";
    for (const std::string& step : linkChain(path)) {
        const fs::path directory = fs::canonical(parentOf(step), error);
        const std::string name = fs::path{step}.filename();
        int number = 0;
        if (directory.filename() == "fd" && directory.string().compare(0, own.size(), own) == 0 &&
            std::from_chars(name.data(), name.data() + name.size(), number).ec == std::errc{}) {
            return number;
        }
    }
    return {};
}

/* The target of a path. If the path is not a link, this takes one system call. */
class Target {
public:
    explicit Target(std::string from) : path{std::move(from)} {
        error = lstat(path.data(), &status) == 0 ? 0 : errno;
        isLink = exists() && S_ISLNK(status.st_mode);
        if (isLink) {
            error = stat(path.data(), &status) == 0 ? 0 : errno;
            descriptor = descriptorAt(path);
        }
    }

    bool exists() const { return error == 0; }
    bool isRegular() const { return exists() && S_ISREG(status.st_mode); }
    bool isDirectory() const { return exists() && S_ISDIR(status.st_mode); }
    bool isStream() const { return descriptor || (exists() && !isRegular() && !isDirectory()); }
    /* The path with links resolved. */
    std::string end() const { return isLink ? linkChain(path).back() : path; }

    std::string path;
    struct stat status {};
    /* The system's error, or 0 if the target exists. */
    int error = 0;
    bool isLink = false;
    std::optional<int> descriptor;
};

/* The text that was read. Its memory doubles when it is full; a failed allocation throws
   std::bad_alloc. */
class GrowingText {
public:
    GrowingText() = default;
    ~GrowingText() { std::free(data); }
    GrowingText(const GrowingText&) = delete;
    GrowingText& operator=(const GrowingText&) = delete;

    /* Also makes room for a NUL at the end. */
    void reserve(const std::size_t capacity) {
        void* const memory = std::realloc(data, capacity + 1);
        if (!memory) {
            throw std::bad_alloc{};
        }
        data = static_cast<char*>(memory);
        this->capacity = capacity;
    }

    /* Reads until the end or until `limit` is passed. Returns 0 or the system's error. */
    int read(const int descriptor, const std::size_t limit) {
        while (size <= limit) {
            if (size == capacity) {
                reserve(std::min(std::max<std::size_t>(2 * capacity, 1 << 16), limit + 1));
            }
            const ssize_t count = ::read(descriptor, data + size, capacity - size);
            if (count == 0) {
                return 0;
            }
            if (count > 0) {
                size += std::size_t(count);
            } else if (errno != EINTR) {
                return errno;
            }
        }
        return EFBIG;
    }

    Containers::String take() && {
        data[size] = '\0';
        return Containers::String{std::exchange(data, nullptr), size,
                                  [](char* const memory, std::size_t) { std::free(memory); }};
    }

private:
    char* data = nullptr;
    std::size_t size = 0;
    std::size_t capacity = 0;
};

Containers::String readAll(const Containers::StringView name, const int descriptor) {
    constexpr std::size_t limit = std::size_t{1} << 31;
    struct stat status {};
    if (fstat(descriptor, &status) != 0) {
        fail(name, errno);
    }
    const std::size_t expected = S_ISREG(status.st_mode) ? std::size_t(status.st_size) : 0;
    GrowingText text;
    /* One byte more, or the memory would have to grow before read() can report the end. */
    text.reserve(expected + 1);
    const int error = text.read(descriptor, std::max(expected, limit));
    if (error == EFBIG) {
        throw Failure{name, "is longer than 2 GiB"};
    }
    if (error) {
        fail(name, error);
    }
    return std::move(text).take();
}

/* Throws Failure. */
void replace(const Target& target, const Containers::StringView content,
             const MissingDirectories missing) {
    int error = 0;
    if (!target.exists() && target.error != ENOENT) {
        error = target.error;
    } else if (target.isDirectory()) {
        error = EISDIR;
    } else if (target.descriptor) {
        error = writeAll(*target.descriptor, content);
    } else if (target.isStream()) {
        error = writeInto(target.path, content);
    } else {
        const struct stat* const replaced = target.exists() ? &target.status : nullptr;
        error = Replacement{target.end(), replaced, missing}.write(content);
    }
    if (error) {
        fail(target.path, error);
    }
}

Held compare(const Target& target, const Containers::StringView content) {
    if (target.isStream()) {
        return Held::Stream;
    }
    if (!target.isRegular() || std::size_t(target.status.st_size) != content.size()) {
        return Held::Other;
    }
    try {
        return readFile(target.path) == content ? Held::Same : Held::Other;
    } catch (const Failure&) {
        return Held::Other;
    }
}

} // namespace

std::vector<std::string> linkChain(const std::string& path) {
    std::vector<std::string> chain{path};
    std::error_code error;
    for (int links = 0; links != maxLinks && isLink(chain.back()); ++links) {
        const fs::path link = chain.back();
        chain.push_back(link.parent_path() / fs::read_symlink(link, error));
    }
    return chain;
}

std::string parentOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    const std::size_t last = path.find_last_not_of('/', slash);
    return last == std::string::npos ? "/" : path.substr(0, last + 1);
}

std::optional<Identity> identityOf(const std::string& directory) {
    struct statx status {};
    if (statx(AT_FDCWD, directory.data(), 0, STATX_INO | STATX_BTIME, &status) != 0) {
        return std::nullopt;
    }
    return Identity{status.stx_dev_major, status.stx_dev_minor, status.stx_ino,
                    std::uint64_t(status.stx_btime.tv_sec), status.stx_btime.tv_nsec};
}

Containers::String readFile(const Containers::StringView path) {
    const Descriptor file{open(std::string{path}.data(), O_RDONLY | O_CLOEXEC)};
    if (file < 0) {
        fail(path, errno);
    }
    return readAll(path, file);
}

Input readInput(const Containers::StringView path) {
    if (path != standardStream) {
        return {path, readFile(path)};
    }
    return {"standard input", readAll("standard input", STDIN_FILENO)};
}

void replaceFile(const Containers::StringView path, const Containers::StringView content,
                 const MissingDirectories missing) {
    replace(Target{path}, content, missing);
}

Held compareFile(const Containers::StringView path, const Containers::StringView content) {
    return compare(Target{path}, content);
}

Held replaceIfDifferent(const Containers::StringView path, const Containers::StringView content,
                        const MissingDirectories missing) {
    const Target target{path};
    const Held before = compare(target, content);
    if (before != Held::Same) {
        replace(target, content, missing);
    }
    return before;
}

bool isStream(const Containers::StringView path) {
    return Target{path}.isStream();
}

void print(const Containers::StringView content) {
    if (const int error = writeAll(STDOUT_FILENO, content)) {
        throw Failure{"standard output", error == EINTR ? "nobody reads it" : std::strerror(error)};
    }
}

void output(const Containers::StringView path, const Containers::StringView content) {
    if (path.isEmpty() || path == standardStream) {
        print(content);
    } else {
        replaceFile(path, content);
    }
}

bool printsColours() {
    const char* const terminal = std::getenv("TERM");
    const char* const refused = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) && !(refused && *refused) && terminal &&
           Containers::StringView{terminal} != "dumb";
}

std::string coloured(const Colour colour, const std::string& text) {
    return printsColours() ? "\x1b[" + std::to_string(int(colour)) + "m" + text + "\x1b[m" : text;
}

} // namespace VespermoorEngine::Host
