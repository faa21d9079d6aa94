#ifndef VespermoorEditor_Utils_DirectoryWalk_h
#define VespermoorEditor_Utils_DirectoryWalk_h

/* Walks that put kernel watches on every directory of a tree while other processes change it.

   The one idea: each directory is watched before it is listed, from the top down. The listing finds
   the entries that existed before, and the kernel reports those that arrive after it. Entries that
   arrive in between are found by both and reported twice. Lists and reports keep the order of the
   walk's visits, children first.

   A path can lead to another directory when it is listed than when it was watched, because a
   directory above was swapped. Everything above it is already watched, so the kernel reports the
   swap, the new directory is walked again, and entries listed in between do no harm. This relies
   only on the order of the calls: no time stamp or inode is compared.

   Cost: one inotify_add_watch() for each directory on top of the walk. An arriving directory is
   also looked up among the entries that were listed before the walk, by a scan of descriptors. */

#include "VespermoorEditor/Utils/FileWatch.h"

namespace VespermoorEngine::Implementation {

/* Watches everything below the root of a record that is new and empty. Links to directories are
   watched but not followed further. Skips directories that the kernel refuses, with a line on
   `Warning`. */
void watchTree(int inotifyFd, FileWatch::DirectoryData& record);

/* Watches the directory at `path`, which arrived in the tree of `record`, and everything below it,
   and appends a change for each file there to `changes`. Follows links; prints a line on `Warning`
   for each directory that the kernel refuses. Does nothing if the path no longer exists. */
void watchArrival(int inotifyFd, FileWatch::DirectoryData& record, Containers::StringView path,
                  Containers::Array<FileWatch::Change>& changes);

} // namespace VespermoorEngine::Implementation

#endif
