#include "VespermoorEditor/Utils/FileWatch.h"

/* The registry of watches, and the pump from the kernel's records to callbacks.

   Data layout. `watches` is dense: a watch is known by its slot, and a removal moves the last watch
   into the freed slot. `watchIndices` maps ids, which are never reused, to slots. A watch refers to
   the record of its tree by position, and records are only appended. WatchedDirectories.h describes
   what a record lists, DirectoryWalk.h how trees get their kernel watches.

   Pump. One update() reads all queued records into a batch of changed paths, in the kernel's order.
   On the way it watches directories that arrive and notes directories that leave. Then it queues a
   delivery for each watch that a change concerns, and finally calls the callbacks.

   Cost. A quiet tick is one read(). A record costs one allocation for the path, which is moved to
   the last listener, and a scan of `watches`. It also costs a scan for its descriptor, unless the
   previous record had the same one. */

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <utility>

#include <sys/inotify.h>
#include <unistd.h>

#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/Path.h>

#include "VespermoorEditor/Utils/DirectoryWalk.h"
#include "VespermoorEditor/Utils/WatchedDirectories.h"
#include "VespermoorEngine/Contract.h"
#include "VespermoorEngine/Path.h"

namespace VespermoorEngine {

namespace {

using Implementation::GoneDirectories;
using Implementation::Place;
using Implementation::WatchedDirectories;

/* Ten records of the largest size: header, longest name, terminator. */
constexpr std::size_t readSize = 10 * (sizeof(inotify_event) + 255 + 1);
static_assert(readSize == 2720);

constexpr std::uint64_t removedWatch = ~std::uint64_t{};

/* Whether the last component of `path` is `name`. */
bool hasName(const Containers::StringView path, const Containers::StringView name) {
    return path.size() > name.size() && path.hasSuffix(name) &&
           path[path.size() - name.size() - 1] == '/';
}

bool concerns(const FileWatch::WatchData& watch, const Containers::StringView path) {
    return Path::isParentPath(watch.directory, path) &&
           (watch.file.isEmpty() || hasName(path, watch.file));
}

Containers::Optional<FileWatch::Event> eventOf(const std::uint32_t mask) {
    if (mask & (IN_MODIFY | IN_CREATE)) {
        return FileWatch::Event::Modify;
    }
    if (mask & IN_DELETE) {
        return FileWatch::Event::Remove;
    }
    if (mask & IN_MOVED_TO) {
        return FileWatch::Event::Modify;
    }
    if (mask & IN_MOVED_FROM) {
        return FileWatch::Event::Remove;
    }
    return {};
}

/* Like `Utility::Path::join()`, but with a single allocation. */
Containers::String entryPath(Containers::StringView directory, const Containers::StringView name) {
    if (directory.hasSuffix('/')) {
        directory = directory.exceptSuffix(1);
    }
    Containers::String path{Corrade::NoInit, directory.size() + 1 + name.size()};
    char* const separator = std::copy(directory.begin(), directory.end(), path.begin());
    *separator = '/';
    std::copy(name.begin(), name.end(), separator + 1);
    return path;
}

} // namespace

FileWatch::WatchData::WatchData() : directoryIndex{0}, id{0} {}

FileWatch::WatchData::WatchData(WatchData&& other) noexcept = default;

FileWatch::WatchData& FileWatch::WatchData::operator=(WatchData&& other) noexcept {
    std::swap(file, other.file);
    std::swap(directory, other.directory);
    std::swap(directoryIndex, other.directoryIndex);
    std::swap(id, other.id);
    callback = std::move(other.callback);
    return *this;
}

FileWatch::DirectoryData::DirectoryData(const int watchDescriptor,
                                        const Containers::StringView path)
    : watchDescriptor{watchDescriptor}, path{path}, refCount{1} {}

/* The state of one drain of the kernel's queue. */
struct FileWatch::Drain {
    Drain(Containers::Array<DirectoryData>& records, const int inotifyFd)
        : directories{records, inotifyFd} {}

    void found(const std::int32_t descriptor, const std::size_t record, const std::size_t position,
               const Containers::StringView path) {
        this->descriptor = lastDescriptor = descriptor;
        this->record = record;
        this->position = position;
        this->path = path;
    }

