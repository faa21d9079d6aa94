#ifndef VespermoorEditor_Utils_FileWatch_h
#define VespermoorEditor_Utils_FileWatch_h

#include <cstddef>
#include <cstdint>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/Pair.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>
#include <Corrade/Utility/Utility.h>

#include "VespermoorEditor/Utils/visibility.h"
#include "VespermoorEngine/Function.h"

struct inotify_event;

namespace VespermoorEngine {

namespace Containers = Corrade::Containers;
namespace Utility = Corrade::Utility;

/**
 * @brief Tells callbacks which files change in directory trees, on the caller's own thread.
 *
 * @ref watch() registers an interest in a directory with all below it, or in a single file;
 * @ref update(), called from the host's tick, asks the kernel what changed and calls the callbacks.
 * Between two ticks the kernel keeps the changes, up to `fs.inotify.max_queued_events`; any more
 * are lost.
 *
 * Directories that appear in a watched tree are watched with all they hold, even while other
 * processes fill, move, swap and delete them. An entry can be reported more than once on the way.
 *
 * An object belongs to one thread at a time. It takes one inotify instance, and one kernel watch
 * for every directory.
 */
class FileWatch {
public:
    /** @brief What happened to an entry. */
    enum class Event : std::uint8_t {
        /** An entry appeared. Not told apart from @ref Event::Modify on Linux. */
        Add = 0,
        /** An entry was deleted or moved away. */
        Remove = 1,
        /** An entry was written to, made or moved here. */
        Modify = 2,
        /** An entry lost its name to a rename. A @ref Event::Remove on Linux. */
        RenameOld = 3,
        /** An entry got its name from a rename. A @ref Event::Modify on Linux. */
        RenameNew = 4
    };

    /** @brief Listener: gets the absolute path of the changed entry, valid during the call. */
    using Callback = Function<void(Containers::StringView, Event)>;

    /** @brief One registered watch. */
    struct WatchData {
        VESPERMOOR_EDITOR_UTILS_EXPORT WatchData();
        /** @brief Takes everything over from @p other. */
        VESPERMOOR_EDITOR_UTILS_EXPORT WatchData(WatchData&& other) noexcept;
        WatchData(const WatchData&) = delete;
        /** @brief Exchanges all fields with @p other. */
        VESPERMOOR_EDITOR_UTILS_EXPORT WatchData& operator=(WatchData&& other) noexcept;
        WatchData& operator=(const WatchData&) = delete;

        /** @brief Last path component of a single file, empty for a directory. */
        Containers::String file;
        /** @brief Absolute path of the directory itself, or of the directory of the file. */
        Containers::String directory;
        /** @brief Position of the record whose kernel watches serve this one. */
        std::uint64_t directoryIndex;
        /** @brief The id that @ref watch() returned. */
        std::int64_t id;
        /** @brief The listener, possibly empty. */
        Callback callback;
    };

    /** @brief One watched tree; open while its path is not empty. */
    struct DirectoryData {
        /** @brief Open record of the tree at @p path, with nothing below it yet. */
        DirectoryData(int watchDescriptor, Containers::StringView path);

        /** @brief Kernel descriptors of the directories below the root. */
        Containers::Array<std::int32_t> subWatchDescriptors;
        /** @brief Absolute paths, each at the place of its descriptor. */
        Containers::Array<Containers::String> subPaths;
        /** @brief Kernel descriptor of the root, -1 when closed. */
        std::int32_t watchDescriptor;
        /** @brief Absolute path of the root, empty when closed. */
        Containers::String path;
        /** @brief Watches served by this record. */
        std::int32_t refCount;
    };

    /** @brief One delivery on its way to a callback. */
    struct CallbackInfo {
        /** @brief Position of the watch when the delivery was queued. */
        std::uint64_t watchIndex;
        /** @brief Absolute path of the changed entry. */
        Containers::String path;
        /** @brief What happened to it. */
        Event event;
    };

    /** @brief Absolute path of a changed entry, and what happened to it. */
    using Change = Containers::Pair<Containers::String, Event>;

    /**
     * @brief Opens an inotify instance, which programs started from here inherit.
     *
     * If the system refuses one, prints `FileWatch::FileWatch(): Failed to initialize inotify` on
     * `Error` and aborts.
     */
    VESPERMOOR_EDITOR_UTILS_EXPORT FileWatch();

