#include "WatchedPaths.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <Corrade/Containers/StringStl.h>
#include <VespermoorEngine/Path.h>

#include "LibraryMessages.h"

namespace VespermoorEngine::Host {

namespace {

namespace fs = std::filesystem;

/* The path and, for a link, its target too: a link is an entry of its own and does not change with
   its target. For a link to a directory only the target, since the library watches just one level
   through a link. */
std::vector<std::string> resolved(const std::string& name) {
    std::error_code error;
    const std::string path{Path::absolute(name)};
    const fs::path target = fs::canonical(path, error);
    if (error) {
        throw Failure{name, error.message()};
    }
    if (!fs::is_symlink(path, error)) {
        return {path};
    }
    return fs::is_directory(target, error) ? std::vector<std::string>{target}
                                           : std::vector<std::string>{path, target};
}

std::string whyUnwatched(LibraryMessages& messages) {
    const std::string reason = messages.takeReason();
    return "cannot be watched: " + (reason == std::strerror(ENOSPC)
                                        ? "the limit fs.inotify.max_user_watches is reached"
                                        : reason);
}

std::string withoutTrailingSlashes(std::string glob) {
    glob.erase(glob.find_last_not_of('/') + 1);
    return glob;
}

/* The library lets started programs inherit its descriptor, as its hosts expect. */
void closeInotifyOnExec() {
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator{"/proc/self/fd", error}) {
        if (fs::read_symlink(entry, error) == "anon_inode:inotify") {
            fcntl(std::stoi(entry.path().filename()), F_SETFD, FD_CLOEXEC);
        }
    }
}

bool matches(const std::string& glob, const fs::path& path) {
    return fnmatch(glob.data(), path.c_str(), FNM_LEADING_DIR) == 0 ||
           std::any_of(path.begin(), path.end(), [&](const fs::path& name) {
               return fnmatch(glob.data(), name.c_str(), 0) == 0;
           });
}

} // namespace

WatchedPaths::WatchedPaths(const std::vector<std::string>& paths,
                           std::vector<std::string> exclusions, ErrorQueue& errors)
    : exclusions{std::move(exclusions)}, errors{errors} {
    closeInotifyOnExec();
    for (std::string& glob : this->exclusions) {
        glob = withoutTrailingSlashes(std::move(glob));
    }
    for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO}) {
        struct stat status {};
        if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
            ownOutputs.emplace_back(status.st_dev, status.st_ino);
        }
    }
    for (const std::string& name : paths) {
        for (const std::string& path : resolved(name)) {
            add(name, path);
        }
    }
}

void WatchedPaths::add(const std::string& name, const std::string& path) {
    Root root{name, path, {}, {}};
    std::error_code error;
    if (!fs::is_directory(path, error)) {
        root.directory = parentOf(path);
        root.file = path;
    }
    root.identity = identityOf(root.directory).value_or(Identity{});
    const auto listener = [this, position = roots.size()](const Containers::StringView changed,
                                                          const FileWatch::Event event) {
        hear(position, changed, event);
    };
    LibraryMessages messages{errors};
    if (watch.watch(path, FileWatch::Callback{Corrade::DefaultInit, listener}) == 0) {
        throw Failure{name, whyUnwatched(messages)};
    }
    roots.push_back(std::move(root));
}

/* The roots report a change one after the other, in order, so the same change from a later root is
   a duplicate. */
void WatchedPaths::hear(const std::size_t position, const Containers::StringView path,
                        const FileWatch::Event event) {
    const Root& root = roots[position];
    const std::string changed{path};
    if (root.gone || (!root.file.empty() && root.file != changed) || isExcluded(root, changed)) {
        return;
    }
    const bool isListed = !changes.empty() && position > lastPosition &&
                          changes.back().path == changed && changes.back().event == event;
    if (!isListed && !isOwnOutput(changed)) {
        changes.push_back({changed, event});
    }
    lastPosition = position;
}

bool WatchedPaths::isExcluded(const Root& root, const std::string& path) const {
    if (exclusions.empty()) {
        return false;
    }
    const fs::path below = fs::path{path}.lexically_relative(root.directory);
    return std::any_of(exclusions.begin(), exclusions.end(),
                       [&](const std::string& glob) { return matches(glob, below); });
}

bool WatchedPaths::isOwnOutput(const std::string& path) const {
    struct stat status {};
    return !ownOutputs.empty() && lstat(path.data(), &status) == 0 &&
           std::count(ownOutputs.begin(), ownOutputs.end(),
                      std::pair<std::uint64_t, std::uint64_t>{status.st_dev, status.st_ino}) != 0;
}

/* Directories are checked before the update, so that changes made before one went away are
   reported. */
std::vector<Change> WatchedPaths::takeChanges() {
    std::vector<std::pair<Root*, std::string>> gone;
    for (Root& root : roots) {
        const auto reason = root.gone ? std::nullopt : whyGone(root);
        if (reason) {
            gone.emplace_back(&root, *reason);
        }
    }
    {
        const LibraryMessages messages{errors};
        watch.update();
    }
    for (const auto& [root, reason] : gone) {
        root->gone = true;
        errors.addError(root->name + ": no longer watched: " + reason);
    }
    return std::exchange(changes, {});
}

bool WatchedPaths::anyLeft() const {
    return std::any_of(roots.begin(), roots.end(), [](const Root& root) { return !root.gone; });
}

/* Empty if the directory is still there, or if the system cannot tell. */
std::optional<std::string> WatchedPaths::whyGone(const Root& root) {
    const std::optional<Identity> identity = identityOf(root.directory);
    const std::string subject = root.file.empty() ? "the directory" : "its directory";
    if (!identity && (errno == ENOENT || errno == ENOTDIR)) {
        return subject + " is gone";
    }
    if (identity && *identity != root.identity) {
        return subject + " was replaced by another one";
    }
    return std::nullopt;
}

} // namespace VespermoorEngine::Host