    WatchedDirectories directories;
    Containers::Array<Change> batch;
    GoneDirectories gone;
    /* Descriptors of kernel watches that ended. */
    Containers::Array<std::int32_t> ended;
    /* Lookups since a walk last added entries. After many, `areUnique` is computed: whether the
       first entry of a descriptor is known to be the only one. */
    std::size_t lookups = 0;
    bool areUnique = false;
    /* Cached lookup: the last descriptor, 0 for none, and the first entry that has it. `path` is a
       view of that entry and is valid until the lists change. */
    std::int32_t descriptor = 0;
    bool hasSeveralNames = false;
    std::size_t record = 0;
    Containers::StringView path;
    /* The last entry found. Even after the lists change, the next one is likely to be near it. */
    std::int32_t lastDescriptor = 0;
    std::size_t position = 0;
};

FileWatch::FileWatch() : nextId{1}, inotifyFd{-1} {
    arrayAppend(watchIndices, std::uint64_t{0});
    arrayReserve(directories, 64);
    inotifyFd = inotify_init1(IN_NONBLOCK);
    if (inotifyFd < 0) {
        breakContract("FileWatch::FileWatch(): Failed to initialize inotify");
    }
    readBuffer = Containers::Array<char>{Corrade::ValueInit, readSize};
}

FileWatch::~FileWatch() {
    clear();
    close(inotifyFd);
}

int FileWatch::watch(const Containers::StringView path, Callback callback) {
    const std::int32_t id = nextId++;
    const Containers::String absolute = Path::absolute(path);
    if (!Utility::Path::exists(absolute)) {
        return 0;
    }
    Containers::StringView directory = absolute;
    Containers::StringView file;
    if (!Utility::Path::isDirectory(absolute)) {
        const auto parts = Utility::Path::split(absolute);
        directory = parts.first();
        file = parts.second();
    }
    const int directoryIndex = getDirectory(directory);
    if (directoryIndex < 0) {
        Utility::Warning{} << "Directory doesn't exist";
        return 0;
    }
    arrayResize(watchIndices, Corrade::ValueInit,
                std::max(std::size_t(id) + 1, watchIndices.size()));
    watchIndices[id] = watches.size();
    WatchData& added = arrayAppend(watches, WatchData{});
    added.file = file;
    added.directory = directory;
    added.directoryIndex = directoryIndex;
    added.id = id;
    added.callback = std::move(callback);
    return id;
}

void FileWatch::remove(const int id) {
    if (id <= 0 || id >= nextId || std::size_t(id) >= watchIndices.size()) {
        return;
    }
    const auto slot = static_cast<std::int32_t>(watchIndices[id]);
    /* A failed call to watch() also has an index of 0, so the id is compared too. */
    if (slot < 0 || std::size_t(slot) >= watches.size() || watches[slot].id != id) {
        return;
    }
    removeInternal(slot);
}

void FileWatch::removeInternal(const std::uint64_t slot) {
    watchIndices[watches[slot].id] = removedWatch;
    const std::uint64_t directoryIndex = watches[slot].directoryIndex;
    if (slot != watches.size() - 1) {
        std::swap(watches[slot], watches.back());
        watchIndices[watches[slot].id] = slot;
    }
    arrayRemoveSuffix(watches, 1);
    DirectoryData& directory = directories[directoryIndex];
    if (--directory.refCount == 0) {
        closeDirectoryWatch(directory);
    }
}

void FileWatch::clear() {
    for (DirectoryData& directory : directories) {
        closeDirectoryWatch(directory);
    }
    while (read(inotifyFd, readBuffer.data(), readBuffer.size()) > 0) {
    }
}

int FileWatch::getDirectory(const Containers::StringView path) {
    DirectoryData* directory = nullptr;
    for (std::size_t i = 0; i != directories.size() && !directory; ++i) {
        DirectoryData& candidate = directories[i];
        if (candidate.path.isEmpty()) {
            continue;
        }
        if (path == candidate.path || Path::isParentPath(candidate.path, path)) {
            ++candidate.refCount;
            return int(i);
        }
        if (Path::isParentPath(path, candidate.path)) {
            ++candidate.refCount;
            closeDirectoryWatch(candidate);
            directory = &candidate;
        }
    }
    const int descriptor = Implementation::addKernelWatch(inotifyFd, path);
    if (descriptor < 0) {
        const char* const reason = std::strerror(errno);
        Utility::Warning{} << "FileWatch::getDirectory(): inotify_add_watch failed:" << reason;
        return -1;
    }
    if (directory) {
        directory->watchDescriptor = descriptor;
        directory->path = path;
    } else {
        directory = &arrayAppend(directories, DirectoryData{descriptor, path});
    }
    Implementation::watchTree(inotifyFd, *directory);
    return int(directory - directories.data());
}

void FileWatch::closeDirectoryWatch(DirectoryData& directory) {
    for (const std::int32_t descriptor : directory.subWatchDescriptors) {
        inotify_rm_watch(inotifyFd, descriptor);
    }
    directory.subWatchDescriptors = {};
    directory.subPaths = {};
    inotify_rm_watch(inotifyFd, directory.watchDescriptor);
    directory.watchDescriptor = -1;
    directory.path = {};
}

bool FileWatch::update() {
    /* Deliveries that a direct call of updateLinux() queued may be older than a change. */
    bool isChanged = !pendingCallbacks.isEmpty();
    updateLinux();
    if (pendingCallbacks.isEmpty()) {
        return false;
    }
    const Containers::Array<CallbackInfo> deliveries = std::move(pendingCallbacks);
    const std::size_t count = watches.size();
    const std::int32_t firstNewId = nextId;
    for (const CallbackInfo& delivery : deliveries) {
        /* A removal changes the count, unless a watch was added as well, which changes `nextId`. */
        isChanged = isChanged || watches.size() != count || nextId != firstNewId;
        if (!isChanged || isDeliverable(delivery, firstNewId)) {
            deliver(delivery);
        }
    }
    return true;
}

/* Whether the delivery still concerns the watch in its slot, after the watches may have changed. */
bool FileWatch::isDeliverable(const CallbackInfo& delivery, const std::int32_t firstNewId) const {
    if (delivery.watchIndex >= watches.size()) {
        Utility::Warning{} << "FileWatch::update(): Callback index" << delivery.watchIndex
                           << "out of range of" << watches.size() << "elements";
        return false;
    }
    const WatchData& watch = watches[delivery.watchIndex];
    return watch.id < firstNewId && concerns(watch, delivery.path);
}

void FileWatch::deliver(const CallbackInfo& delivery) {
    const Callback& callback = watches[delivery.watchIndex].callback;
    if (!callback) {
        return;
    }
    try {
        callback(delivery.path, delivery.event);
    } catch (const std::exception&) {
        /* An exception of one listener must not affect the others. */
    }
}

void FileWatch::onChangeCallback(const Containers::ArrayView<Change> changes) {
    arrayReserve(pendingCallbacks, pendingCallbacks.size() + changes.size());
    for (Change& change : changes) {
        /* The last watch gets the path itself; earlier ones get copies. */
        Containers::Optional<std::size_t> last;
        for (std::size_t slot = 0; slot != watches.size(); ++slot) {
            if (!concerns(watches[slot], change.first())) {
                continue;
            }
            if (last) {
                arrayAppend(pendingCallbacks, CallbackInfo{*last, change.first(), change.second()});
            }
            last = slot;
        }
        if (last) {
            arrayAppend(pendingCallbacks,
                        CallbackInfo{*last, std::move(change.first()), change.second()});
        }
    }
}

void FileWatch::updateLinux() {
    if (directories.isEmpty()) {
        return;
    }
    Drain drain{directories, inotifyFd};
    do {
        readRecords(drain);
        /* Each kernel watch that ends queues a record; these must not fill the queue. */
    } while (takeOutGone(drain) || takeOutKept(drain));
    drain.directories.takeOutEnded(drain.ended);
    if (!drain.batch.isEmpty()) {
        onChangeCallback(drain.batch);
    }
}

void FileWatch::readRecords(Drain& drain) {
    ssize_t size;
    while ((size = read(inotifyFd, readBuffer.data(), readBuffer.size())) > 0) {
        for (ssize_t offset = 0; offset < size;) {
            const auto& record =
                *reinterpret_cast<const inotify_event*>(readBuffer.data() + offset);
            takeRecord(record, drain);
            offset += ssize_t(sizeof(inotify_event) + record.len);
        }
    }
}

void FileWatch::takeRecord(const inotify_event& record, Drain& drain) {
    if (record.mask & IN_IGNORED) {
        arrayAppend(drain.ended, record.wd);
        return;
    }
    const Containers::Optional<Event> event = eventOf(record.mask);
    if (!event || !find(record.wd, drain)) {
        return;
    }
    /* If the length is 0, there is no name, not even an empty one. */
    const Containers::StringView name = record.len ? record.name : nullptr;
    Containers::String path = entryPath(drain.path, name);
    if (record.mask & IN_ISDIR) {
        if (*event == Event::Remove) {
            noteGone(name, drain);
        } else {
            track(name, drain);
        }
    }
    arrayAppend(drain.batch, Change{std::move(path), *event});
}

/* Finds the first entry that has `descriptor`. Consecutive kernel records usually have the same
   descriptor, so the result is cached until a list changes. */
bool FileWatch::find(const std::int32_t descriptor, Drain& drain) {
    if (descriptor == drain.descriptor) {
        return true;
    }
    lookUp(descriptor, drain);
    if (drain.hasSeveralNames) {
        noteAbsentNames(descriptor, drain);
    }
    if (drain.descriptor == descriptor && drain.gone.contain(drain.record, drain.path)) {
        takeOutGone(drain);
        lookUp(descriptor, drain);
    }
    return drain.descriptor == descriptor;
}

/* If a directory has several names, some are links, which may have been removed. Notes the names
   that no longer lead to it. If none does, a directory above it has moved and may come back without
   a record, so all names stay. */
void FileWatch::noteAbsentNames(const std::int32_t descriptor, Drain& drain) const {
    Containers::Array<Place> absent;
    bool isPresent = false;
    for (Place& place : drain.directories.placesOf(descriptor)) {
        if (drain.directories.presentDescriptor(place.path) == descriptor) {
            isPresent = true;
        } else if (place.path != directories[place.record].path) {
            arrayAppend(absent, std::move(place));
        }
    }
    if (!isPresent) {
        return;
    }
    for (Place& place : absent) {
        drain.gone.add(place.record, std::move(place.path));
    }
}

void FileWatch::lookUp(const std::int32_t descriptor, Drain& drain) const {
    constexpr std::size_t many = 64;
    if (++drain.lookups == many) {
        drain.areUnique = drain.directories.areUnique();
    }
    drain.descriptor = 0;
    drain.hasSeveralNames = false;
    if (drain.areUnique && lookWhereGuessed(descriptor, drain)) {
        return;
    }
    drain.directories.forEach(descriptor, [&](const std::size_t record, const std::size_t position,
                                              const Containers::StringView path) {
        if (drain.descriptor == descriptor) {
            drain.hasSeveralNames = path != drain.path;
            return !drain.hasSeveralNames;
        }
        drain.found(descriptor, record, position, path);
        return !drain.areUnique;
    });
}

/* Tries the entry that is as far from the last one as their descriptors are apart. */
bool FileWatch::lookWhereGuessed(const std::int32_t descriptor, Drain& drain) const {
    const DirectoryData& record = directories[drain.record];
    const std::size_t position = drain.position + (drain.lastDescriptor - descriptor);
    if (position >= record.subPaths.size() || record.subWatchDescriptors[position] != descriptor) {
        return false;
    }
    drain.found(descriptor, drain.record, position, record.subPaths[position]);
    return true;
}

/* Notes that the subdirectory `name` of the directory looked up is gone, under each name of that
   directory. */
void FileWatch::noteGone(const Containers::StringView name, Drain& drain) {
    if (!drain.hasSeveralNames) {
        drain.gone.add(drain.record, entryPath(drain.path, name));
        return;
    }
    for (const Place& place : drain.directories.placesOf(drain.descriptor)) {
        drain.gone.add(place.record, entryPath(place.path, name));
    }
}

/* Watches the subdirectory `name`, which arrived in the directory looked up, under each name of
   that directory. Reports its content under the first name only. */
void FileWatch::track(const Containers::StringView name, Drain& drain) {
    const std::int32_t descriptor = drain.descriptor;
    takeOutGone(drain);
    Containers::Array<Change> unreported;
    Containers::Array<Change>* changes = &drain.batch;
    for (const Place& place : drain.directories.placesOf(descriptor)) {
        Implementation::watchArrival(inotifyFd, directories[place.record],
                                     entryPath(place.path, name), *changes);
        changes = &unreported;
    }
    drain.descriptor = 0;
    drain.lookups = 0;
    drain.areUnique = false;
}

/* Returns whether any directory was taken out. */
bool FileWatch::takeOutGone(Drain& drain) const {
    if (drain.gone.isEmpty()) {
        return false;
    }
    drain.gone.takeOut(drain.directories);
    drain.descriptor = 0;
    return true;
}

/* Returns whether there were any directories to recheck. */
bool FileWatch::takeOutKept(Drain& drain) const {
    drain.descriptor = 0;
    return drain.gone.takeOutKept(drain.directories);
}

Utility::Debug& operator<<(Utility::Debug& debug, const FileWatch::Event event) {
    switch (event) {
    case FileWatch::Event::Add:
        return debug << "FileWatch::Event::Add";
    case FileWatch::Event::Remove:
        return debug << "FileWatch::Event::Remove";
    case FileWatch::Event::Modify:
        return debug << "FileWatch::Event::Modify";
    case FileWatch::Event::RenameOld:
        return debug << "FileWatch::Event::RenameOld";
    case FileWatch::Event::RenameNew:
        return debug << "FileWatch::Event::RenameNew";
    }
    return debug << "FileWatch::Event::Invalid()";
}

} // namespace VespermoorEngine