    /** @brief Ends all kernel watches and the instance. */
    VESPERMOOR_EDITOR_UTILS_EXPORT ~FileWatch();

    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    /**
     * @brief Registers @p callback for the directory tree or the single file at @p path.
     *
     * A file has to exist now, and may go and come back later. Its watch also hears files of the
     * same name anywhere below the file's directory, and puts kernel watches on that whole tree.
     *
     * If @p path or an entry below it is a link to a directory, the entries of that directory are
     * heard, and nothing deeper. If the directory is in a watched tree under its real name as well,
     * its changes are reported once, under the name that was found first. That can be the link's:
     * listeners of the real name then miss them until the link is gone. See @ref links.
     *
     * Nested trees share their kernel watches. If @p path is above a tree that is already watched,
     * that tree is registered again as part of it: changes there since the last @ref update() are
     * not heard, and if the kernel refuses @p path, its watches hear nothing from then on. See
     * @ref nested for several such trees.
     *
     * A callback that calls this or @ref remove() must not touch its captures afterwards, since
     * callbacks move and end with the list of watches.
     *
     * Returns an id above 0 that was never used before. Returns 0 if nothing exists at @p path, and
     * if the kernel refuses the directory: the reason and `Directory doesn't exist` are then
     * printed on `Warning`. Refused directories below are left out, with a line each.
     */
    VESPERMOOR_EDITOR_UTILS_EXPORT int watch(Containers::StringView path, Callback callback);

    /**
     * @brief Ends the watch with that id, and the kernel watches of a tree with its last watch.
     *
     * Does nothing if there is no such watch. A callback can remove any watch, its own included,
     * and must not touch its captures afterwards.
     */
    VESPERMOOR_EDITOR_UTILS_EXPORT void remove(int id);

    /**
     * @brief Ends all kernel watches and drops the kernel's unread records.
     *
     * The registered watches stay, and hear changes again after a @ref watch() on their tree.
     */
    VESPERMOOR_EDITOR_UTILS_EXPORT void clear();

    /**
     * @brief Calls the callbacks for everything that changed since the last time.
     *
     * Changes come in the kernel's order; for each of them the callbacks in the order of their
     * watches' slots. Callbacks may call everything here. An exception of a callback is dropped if
     * it derives from `std::exception`; any other goes to the caller, and the remaining deliveries
     * are lost.
     *
     * Returns whether there was anything to deliver, even if no callback was left to take it.
     */
    VESPERMOOR_EDITOR_UTILS_EXPORT bool update();

    /* The documentation for hosts ends here: steps that update() takes follow. */
    /** @cond STEPS */

    /** @brief Number of directories in the open trees; one that is in two of them counts twice. */
    std::size_t directoryCount() const {
        std::size_t count = 0;
        for (const DirectoryData& directory : directories) {
            count += directory.subPaths.size() + !directory.path.isEmpty();
        }
        return count;
    }

    /**
     * @brief Gets the record that serves the absolute path of a directory, making one if needed.
     *
     * Adds a reference to it. Returns its position, -1 if the kernel refuses the
     * directory.
     */
    VESPERMOOR_EDITOR_UTILS_EXPORT int getDirectory(Containers::StringView path);

    /** @brief Removes the watch at @p slot, which has to be one; the last watch takes its place. */
    VESPERMOOR_EDITOR_UTILS_EXPORT void removeInternal(std::uint64_t slot);

    /** @brief Ends the record's kernel watches and closes it for good; its references stay. */
    VESPERMOOR_EDITOR_UTILS_EXPORT void closeDirectoryWatch(DirectoryData& directory);

    /** @brief Queues a delivery for every watch that each of the changes concerns. */
    VESPERMOOR_EDITOR_UTILS_EXPORT void onChangeCallback(Containers::ArrayView<Change> changes);

    /** @brief Reads all records from the kernel, tracks directories, and queues deliveries. */
    VESPERMOOR_EDITOR_UTILS_EXPORT void updateLinux();

    /** @endcond */

private:
    friend struct FileWatchTestAccess;

    struct Drain;

    void readRecords(Drain& drain);
    void takeRecord(const inotify_event& record, Drain& drain);
    bool find(std::int32_t descriptor, Drain& drain);
    void lookUp(std::int32_t descriptor, Drain& drain) const;
    void noteGone(Containers::StringView name, Drain& drain);
    void track(Containers::StringView name, Drain& drain);
    bool takeOutGone(Drain& drain) const;
    void deliver(const CallbackInfo& delivery, std::int32_t firstNewId);

    Containers::Array<WatchData> watches;
    /* Slot of each id, all ones once it is removed. */
    Containers::Array<std::uint64_t> watchIndices;
    std::int32_t nextId;
    Containers::Array<CallbackInfo> pendingCallbacks;
    std::int32_t inotifyFd;
    Containers::Array<char> readBuffer;
    /* Only grows, since records are known by their positions. */
    Containers::Array<DirectoryData> directories;
};

/** @brief Prints the name, as in `FileWatch::Event::Modify`. */
VESPERMOOR_EDITOR_UTILS_EXPORT Utility::Debug& operator<<(Utility::Debug& debug,
                                                          FileWatch::Event event);

} // namespace VespermoorEngine

#endif
