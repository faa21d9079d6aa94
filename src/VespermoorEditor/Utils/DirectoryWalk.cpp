#include "VespermoorEditor/Utils/DirectoryWalk.h"

#include <cerrno>
#include <cstring>

#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Utility/Debug.h>

#include "VespermoorEditor/Utils/System.h"
#include "VespermoorEditor/Utils/WatchedDirectories.h"

namespace VespermoorEngine::Implementation {

namespace {

using ListFlag = Utility::Path::ListFlag;

class DirectoryWalk {
public:
    /* Without `changes`, reports no file and watches every directory that the walk finds. */
    DirectoryWalk(const int inotifyFd, DirectoryData& record, const char* const refusal,
                  Containers::Array<FileWatch::Change>* const changes)
        : inotifyFd{inotifyFd},
          record{record},
          refusal{refusal},
          changes{changes},
          knownCount{record.subPaths.size()} {}

    void run(Containers::StringView start, Utility::Path::ListFlags listFlags,
             VisitFlags visitFlags);

private:
    static constexpr int isFile = 0;

    void enter(Containers::StringView path, bool isDirectory);
    void leave(Containers::StringView path);
    bool isKnown(std::int32_t descriptor, Containers::StringView path) const;

    int inotifyFd;
    DirectoryData& record;
    const char* refusal;
    Containers::Array<FileWatch::Change>* changes;
    /* Entries that were listed before the walk. */
    std::size_t knownCount;
    /* For each path that was entered and not left yet: its watch descriptor, the negative error if
       it was refused, or `isFile`. */
    Containers::Array<int> entered;
};

void DirectoryWalk::run(const Containers::StringView start,
                        const Utility::Path::ListFlags listFlags, const VisitFlags visitFlags) {
    const auto onEnter = [this](const Containers::StringView path, const bool isDirectory) {
        enter(path, isDirectory);
    };
    const auto onLeave = [this](const Containers::StringView path) {
        leave(path);
        return true;
    };
    visitPath(start, {Corrade::DefaultInit, onEnter}, {Corrade::DefaultInit, onLeave}, listFlags,
              visitFlags);
}

void DirectoryWalk::enter(const Containers::StringView path, const bool isDirectory) {
    if (changes && !isDirectory) {
        arrayAppend(entered, isFile);
        return;
    }
    const int descriptor = addKernelWatch(inotifyFd, path);
    arrayAppend(entered, descriptor < 0 ? -errno : descriptor);
}

void DirectoryWalk::leave(const Containers::StringView path) {
    const int descriptor = entered.back();
    arrayRemoveSuffix(entered, 1);
    if (descriptor == isFile) {
        arrayAppend(*changes, FileWatch::Change{path, FileWatch::Event::Modify});
    } else if (descriptor < 0) {
        Utility::Warning{} << refusal << std::strerror(-descriptor);
    } else if (!isKnown(descriptor, path)) {
        arrayAppend(record.subWatchDescriptors, descriptor);
        arrayAppend(record.subPaths, Containers::String{path});
    }
}

/* A directory that was moved away and back before its records were read is still listed. */
bool DirectoryWalk::isKnown(const std::int32_t descriptor,
                            const Containers::StringView path) const {
    const auto known = record.subWatchDescriptors.prefix(knownCount);
    for (std::size_t i = findFirst(known, descriptor); i != known.size(); ++i) {
        if (record.subPaths[i] == path) {
            return true;
        }
        i += findFirst(known.exceptPrefix(i + 1), descriptor);
    }
    return false;
}

} // namespace

void watchTree(const int inotifyFd, DirectoryData& record) {
    DirectoryWalk walk{
        inotifyFd, record,
        "FileWatch::getDirectory(): inotify_add_watch failed for sub path:", nullptr};
    walk.run(record.path, ListFlag::SkipDotAndDotDot | ListFlag::SkipFiles | ListFlag::SkipSpecial,
             VisitFlag::Recursive);
}

void watchArrival(const int inotifyFd, DirectoryData& record, const Containers::StringView path,
                  Containers::Array<FileWatch::Change>& changes) {
    DirectoryWalk walk{
        inotifyFd, record,
        "FileWatch::updateLinux(): inotify_add_watch failed for sub folder:", &changes};
    walk.run(path, ListFlag::SkipDotAndDotDot,
             VisitFlag::IncludeRoot | VisitFlag::Recursive | VisitFlag::FollowSymlinks);
}

} // namespace VespermoorEngine::Implementation
