#include "Files.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <Corrade/Utility/Path.h>

#include "Failure.h"

namespace VespermoorEngine::Host {

namespace {

[[noreturn]] void fail(const Containers::StringView path, const int error) {
    throw Failure{path, std::strerror(error)};
}

/* File descriptor that is closed, and whose temporary name is removed, unless all went well. */
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& beside)
        : name{beside + ".XXXXXX"},
          descriptor{mkostemp(name.data(), O_CLOEXEC)},
          reason{descriptor < 0 ? errno : 0} {}

    ~TemporaryFile() {
        if (descriptor >= 0) {
            close(descriptor);
            unlink(name.data());
        }
    }

    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /* Takes the name `path`. Returns 0 or the system's error. */
    int replace(const std::string& path, const Containers::StringView content, const mode_t mode);

private:
    std::string name;
    int descriptor;
    int reason;
};

/* Returns 0 or the system's error. */
int writeAll(const int descriptor, Containers::StringView content) {
    while (!content.isEmpty()) {
        const ssize_t written = write(descriptor, content.data(), content.size());
        if (written >= 0) {
            content = content.exceptPrefix(std::size_t(written));
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

int TemporaryFile::replace(const std::string& path, const Containers::StringView content,
                           const mode_t mode) {
    if (descriptor < 0) {
        return reason;
    }
    if (const int error = writeAll(descriptor, content)) {
        return error;
    }
    if (fchmod(descriptor, mode) != 0 || rename(name.data(), path.data()) != 0) {
        return errno;
    }
    close(std::exchange(descriptor, -1));
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

std::string followLinks(const std::string& path) {
    char resolved[PATH_MAX];
    return realpath(path.data(), resolved) ? resolved : path;
}

/* There is no way to ask for the mask without setting it. */
mode_t defaultMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
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
    const std::string target = followLinks(path);
    struct stat status {};
    const bool exists = stat(target.data(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) {
        fail(path, EISDIR);
    }
    const mode_t mode = exists ? status.st_mode & 07777 : defaultMode();
    const int error = exists && !S_ISREG(status.st_mode)
                          ? writeInto(target, content)
                          : TemporaryFile{target}.replace(target, content, mode);
    if (error) {
        fail(path, error);
    }
}

bool holds(const Containers::StringView path, const Containers::StringView content) {
    struct stat status {};
    return stat(std::string{path}.data(), &status) == 0 && S_ISREG(status.st_mode) &&
           std::size_t(status.st_size) == content.size() && readFile(path) == content;
}

void print(const Containers::StringView content) {
    if (std::fwrite(content.data(), 1, content.size(), stdout) != content.size() ||
        std::fflush(stdout) != 0) {
        fail("standard output", errno);
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
