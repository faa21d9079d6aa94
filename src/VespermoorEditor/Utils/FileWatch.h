#ifndef VespermoorEditor_Utils_FileWatch_h
#define VespermoorEditor_Utils_FileWatch_h

#include <cstddef>
#include <cstdint>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/Pair.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>

#include "VespermoorEditor/Utils/visibility.h"
#include "VespermoorEngine/Corrade.h"
#include "VespermoorEngine/Function.h"

struct inotify_event;

namespace VespermoorEngine {

/**
 * @brief Tells callbacks which files change in directory trees, on the caller's own thread.
 *
 * @ref watch() registers a directory tree or a single file; @ref update(), called from the host's
 * tick, reads the changes from the kernel and calls the callbacks. Between two ticks the kernel
 * queues the changes, up to `fs.inotify.max_queued_events`; any more are lost.
 *
 * Directories that appear in a watched tree are watched with their content, even while other
 * processes fill, move, swap and delete them. An entry can be reported more than once.
 *
 * An object belongs to one thread at a time. It takes one inotify instance, and one kernel watch
 * per directory.
 */
class FileWatch {
public:
    /** @brief What happened to an entry. */
    enum class Event : std::uint8_t {
        /** An entry appeared. On Linux this is reported as @ref Event::Modify. */
        Add = 0,
        /** An entry was deleted or moved away. */
        Remove = 1,
        /** An entry was written to, created or moved here. */
        Modify = 2,
        /** The old name of a renamed entry. On Linux this is reported as @ref Event::Remove. */
        RenameOld = 3,
        /** The new name of a renamed entry. On Linux this is reported as @ref Event::Modify. */
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
        /** @brief Absolute paths, at the same positions as their descriptors. */
        Containers::Array<Containers::String> subPaths;
        /** @brief Kernel descriptor of the root, -1 when closed. */
        std::int32_t watchDescriptor;
        /** @brief Absolute path of the root, empty when closed. */
        Containers::String path;
        /** @brief Watches served by this record. */
        std::int32_t refCount;
    };

    /** @brief One queued call of a callback. */
    struct CallbackInfo {
        /** @brief Position of the watch when the delivery was queued. */
        std::uint64_t watchIndex;
        /** @brief Absolute path of the changed entry. */
        Containers::String path;
        /** @brief The kind of change. */
        Event event;
    };

    /** @brief Absolute path of a changed entry, and the kind of change. */
    using Change = Containers::Pair<Containers::String, Event>;

    /**
     * @brief Opens an inotify instance, which child processes inherit.
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
     * A file must exist now; later it may be deleted and come back. Its watch also reports files of
     * the same name anywhere below the file's directory, and puts kernel watches on that whole
     * tree.
     *
     * If @p path or an entry below it is a link to a directory, changes of the entries of that
     * directory are reported, but nothing deeper. If the directory is also in a watched tree under
     * its real name, its changes are reported once, under the name that was found first. That can
     * be the link's: listeners of the real name then miss them until the link is removed. See @ref
     * links.
     *
     * Nested trees share their kernel watches. If @p path is above a tree that is already watched,
     * that tree is registered again as part of it. Changes there since the last @ref update() are
     * lost. If the kernel refuses @p path, the watches of that tree report nothing from then on.
     * See @ref nested for several such trees.
     *
     * A callback that calls this function or @ref remove() must not touch its captures afterwards,
     * since the call can move or destroy the callback.
     *
     * Returns an id above 0 that was never used before. Returns 0 if nothing exists at @p path.
     * Also returns 0 if the kernel refuses the directory, and prints the reason and `Directory
     * doesn't exist` on `Warning`. Skips refused directories below it, with a line for each.
     */
    VESPERMOOR_EDITOR_UTILS_EXPORT int watch(Containers::StringView path, Callback callback);

    /**
     * @brief Ends the watch with that id. The last watch of a tree also ends its kernel watches.
     *
     * Does nothing if there is no such watch. A callback can remove any watch, its own included,
     * and must not touch its captures afterwards.
     */
    VESPERMOOR_EDITOR_UTILS_EXPORT void remove(int id);

    /**
     * @brief Ends all kernel watches and drops the kernel's unread records.
     *
     * The registered watches stay, and report changes again after a @ref watch() on their tree.
     */
    VESPERMOOR_EDITOR_UTILS_EXPORT void clear();

    /**
     * @brief Calls the callbacks for everything that changed since the last call.
     *
     * Changes are delivered in the kernel's order, each one to the callbacks in the order of their
     * watches' slots. Callbacks may call every function of this class. Drops an exception of a
     * callback if it derives from `std::exception`; any other reaches the caller, and the remaining
     * deliveries are lost.
     *
     * Returns whether there was anything to deliver, even if no callback was left to receive it.
     */
    VESPERMOOR_EDITOR_UTILS_EXPORT bool update();

    /* End of the documentation for hosts: the steps of update() follow. */
    /** @cond STEPS */

    /** @brief Number of directories in the open trees; a directory in two trees counts twice. */
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

    /** @brief Removes the watch at @p slot, which must exist; the last watch takes its place. */
    VESPERMOOR_EDITOR_UTILS_EXPORT void removeInternal(std::uint64_t slot);

    /** @brief Ends the record's kernel watches and closes it for good; its references stay. */
    VESPERMOOR_EDITOR_UTILS_EXPORT void closeDirectoryWatch(DirectoryData& directory);

    /**
     * @brief Queues a delivery for every watch that each of the changes concerns.
     *
     * Takes the paths out of @p changes.
     */
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
    bool lookWhereGuessed(std::int32_t descriptor, Drain& drain) const;
    void noteGone(Containers::StringView name, Drain& drain);
    void track(Containers::StringView name, Drain& drain);
    void noteAbsentNames(std::int32_t descriptor, Drain& drain) const;
    bool takeOutGone(Drain& drain) const;
    bool takeOutKept(Drain& drain) const;
    bool isDeliverable(const CallbackInfo& delivery, std::int32_t firstNewId) const;
    void deliver(const CallbackInfo& delivery);

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
