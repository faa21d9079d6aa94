#include "Files.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <Corrade/Utility/Path.h>

#include "Failure.h"

namespace VespermoorEngine::Host {

namespace {

namespace fs = std::filesystem;

/* As many as the kernel follows. */
constexpr int maxLinks = 40;

[[noreturn]] void fail(const Containers::StringView path, const int error) {
    throw Failure{path, std::strerror(error)};
}

/* Holds signals up that end the process, so that it does not leave its temporary file. */
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

/* A new file whose name is removed again unless it took the place of another one. */
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& directory)
        : name{directory + "/.vespermoor-XXXXXX"},
          descriptor{mkostemp(name.data(), O_CLOEXEC)},
          reason{descriptor < 0 ? errno : 0} {}

    ~TemporaryFile() {
        if (descriptor >= 0) {
            close(descriptor);
        }
        if (!name.empty()) {
            unlink(name.data());
        }
    }

    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /* Takes the name `path`, and owner and permissions where they are given and may be set. Returns
       0 or the system's error. */
    int replace(const std::string& path, Containers::StringView content,
                const struct stat* replaced);

private:
    SignalsHeld held;
    std::string name;
    int descriptor;
    int reason;
};

/* Returns 0 or the system's error. Ends also where nobody takes the content, once the process was
   told to end: whoever takes nothing between two interruptions is not waited for. */
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

/* There is no way to ask for the mask without setting it. */
mode_t defaultMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

int TemporaryFile::replace(const std::string& path, const Containers::StringView content,
                           const struct stat* const replaced) {
    if (descriptor < 0) {
        return reason;
    }
    if (const int error = writeAll(descriptor, content)) {
        return error;
    }
    /* Only root may give files away, and others lose nothing that they could keep. */
    [[maybe_unused]] const int refused =
        replaced ? fchown(descriptor, replaced->st_uid, replaced->st_gid) : 0;
    const mode_t mode = replaced ? replaced->st_mode & 07777 : defaultMode();
    /* Some file systems tell only at the close that they had no room. */
    if (fchmod(descriptor, mode) != 0 || close(std::exchange(descriptor, -1)) != 0 ||
        rename(name.data(), path.data()) != 0) {
        return errno;
    }
    name.clear();
    return 0;
}

/* Returns 0 or the system's error. */
int writeInto(const std::string& path, const Containers::StringView content) {
    const int descriptor = open(path.data(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0) {
        return errno;
    }
    const int writeError = writeAll(descriptor, content);
    const int closeError = close(descriptor) == 0 ? 0 : errno;
    return writeError ? writeError : closeError;
}

/* Why the file cannot be read, asked of the system anew. */
const char* whyUnreadable(const std::string& path) {
    struct stat status {};
    if (stat(path.data(), &status) == 0 && S_ISDIR(status.st_mode)) {
        return std::strerror(EISDIR);
    }
    const int descriptor = open(path.data(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        return std::strerror(errno);
    }
    close(descriptor);
    return "cannot be read";
}

} // namespace

std::vector<fs::path> linkChain(const fs::path& path) {
    std::vector<fs::path> chain{path};
    std::error_code error;
    for (int links = 0; links != maxLinks && fs::is_symlink(chain.back(), error); ++links) {
        chain.push_back(chain.back().parent_path() / fs::read_symlink(chain.back(), error));
    }
    return chain;
}

std::string parentOf(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path().string() : ".";
}

Containers::String readFile(const Containers::StringView path) {
    /* The one line for the user is made here, so the library's own is not wanted. */
    Corrade::Utility::Error silent{nullptr};
    Containers::Optional<Containers::String> content = Corrade::Utility::Path::readString(path);
    if (!content) {
        throw Failure{path, whyUnreadable(path)};
    }
    return *std::move(content);
}

void replaceFile(const Containers::StringView path, const Containers::StringView content) {
    const std::string name{path};
    struct stat status {};
    const bool exists = stat(name.data(), &status) == 0;
    if (!exists && errno != ENOENT) {
        fail(path, errno);
    }
    if (exists && S_ISDIR(status.st_mode)) {
        fail(path, EISDIR);
    }
    const fs::path target = linkChain(name).back();
    const int error =
        exists && !S_ISREG(status.st_mode)
            ? writeInto(name, content)
            : TemporaryFile{parentOf(target)}.replace(target, content, exists ? &status : nullptr);
    if (error) {
        fail(path, error);
    }
}

bool holds(const Containers::StringView path, const Containers::StringView content) {
    struct stat status {};
    const std::string name{path};
    if (stat(name.data(), &status) != 0 || !S_ISREG(status.st_mode) ||
        std::size_t(status.st_size) != content.size()) {
        return false;
    }
    Corrade::Utility::Error silent{nullptr};
    const auto present = Corrade::Utility::Path::readString(path);
    return present && *present == content;
}

void print(const Containers::StringView content) {
    if (const int error = writeAll(STDOUT_FILENO, content)) {
        throw Failure{"standard output", error == EINTR ? "nobody reads it" : std::strerror(error)};
    }
}

void output(const Containers::StringView path, const Containers::StringView content) {
    if (path.isEmpty()) {
        print(content);
    } else {
        replaceFile(path, content);
    }
}

} // namespace VespermoorEngine::Host
