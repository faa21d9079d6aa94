#ifndef VespermoorEditor_Utils_WatchedDirectories_h
#define VespermoorEditor_Utils_WatchedDirectories_h

/* The directories on which a FileWatch has kernel watches: find, append, take out.

   Data layout. Each watched tree has a record, FileWatch::DirectoryData. It holds the watch
   descriptor and the path of the root, and for the directories below it two parallel arrays:
   descriptors of four bytes and paths, in the order in which walks appended them. The kernel
   identifies a directory by its descriptor only. A directory that has several names through links
   is listed once under each name, with one descriptor; so is one that is in several records.

   Find. Lookup by descriptor is a linear scan over all records. The descriptors of a tree are
   contiguous and compared 16 at a time, so that 100,000 directories take a few microseconds. The
   scan continues after the first match to find further names, unless there are known to be none. In
   that case a guess comes before the scan: a walk places watches in one order and appends entries
   in the opposite order, so two entries are usually as far apart as their descriptors.

   Take out. When a directory leaves, so does everything below it, so each removal is a pass over
   all paths of its record. The kernel reports a deleted tree directory by directory, and a pass for
   each of them would make deletion quadratic. Therefore removals are collected in GoneDirectories
   and taken out together: one pass per drain of the kernel's queue, unless a record requires an
   earlier one. If there are few removals, the pass compares each path with all of them, lengths
   before bytes. If there are many, it looks paths up by hash, but only paths that start with the
   common prefix of the removals.

   A directory can vanish without a record of its name: while it is empty, another directory can be
   renamed onto it. The kernel still queues a record that the watch ended, and the entries are found
   by its descriptor. */

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "VespermoorEditor/Utils/FileWatch.h"

namespace VespermoorEngine::Implementation {

using DirectoryData = FileWatch::DirectoryData;

/* One of the names of a watched directory. */
struct Place {
    /* Position of the record that lists it. */
    std::size_t record;
    Containers::String path;
};

/* Position of the first `value` in `values`, or their count. */
std::size_t findFirst(Containers::ArrayView<const std::int32_t> values, std::int32_t value);

/* The records of a FileWatch and its inotify instance. A view: both must outlive it. */
class WatchedDirectories {
public:
    WatchedDirectories(Containers::Array<DirectoryData>& records, const int inotifyFd)
        : records{records}, inotifyFd{inotifyFd} {}

    /* Calls `visit` in order for each entry that has the descriptor, until it returns false. Passes
       the position of the record, the position in the record, and the path. The root of a record is
       visited first, and its position is one past the last entry. */
    template <class Visit>
    void forEach(const std::int32_t descriptor, const Visit& visit) const {
        for (std::size_t i = 0; i != records.size(); ++i) {
            const DirectoryData& record = records[i];
            const Containers::ArrayView<const std::int32_t> listed = record.subWatchDescriptors;
            if (record.watchDescriptor == descriptor &&
                !visit(i, listed.size(), Containers::StringView{record.path})) {
                return;
            }
            for (std::size_t at = findFirst(listed, descriptor); at != listed.size(); ++at) {
                if (!visit(i, at, Containers::StringView{record.subPaths[at]})) {
                    return;
                }
                at += findFirst(listed.exceptPrefix(at + 1), descriptor);
            }
        }
    }

    /* Whether no directory has several entries. Takes two passes over the descriptors. May return
       false even so, if some descriptors are far apart. */
    bool areUnique() const;

    /* The names of a directory without duplicates, in the order of the entries. */
    Containers::Array<Place> placesOf(std::int32_t descriptor) const;

    /* Descriptor of the directory now at `path`, -1 if none can be watched. Places a kernel watch
       to get the descriptor, and ends that watch if no entry has it. */
    std::int32_t presentDescriptor(Containers::StringView path) const;

    /* Takes out the entries that have one of `descriptors`, whose kernel watches ended. Roots
       stay. */
    void takeOutEnded(Containers::ArrayView<const std::int32_t> descriptors) const;

    bool isListed(std::int32_t descriptor) const;

    Containers::Array<DirectoryData>& records;
    int inotifyFd;
};

/* Places a kernel watch on `path`, or finds the existing one of its directory. Returns the watch
   descriptor, or -1 with `errno` set. */
int addKernelWatch(int inotifyFd, Containers::StringView path);

/* Set of trees, each given by the path of its root. */
class PathTrees {
public:
    struct Tree {
        Containers::String root;
        /* Unknown until the root is looked up. */
        enum : std::uint8_t { Unknown, Present, Absent } state = Unknown;
        /* Whether an entry in it stays. */
        bool isKept = false;
    };

    void add(Containers::String&& root);

    /* A tree that contains `path`, or null. Lives until the next tree is added. */
    Tree* find(Containers::StringView path);

    /* Advances `at` to the next of `paths` that is in a tree, which may be the one at `at`, and
       returns the tree. If there is none, returns null and sets `at` to the number of paths. */
    Tree* findNext(Containers::ArrayView<const Containers::String> paths, std::size_t& at);

    Tree* begin() { return trees.begin(); }
    Tree* end() { return trees.end(); }

private:
    Tree* findHashed(Containers::StringView path);
    void index(std::size_t position);

    Containers::Array<Tree> trees;
    std::size_t shortest = ~std::size_t{};
    /* The remaining members serve lookups among many trees. This is the size of the common prefix
       of all roots. Directories that leave together are mostly in one place, so comparing the
       prefix rejects most other paths. */
    std::size_t commonSize = 0;
    /* The distinct sizes of the roots, in ascending order: only prefixes of these sizes need to be
       hashed. Shorter prefixes are tried first: if one root contains many others, only that one is
       looked up on disk. */
    std::vector<std::size_t> sizes;
    /* Positions in `trees`, by the hash of the root. */
    std::unordered_multimap<std::size_t, std::size_t> positions;
};

/* Directories that have or may have left the tree, and are still listed with everything below. */
class GoneDirectories {
public:
    bool isEmpty() const { return trees.isEmpty(); }

    /* Notes that the directory at `path` is to be taken out of the record. */
    void add(std::size_t record, Containers::String&& path);

    /* Whether the entry of that record is at or below a noted directory. */
    bool contain(std::size_t record, Containers::StringView path);

    /* Takes the noted directories out of their records, and clears the notes. An entry stays if its
       directory is at its path after all, because it came back or arrived before the removal was
       read. Ends kernel watches that no entry needs any longer. */
    void takeOut(const WatchedDirectories& directories);

    /* Rechecks the directories where takeOut() left entries, and returns whether there were any.
       Must be called once the kernel's queue is empty: an entry that stayed can vanish without a
       record while its parent directory is not watched again. */
    bool takeOutKept(const WatchedDirectories& directories);

private:
    struct RecordTrees {
        std::size_t record;
        PathTrees trees;
    };

    PathTrees* treesOf(std::size_t record);

    Containers::Array<RecordTrees> trees;
    Containers::Array<Place> kept;
};

} // namespace VespermoorEngine::Implementation

#endif
