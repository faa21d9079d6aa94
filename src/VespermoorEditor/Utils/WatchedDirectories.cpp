#include "VespermoorEditor/Utils/WatchedDirectories.h"

#include <algorithm>
#include <bitset>
#include <cstring>
#include <functional>
#include <string_view>
#include <unordered_set>
#include <utility>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <sys/inotify.h>

#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Utility/Path.h>

namespace VespermoorEngine::Implementation {

namespace {

constexpr std::uint32_t watchMask = IN_MODIFY | IN_MOVED_FROM | IN_MOVED_TO | IN_CREATE | IN_DELETE;
static_assert(watchMask == 0x3C2);

/* From this number on, removals are looked up by hash. Fewer are compared one by one, which costs
   less than hashing every path of the record. */
constexpr std::size_t manyFrom = 10;

std::size_t hash(const Containers::StringView path) {
    return std::hash<std::string_view>{}({path.data(), path.size()});
}

/* Whether `path` is at or below `root`, which has no trailing slash. Paths of one tree share a long
   prefix, and each is allocated separately. Therefore the length and the last bytes of the root are
   compared first: they distinguish most paths with one cache line. */
bool isInTree(const Containers::StringView path, const Containers::StringView root) {
    const std::size_t size = root.size();
    if (path.size() < size || (path.size() != size && path[size] != '/')) {
        return false;
    }
    constexpr std::size_t tail = 16;
    if (size >= tail &&
        std::memcmp(path.data() + size - tail, root.data() + size - tail, tail) != 0) {
        return false;
    }
    return path.hasPrefix(root);
}

/* Positions of the entries of a record to take out, in ascending order. */
Containers::Array<std::size_t> goneEntries(const DirectoryData& record, PathTrees& trees,
                                           const WatchedDirectories& directories) {
    Containers::Array<std::size_t> gone;
    const Containers::ArrayView<const Containers::String> paths = record.subPaths;
    for (std::size_t i = 0; PathTrees::Tree* const tree = trees.findNext(paths, i); ++i) {
        if (tree->state == PathTrees::Tree::Unknown) {
            tree->state = Utility::Path::isDirectory(tree->root) ? PathTrees::Tree::Present
                                                                 : PathTrees::Tree::Absent;
        }
        if (tree->state == PathTrees::Tree::Absent ||
            directories.presentDescriptor(paths[i]) != record.subWatchDescriptors[i]) {
            arrayAppend(gone, i);
        } else {
            tree->isKept = true;
        }
    }
    return gone;
}

/* Removes the entries at the ascending `positions`, and appends their descriptors to `dropped`. */
void removeEntries(DirectoryData& record, const Containers::ArrayView<const std::size_t> positions,
                   Containers::Array<std::int32_t>& dropped) {
    if (positions.isEmpty()) {
        return;
    }
    const std::size_t count = record.subPaths.size();
    Containers::String* keptPath = record.subPaths.data() + positions.front();
    std::int32_t* keptDescriptor = record.subWatchDescriptors.data() + positions.front();
    for (std::size_t i = 0; i != positions.size(); ++i) {
        arrayAppend(dropped, record.subWatchDescriptors[positions[i]]);
        const std::size_t from = positions[i] + 1;
        const std::size_t to = i + 1 == positions.size() ? count : positions[i + 1];
        keptPath = std::move(record.subPaths.data() + from, record.subPaths.data() + to, keptPath);
        keptDescriptor = std::copy(record.subWatchDescriptors.data() + from,
                                   record.subWatchDescriptors.data() + to, keptDescriptor);
    }
    arrayRemoveSuffix(record.subPaths, positions.size());
    arrayRemoveSuffix(record.subWatchDescriptors, positions.size());
}

/* Whether the kernel watch still serves a listed directory. This happens if a directory moved
   within the watched trees and was found in its new place before its removal from the old one was
   read. */
bool isServing(const WatchedDirectories& directories, const std::int32_t descriptor) {
    for (const Place& place : directories.placesOf(descriptor)) {
        if (directories.presentDescriptor(place.path) == descriptor) {
            return true;
        }
    }
    return false;
}

/* Those of `descriptors` that some entry has. If there are many, finds them in one pass. */
std::unordered_set<std::int32_t>
listedOf(const WatchedDirectories& directories,
         const Containers::ArrayView<const std::int32_t> descriptors) {
    std::unordered_set<std::int32_t> listed;
    if (descriptors.size() < manyFrom) {
        for (const std::int32_t descriptor : descriptors) {
            if (directories.isListed(descriptor)) {
                listed.insert(descriptor);
            }
        }
        return listed;
    }
    const std::unordered_set<std::int32_t> wanted{descriptors.begin(), descriptors.end()};
    /* The low bits of the descriptor distinguish most entries. */
    std::bitset<1 << 16> lowBits;
    for (const std::int32_t descriptor : descriptors) {
        lowBits.set(std::uint32_t(descriptor) % lowBits.size());
    }
    const auto note = [&](const std::int32_t descriptor) {
        if (lowBits[std::uint32_t(descriptor) % lowBits.size()] && wanted.count(descriptor)) {
            listed.insert(descriptor);
        }
    };
    for (const DirectoryData& record : directories.records) {
        note(record.watchDescriptor);
        for (const std::int32_t descriptor : record.subWatchDescriptors) {
            note(descriptor);
        }
    }
    return listed;
}

/* Ends the kernel watches of removed entries, unless they also serve other entries. */
void endKernelWatches(const WatchedDirectories& directories,
                      const Containers::ArrayView<const std::int32_t> dropped) {
    const std::unordered_set<std::int32_t> listed = listedOf(directories, dropped);
    for (const std::int32_t descriptor : dropped) {
        if (!listed.count(descriptor) || !isServing(directories, descriptor)) {
            inotify_rm_watch(directories.inotifyFd, descriptor);
        }
    }
}

} // namespace

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

int addKernelWatch(const int inotifyFd, const Containers::StringView path) {
    return inotify_add_watch(inotifyFd, Containers::String::nullTerminatedView(path).data(),
                             watchMask);
}

Containers::Array<Place> WatchedDirectories::placesOf(const std::int32_t descriptor) const {
    Containers::Array<Place> places;
    forEach(descriptor, [&](const std::size_t record, std::size_t,
                            const Containers::StringView path) {
        const bool isKnown = std::any_of(places.begin(), places.end(),
                                         [&](const Place& known) { return known.path == path; });
        if (!isKnown) {
            arrayAppend(places, Place{record, path});
        }
        return true;
    });
    return places;
}

bool WatchedDirectories::isListed(const std::int32_t descriptor) const {
    for (const DirectoryData& record : records) {
        if (record.watchDescriptor == descriptor ||
            findFirst(record.subWatchDescriptors, descriptor) !=
                record.subWatchDescriptors.size()) {
            return true;
        }
    }
    return false;
}

bool WatchedDirectories::areUnique() const {
    std::bitset<1 << 18> seen;
    const auto isNew = [&](const std::int32_t descriptor) {
        const std::size_t bit = std::uint32_t(descriptor) % seen.size();
        const bool wasSeen = seen[bit];
        seen.set(bit);
        return !wasSeen;
    };
    return std::all_of(records.begin(), records.end(), [&](const DirectoryData& record) {
        return (record.watchDescriptor < 0 || isNew(record.watchDescriptor)) &&
               std::all_of(record.subWatchDescriptors.begin(), record.subWatchDescriptors.end(),
                           isNew);
    });
}

void WatchedDirectories::takeOutEnded(
    const Containers::ArrayView<const std::int32_t> descriptors) const {
    const std::unordered_set<std::int32_t> listed = listedOf(*this, descriptors);
    if (listed.empty()) {
        return;
    }
    Containers::Array<std::int32_t> dropped;
    for (DirectoryData& record : records) {
        Containers::Array<std::size_t> ended;
        for (std::size_t i = 0; i != record.subWatchDescriptors.size(); ++i) {
            if (listed.count(record.subWatchDescriptors[i])) {
                arrayAppend(ended, i);
            }
        }
        removeEntries(record, ended, dropped);
    }
}

std::int32_t WatchedDirectories::presentDescriptor(const Containers::StringView path) const {
    if (!Utility::Path::isDirectory(path)) {
        return -1;
    }
    const std::int32_t descriptor = addKernelWatch(inotifyFd, path);
    if (descriptor >= 0 && !isListed(descriptor)) {
        inotify_rm_watch(inotifyFd, descriptor);
    }
    return descriptor;
}

void PathTrees::add(Containers::String&& root) {
    shortest = std::min(shortest, root.size());
    arrayAppend(trees, Tree{std::move(root)});
    if (trees.size() == manyFrom) {
        commonSize = shortest;
        for (std::size_t i = 0; i != trees.size(); ++i) {
            index(i);
        }
    } else if (trees.size() > manyFrom) {
        index(trees.size() - 1);
    }
}

void PathTrees::index(const std::size_t position) {
    const Containers::StringView root = trees[position].root;
    const Containers::StringView first = trees.front().root;
    if (root.size() < commonSize || std::memcmp(first.data(), root.data(), commonSize) != 0) {
        const std::size_t size = std::min(commonSize, root.size());
        commonSize =
            std::mismatch(first.begin(), first.begin() + size, root.begin()).first - first.begin();
    }
    positions.emplace(hash(root), position);
    const auto place = std::lower_bound(sizes.begin(), sizes.end(), root.size());
    if (place == sizes.end() || *place != root.size()) {
        sizes.insert(place, root.size());
    }
}

PathTrees::Tree* PathTrees::find(const Containers::StringView path) {
    if (path.size() < shortest) {
        return nullptr;
    }
    if (trees.size() >= manyFrom) {
        return findHashed(path);
    }
    for (Tree& tree : trees) {
        if (isInTree(path, tree.root)) {
            return &tree;
        }
    }
    return nullptr;
}

PathTrees::Tree* PathTrees::findNext(const Containers::ArrayView<const Containers::String> paths,
                                     std::size_t& at) {
    if (trees.size() == 1) {
        /* A separate case, so that a single removal is a tight loop. */
        const Containers::StringView root = trees.front().root;
        while (at != paths.size() && !isInTree(paths[at], root)) {
            ++at;
        }
        return at == paths.size() ? nullptr : trees.begin();
    }
    for (; at != paths.size(); ++at) {
        if (Tree* const tree = find(paths[at])) {
            return tree;
        }
    }
    return nullptr;
}

PathTrees::Tree* PathTrees::findHashed(const Containers::StringView path) {
    if (std::memcmp(path.data(), trees.front().root.data(), commonSize) != 0) {
        return nullptr;
    }
    for (const std::size_t size : sizes) {
        if (size > path.size() || (size != path.size() && path[size] != '/')) {
            continue;
        }
        const Containers::StringView root = path.prefix(size);
        const auto [begin, end] = positions.equal_range(hash(root));
        for (auto found = begin; found != end; ++found) {
            if (trees[found->second].root == root) {
                return &trees[found->second];
            }
        }
    }
    return nullptr;
}

PathTrees* GoneDirectories::treesOf(const std::size_t record) {
    for (RecordTrees& candidate : trees) {
        if (candidate.record == record) {
            return &candidate.trees;
        }
    }
    return nullptr;
}

void GoneDirectories::add(const std::size_t record, Containers::String&& path) {
    PathTrees* known = treesOf(record);
    if (!known) {
        known = &arrayAppend(trees, RecordTrees{record, {}}).trees;
    }
    known->add(std::move(path));
}

bool GoneDirectories::contain(const std::size_t record, const Containers::StringView path) {
    PathTrees* const known = treesOf(record);
    return known && known->find(path);
}

void GoneDirectories::takeOut(const WatchedDirectories& directories) {
    Containers::Array<std::int32_t> dropped;
    for (RecordTrees& gone : trees) {
        DirectoryData& record = directories.records[gone.record];
        removeEntries(record, goneEntries(record, gone.trees, directories), dropped);
        for (PathTrees::Tree& tree : gone.trees) {
            if (tree.isKept) {
                arrayAppend(kept, Place{gone.record, std::move(tree.root)});
            }
        }
    }
    trees = {};
    endKernelWatches(directories, dropped);
}

bool GoneDirectories::takeOutKept(const WatchedDirectories& directories) {
    if (kept.isEmpty()) {
        return false;
    }
    for (Place& place : Containers::Array<Place>{std::move(kept)}) {
        add(place.record, std::move(place.path));
    }
    takeOut(directories);
    kept = {};
    return true;
}

} // namespace VespermoorEngine::Implementation
