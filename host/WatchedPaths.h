#ifndef Vespermoor_Host_WatchedPaths_h
#define Vespermoor_Host_WatchedPaths_h

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <VespermoorEditor/Utils/FileWatch.h>

#include "ErrorQueue.h"
#include "Files.h"

namespace VespermoorEngine::Host {

/** @brief Absolute path of a changed entry, and the kind of change. */
struct Change {
    std::string path;
    FileWatch::Event event;
};

/**
 * @brief The directory trees and files whose changes the user asked for.
 *
 * Adds to @ref FileWatch the behaviour that users expect: a file reports only its own changes, also
 * if it is named through a link; globs exclude entries; a directory that goes away is reported. If
 * standard output or standard error is a watched file, changes of that file are left out, since
 * printing one would cause the next.
 */
class WatchedPaths {
public:
    /**
     * @brief Watches @p paths, and passes the library's messages on to @p errors.
     *
     * @p exclusions are globs as of fnmatch(3). A glob excludes an entry if it matches the entry's
     * path below the watched directory, the beginning of that path up to a slash, or a name in it.
     * Throws @ref Failure if a path does not exist or cannot be watched.
     */
    WatchedPaths(const std::vector<std::string>& paths, std::vector<std::string> exclusions,
                 ErrorQueue& errors);
    WatchedPaths(const WatchedPaths&) = delete;
    WatchedPaths& operator=(const WatchedPaths&) = delete;

    /** @brief Number of kernel watches. */
    std::size_t directoryCount() const { return watch.directoryCount(); }

    /**
     * @brief Returns the changes since the last call, each once even if several paths report it.
     *
     * A watched directory that went away is reported as an error and is no longer watched.
     */
    std::vector<Change> takeChanges();

    /** @brief Whether any path is still watched. */
    bool anyLeft() const;

private:
    struct Root {
        /* The path as the user gave it. */
        std::string name;
        /* Absolute path of the directory, or of the one that holds the file. */
        std::string directory;
        /* Absolute path of the file, empty for a directory. */
        std::string file;
        Identity identity;
        bool gone = false;
    };

    static std::optional<std::string> whyGone(const Root& root);
    void add(const std::string& name, const std::string& path);
    void hear(std::size_t position, Containers::StringView path, FileWatch::Event event);
    bool isExcluded(const Root& root, const std::string& path) const;
    bool isOwnOutput(const std::string& path) const;

    std::vector<std::string> exclusions;
    ErrorQueue& errors;
    std::vector<Root> roots;
    /* Device and inode of standard output and standard error, if they are regular files. */
    std::vector<std::pair<std::uint64_t, std::uint64_t>> ownOutputs;
    std::vector<Change> changes;
    /* The root that reported the last change. */
    std::size_t lastPosition = 0;
    FileWatch watch;
};

} // namespace VespermoorEngine::Host

#endif
