#include "VespermoorEditor/Utils/FileWatch.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <exception>
#include <utility>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Utility/Debug.h>
#include <Corrade/Utility/Path.h>

#include "VespermoorEditor/Utils/System.h"
#include "VespermoorEngine/Contract.h"
#include "VespermoorEngine/Path.h"

namespace VespermoorEngine {

namespace {

using ListFlag = Utility::Path::ListFlag;

constexpr std::uint32_t watchMask = IN_MODIFY | IN_MOVED_FROM | IN_MOVED_TO | IN_CREATE | IN_DELETE;
static_assert(watchMask == 0x3C2);

/* Ten records of the largest size: header, longest name, terminator. */
constexpr std::size_t readSize = 10 * (sizeof(inotify_event) + 255 + 1);
static_assert(readSize == 2720);

constexpr std::uint64_t removedWatch = ~std::uint64_t{};

int addKernelWatch(const int inotifyFd, const Containers::StringView path) {
    return inotify_add_watch(inotifyFd, Containers::String::nullTerminatedView(path).data(),
                             watchMask);
}

bool isInTree(const Containers::StringView path, const Containers::StringView root) {
    return path == root || Path::isParentPath(root, path);
}

bool concerns(const FileWatch::WatchData& watch, const Containers::StringView path,
              const Containers::StringView name) {
    return Path::isParentPath(watch.directory, path) &&
           (watch.file.isEmpty() || watch.file == name);
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

/* Position of the first `value` in `values`, or their count. Compared in blocks, since every record
   of the kernel that names another directory than the one before goes through here. */
std::size_t findFirst(const Containers::ArrayView<const std::int32_t> values,
                      const std::int32_t value) {
    std::size_t i = 0;
#ifdef __SSE2__
    const __m128i wanted = _mm_set1_epi32(value);
    const auto equal = [&](const std::size_t at) {
        const void* const block = values.data() + at;
        return _mm_cmpeq_epi32(_mm_loadu_si128(static_cast<const __m128i*>(block)), wanted);
    };
    for (; i + 16 <= values.size(); i += 16) {
        const __m128i any = _mm_or_si128(_mm_or_si128(equal(i), equal(i + 4)),
                                         _mm_or_si128(equal(i + 8), equal(i + 12)));
        if (_mm_movemask_epi8(any)) {
            break;
        }
    }
#endif
    while (i != values.size() && values[i] != value) {
        ++i;
    }
    return i;
}

/* First component of `path` below `directory`, which has no trailing slash; empty where it does not
   lie there. */
Containers::StringView nameBelow(const Containers::StringView directory,
                                 const Containers::StringView path) {
    /* Most paths are told apart by one byte, without a look at the rest. */
    if (path.size() <= directory.size() || path[directory.size()] != '/' ||
        !path.hasPrefix(directory)) {
        return {};
    }
    const Containers::StringView rest = path.exceptPrefix(directory.size() + 1);
    return rest.prefix(rest.findOr('/', rest.end()).begin());
}

/* Position of `name` in the sorted `names`, or their count. */
std::size_t positionOf(const Containers::ArrayView<const Containers::String> names,
                       const Containers::StringView name) {
    if (name.isEmpty()) {
        return names.size();
    }
    const Containers::String* const found = std::lower_bound(
        names.begin(), names.end(), name,
        [](const Containers::StringView a, const Containers::StringView b) { return a < b; });
    return found != names.end() && *found == name ? found - names.begin() : names.size();
}

/* Time in the unit and with the granularity that file systems use for their stamps. */
timespec fileTime() {
    timespec now;
    clock_gettime(CLOCK_REALTIME_COARSE, &now);
    return now;
}

std::int64_t nanoseconds(const timespec& time) {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

/* Whether a change that left `stamp` may have happened at `since` or later. Stamps are cut to the
   file system's granularity: two seconds at worst where they have no fraction, some clock ticks
   otherwise. */
bool mayFollow(const timespec& stamp, const timespec& since) {
    const std::int64_t granularity = stamp.tv_nsec == 0 ? 2'000'000'000 : 10'000'000;
    return nanoseconds(stamp) + granularity >= nanoseconds(since);
}

/* Whether entries may have come or gone in the directory at `path` at `since` or later. Asks for
   the change of its status, which unlike that of its content nobody can set back. */
bool mayHaveChanged(const Containers::StringView path, const timespec& since) {
    struct stat status;
    return stat(Containers::String::nullTerminatedView(path).data(), &status) == 0 &&
           mayFollow(status.st_ctim, since);
}

/* Whether `path` is a link that may have come to its place at `since` or later. */
bool mayBeNewLink(const Containers::StringView path, const timespec& since) {
    struct stat status;
    return lstat(Containers::String::nullTerminatedView(path).data(), &status) == 0 &&
           S_ISLNK(status.st_mode) && mayFollow(status.st_ctim, since);
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

/* Where a kernel descriptor leads. */
struct FileWatch::Origin {
    /* Never one of the kernel's until found. */
    std::int32_t descriptor = 0;
    std::size_t directory = 0;
    /* Aliases the record that holds it. */
    Containers::StringView path;
};

/* One of the names that a directory is listed by. */
struct FileWatch::Place {
    std::size_t directory;
    Containers::String path;
};

/* One walk over a tree that puts kernel watches on its directories and appends them to a record.

   The kernel watch of a directory comes after its listing, and what appears in between is reported
   by nobody. A directory that may have changed by the time its watch stands is therefore listed
   once more, now under the watch's eyes, and what the walk did not see is walked too. */
class FileWatch::Walk {
public:
    /* Of a new tree, where nothing is reported. */
    Walk(FileWatch& watch, DirectoryData& directory)
        : owner{watch},
          record{directory},
          listFlags{ListFlag::SkipDotAndDotDot | ListFlag::SkipFiles | ListFlag::SkipSpecial},
          visitFlags{VisitFlag::Recursive},
          refusal{"FileWatch::getDirectory(): inotify_add_watch failed for sub path:"} {}

    /* Of a directory that came into a watched tree, whose files are reported to `batch`. */
    Walk(FileWatch& watch, DirectoryData& directory, Containers::Array<Change>& changes)
        : owner{watch},
          record{directory},
          batch{&changes},
          batchBegin{changes.size()},
          listFlags{ListFlag::SkipDotAndDotDot},
          visitFlags{VisitFlag::IncludeRoot | VisitFlag::Recursive | VisitFlag::FollowSymlinks},
          refusal{"FileWatch::updateLinux(): inotify_add_watch failed for sub folder:"} {}

    void run(Containers::StringView start);

private:
    Function<bool(Containers::StringView)> visitor() {
        return {Corrade::DefaultInit, [this](const Containers::StringView path) {
                    visit(path);
                    return true;
                }};
    }

    /* What is known of one name in a directory when it is listed once more. */
    struct Sighting {
        /* -1 where the name is not watched. */
        std::int32_t descriptor = -1;
        /* Whether something below the name is watched. */
        bool passed = false;
        bool reported = false;
        bool refused = false;
    };

    void visit(Containers::StringView path);
    void settle(Containers::StringView start, Containers::StringView directory);
    Containers::Array<Sighting> takeStock(Containers::StringView directory,
                                          Containers::ArrayView<const Containers::String> names);
    bool isSettled(Containers::StringView path, const Sighting& sighting);

    FileWatch& owner;
    DirectoryData& record;
    /* Null where nothing is reported. */
    Containers::Array<Change>* batch = nullptr;
    /* Where what this walk reports begins: an entry of before may have gone and come again. */
    std::size_t batchBegin = 0;
    Utility::Path::ListFlags listFlags;
    VisitFlags visitFlags;
    const char* refusal;
    timespec begin = fileTime();
    /* Watched, but listed before that and perhaps not as they are now. */
    Containers::Array<Containers::String> unsettled;
    Containers::Array<Containers::String> refused;
};

void FileWatch::Walk::run(const Containers::StringView start) {
    visitPath(start, visitor(), listFlags, visitFlags);
    while (!unsettled.isEmpty()) {
        const Containers::Array<Containers::String> round = std::move(unsettled);
        for (const Containers::String& directory : round) {
            settle(start, directory);
        }
    }
}

void FileWatch::Walk::visit(const Containers::StringView path) {
    if (batch && !Utility::Path::isDirectory(path)) {
        arrayAppend(*batch, Change{path, Event::Modify});
        return;
    }
    const int descriptor = addKernelWatch(owner.inotifyFd, path);
    if (descriptor < 0) {
        const char* const reason = std::strerror(errno);
        Utility::Warning{} << refusal << reason;
        arrayAppend(refused, Containers::String{path});
        return;
    }
    /* What went and came back before its records were read is listed still. */
    if (!batch || !owner.isListed(record, descriptor, path)) {
        arrayAppend(record.subWatchDescriptors, descriptor);
        arrayAppend(record.subPaths, Containers::String{path});
    }
    if (mayHaveChanged(path, begin)) {
        arrayAppend(unsettled, Containers::String{path});
    }
}

void FileWatch::Walk::settle(const Containers::StringView start,
                             const Containers::StringView directory) {
    /* It may be gone, and some that are watched are leaves of the walk: links. */
    if (!Utility::Path::isDirectory(directory) ||
        !isExpanded(start.size(), directory, visitFlags)) {
        return;
    }
    const Containers::Optional<Containers::Array<Containers::String>> names =
        Utility::Path::list(directory, listFlags | ListFlag::SortAscending);
    if (!names) {
        return;
    }
    const Containers::Array<Sighting> sightings = takeStock(directory, *names);
    for (std::size_t i = names->size(); i != 0; --i) {
        const Containers::String path = Utility::Path::join(directory, (*names)[i - 1]);
        const Sighting& sighting = sightings[i - 1];
        if (isSettled(path, sighting)) {
            /* What a link led to when the walk went through it may have been something else. */
            if (mayBeNewLink(path, begin)) {
                arrayAppend(unsettled, path);
            }
            continue;
        }
        if (sighting.descriptor != -1 || sighting.passed) {
            owner.prune(record, path);
        }
        /* A link that leads nowhere does not exist for the walk, and is visited all the same. */
        if (!visitPathBelow(start, path, visitor(), listFlags,
                            visitFlags | VisitFlag::IncludeRoot)) {
            visit(path);
        }
    }
}

/* What the walk knows of the sorted `names` in `directory`. Watched directories that are not among
   them went before a record could tell, and are pruned. */
Containers::Array<FileWatch::Walk::Sighting>
FileWatch::Walk::takeStock(const Containers::StringView directory,
                           const Containers::ArrayView<const Containers::String> names) {
    Containers::Array<Sighting> sightings{Corrade::ValueInit, names.size()};
    const auto sightingOf = [&](const Containers::StringView name) -> Sighting* {
        const std::size_t position = positionOf(names, name);
        return position != names.size() ? &sightings[position] : nullptr;
    };
    const auto sightingAt = [&](const Containers::StringView path) -> Sighting* {
        const Containers::StringView name = nameBelow(directory, path);
        return name.end() == path.end() ? sightingOf(name) : nullptr;
    };
    for (const Containers::String& path : refused) {
        if (Sighting* const sighting = sightingAt(path)) {
            sighting->refused = true;
        }
    }
    for (std::size_t i = batchBegin; batch && i != batch->size(); ++i) {
        if (Sighting* const sighting = sightingAt((*batch)[i].first())) {
            sighting->reported = true;
        }
    }
    Containers::Array<Containers::String> gone;
    for (std::size_t i = 0; i != record.subPaths.size(); ++i) {
        const Containers::StringView path = record.subPaths[i];
        const Containers::StringView name = nameBelow(directory, path);
        if (name.isEmpty()) {
            continue;
        }
        Sighting* const sighting = sightingOf(name);
        if (!sighting) {
            arrayAppend(gone, Utility::Path::join(directory, name));
        } else if (name.end() == path.end()) {
            sighting->descriptor = record.subWatchDescriptors[i];
        } else {
            sighting->passed = true;
        }
    }
    for (const Containers::String& path : gone) {
        owner.prune(record, path);
    }
    return sightings;
}

/* Whether what stands at `path` now is what the walk has dealt with: watched and the same
   directory, or refused and refused again. */
bool FileWatch::Walk::isSettled(const Containers::StringView path, const Sighting& sighting) {
    const bool watched = sighting.descriptor != -1;
    if (batch && !Utility::Path::isDirectory(path)) {
        return !watched && !sighting.passed && sighting.reported;
    }
    return (watched || sighting.refused) && owner.presentDescriptor(path) == sighting.descriptor;
}

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
    /* The entry of a call to watch() that failed is 0 as well, hence the look at the id. */
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
        if (isInTree(path, candidate.path)) {
            ++candidate.refCount;
            return int(i);
        }
        if (Path::isParentPath(path, candidate.path)) {
            ++candidate.refCount;
            closeDirectoryWatch(candidate);
            directory = &candidate;
        }
    }
    const int descriptor = addKernelWatch(inotifyFd, path);
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
    Walk{*this, *directory}.run(path);
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
    updateLinux();
    if (pendingCallbacks.isEmpty()) {
        return false;
    }
    const Containers::Array<CallbackInfo> deliveries = std::move(pendingCallbacks);
    const std::int32_t firstNewId = nextId;
    for (const CallbackInfo& delivery : deliveries) {
        deliver(delivery, firstNewId);
    }
    return true;
}

/* Calls the callback at the delivery's slot, unless an earlier callback put a watch there that the
   delivery is not meant for. */
void FileWatch::deliver(const CallbackInfo& delivery, const std::int32_t firstNewId) {
    if (delivery.watchIndex >= watches.size()) {
        Utility::Warning{} << "FileWatch::update(): Callback index" << delivery.watchIndex
                           << "out of range of" << watches.size() << "elements";
        return;
    }
    const WatchData& watch = watches[delivery.watchIndex];
    if (watch.id >= firstNewId ||
        !concerns(watch, delivery.path, Utility::Path::split(delivery.path).second()) ||
        !watch.callback) {
        return;
    }
    try {
        watch.callback(delivery.path, delivery.event);
    } catch (const std::exception&) {
        /* A listener's failure is not the watcher's: the others still hear. */
    }
}

void FileWatch::onChangeCallback(const Containers::ArrayView<Change> changes) {
    for (const Change& change : changes) {
        const Containers::StringView path = change.first();
        const Containers::StringView name = Utility::Path::split(path).second();
        for (std::size_t slot = 0; slot != watches.size(); ++slot) {
            if (concerns(watches[slot], path, name)) {
                arrayAppend(pendingCallbacks, CallbackInfo{slot, path, change.second()});
            }
        }
    }
}

void FileWatch::updateLinux() {
    if (directories.isEmpty()) {
        return;
    }
    Containers::Array<Change> batch;
    Origin origin;
    ssize_t size;
    while ((size = read(inotifyFd, readBuffer.data(), readBuffer.size())) > 0) {
        for (ssize_t offset = 0; offset < size;) {
            const auto& record =
                *reinterpret_cast<const inotify_event*>(readBuffer.data() + offset);
            takeRecord(record, origin, batch);
            offset += ssize_t(sizeof(inotify_event) + record.len);
        }
    }
    if (!batch.isEmpty()) {
        onChangeCallback(batch);
    }
}

/* Neighbouring records mostly name the same descriptor, so `origin` keeps the last answer until a
   list changes. */
void FileWatch::takeRecord(const inotify_event& record, Origin& origin,
                           Containers::Array<Change>& batch) {
    const Containers::Optional<Event> event = eventOf(record.mask);
    if (!event || !findOrigin(record.wd, origin)) {
        return;
    }
    /* Without a length there is no name, not even an empty one. */
    const Containers::StringView name = record.len ? record.name : nullptr;
    Containers::String path = Utility::Path::join(origin.path, name);
    if (record.mask & IN_ISDIR) {
        const Containers::Array<Place> places = placesOf(record.wd);
        origin = {};
        if (*event == Event::Remove) {
            for (const Place& place : places) {
                prune(directories[place.directory], Utility::Path::join(place.path, name));
            }
        } else {
            followAt(places, name, batch);
        }
    }
    arrayAppend(batch, Change{std::move(path), *event});
}

/* Finds the first record and path that stand for `descriptor`; keeps an `origin` that has them. */
bool FileWatch::findOrigin(const std::int32_t descriptor, Origin& origin) {
    if (descriptor == origin.descriptor) {
        return true;
    }
    const auto find = [&] {
        bool severalNames = false;
        origin = {};
        forEachPlace(descriptor, [&](const std::size_t i, const Containers::StringView path) {
            if (origin.descriptor != descriptor) {
                origin = {descriptor, i, path};
            }
            severalNames = severalNames || path != origin.path;
        });
        return severalNames;
    };
    if (find()) {
        /* Among several names are links, which may be gone. */
        for (const Place& place : placesOf(descriptor)) {
            if (presentDescriptor(place.path) != descriptor) {
                prune(directories[place.directory], place.path);
            }
        }
        find();
    }
    return origin.descriptor == descriptor;
}

/* Calls `visit` with the position of the record and the path for each place where `descriptor` is
   listed, in their order. */
template <class Visit>
void FileWatch::forEachPlace(const std::int32_t descriptor, const Visit& visit) const {
    for (std::size_t i = 0; i != directories.size(); ++i) {
        const DirectoryData& directory = directories[i];
        if (directory.watchDescriptor == descriptor) {
            visit(i, directory.path);
        }
        const Containers::ArrayView<const std::int32_t> listed = directory.subWatchDescriptors;
        for (std::size_t at = findFirst(listed, descriptor); at != listed.size(); ++at) {
            visit(i, directory.subPaths[at]);
            at += findFirst(listed.exceptPrefix(at + 1), descriptor);
        }
    }
}

/* The names that the directory of `descriptor` is listed by, each once, the first one first. */
Containers::Array<FileWatch::Place> FileWatch::placesOf(const std::int32_t descriptor) const {
    Containers::Array<Place> places;
    forEachPlace(descriptor, [&](const std::size_t i, const Containers::StringView path) {
        for (const Place& known : places) {
            if (known.path == path) {
                return;
            }
        }
        arrayAppend(places, Place{i, path});
    });
    return places;
}

bool FileWatch::isListed(const DirectoryData& directory, const std::int32_t descriptor,
                         const Containers::StringView path) const {
    bool listed = false;
    forEachPlace(descriptor, [&](const std::size_t i, const Containers::StringView known) {
        listed = listed || (&directories[i] == &directory && known == path);
    });
    return listed;
}

/* Descriptor of the directory at `path`, -1 where none can be watched. Placing the kernel watch
   once more tells; one that nothing lists is ended again. */
std::int32_t FileWatch::presentDescriptor(const Containers::StringView path) {
    if (!Utility::Path::isDirectory(path)) {
        return -1;
    }
    const std::int32_t descriptor = addKernelWatch(inotifyFd, path);
    if (descriptor >= 0 && placesOf(descriptor).isEmpty()) {
        inotify_rm_watch(inotifyFd, descriptor);
    }
    return descriptor;
}

/* Watches the directory `name` that came into the one listed at `places`, under each of its names,
   and reports what it holds under the first. */
void FileWatch::followAt(const Containers::ArrayView<const Place> places,
                         const Containers::StringView name, Containers::Array<Change>& batch) {
    Containers::Array<Change> unheard;
    for (const Place& place : places) {
        Containers::Array<Change>& changes = &place == places.begin() ? batch : unheard;
        Walk{*this, directories[place.directory], changes}.run(
            Utility::Path::join(place.path, name));
    }
}

/* Forgets the directory at `path`, which went away, and all below it. What is there again, or was
   put there before the record of its going came up, stays. */
void FileWatch::prune(DirectoryData& directory, const Containers::StringView path) {
    Containers::Array<std::int32_t> gone;
    std::size_t kept = 0;
    for (std::size_t i = 0; i != directory.subPaths.size(); ++i) {
        const std::int32_t descriptor = directory.subWatchDescriptors[i];
        if (isInTree(directory.subPaths[i], path) &&
            presentDescriptor(directory.subPaths[i]) != descriptor) {
            arrayAppend(gone, descriptor);
            continue;
        }
        if (kept != i) {
            directory.subPaths[kept] = std::move(directory.subPaths[i]);
            directory.subWatchDescriptors[kept] = descriptor;
        }
        ++kept;
    }
    arrayRemoveSuffix(directory.subPaths, gone.size());
    arrayRemoveSuffix(directory.subWatchDescriptors, gone.size());
    for (const std::int32_t descriptor : gone) {
        releaseDescriptor(descriptor);
    }
}

/* Ends a kernel watch unless a directory is listed that it still serves. That is one which moved
   within the watched trees, was found in its new place by a walk, and whose record of leaving the
   old one came up only now: ending the watch would leave it unwatched. */
void FileWatch::releaseDescriptor(const std::int32_t descriptor) {
    for (const Place& place : placesOf(descriptor)) {
        if (presentDescriptor(place.path) == descriptor) {
            return;
        }
    }
    inotify_rm_watch(inotifyFd, descriptor);
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
