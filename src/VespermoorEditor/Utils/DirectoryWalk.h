#ifndef VespermoorEditor_Utils_DirectoryWalk_h
#define VespermoorEditor_Utils_DirectoryWalk_h

/* Walks that put kernel watches on every directory of a tree while other processes change it.

   The one idea: each directory is watched before it is listed, from the top down. The listing finds
   the entries that exist by then, and the kernel reports those that arrive after the watch is
   placed. Entries that arrive in between are found both ways and reported twice. Lists and reports
   are in the order of the walk's visits, children first.

   If a directory above is swapped, a path can lead to one directory when it is watched and to
   another when it is listed. Everything above the path is already watched, so the kernel reports
   the swap and the new directory is walked again. Entries listed in between do no harm. This relies
   only on the order of the calls: no time stamps or inodes are compared.

   Cost: one inotify_add_watch() per directory in addition to the walk itself. An arriving directory
   is also looked up among the entries listed before the walk, by a scan of descriptors. */

#include "VespermoorEditor/Utils/FileWatch.h"

namespace VespermoorEngine::Implementation {

/* Watches everything below the root of a new record, which lists nothing yet. Links to directories
   are watched but not followed further. Skips directories that the kernel refuses, with a line on
   `Warning`. */
void watchTree(int inotifyFd, FileWatch::DirectoryData& record);

/* Watches the directory at `path`, which arrived in the tree of `record`, and everything below it,
   and appends a change for each file there to `changes`. Follows links; prints a line on `Warning`
   for each directory that the kernel refuses. Does nothing if the path no longer exists. */
void watchArrival(int inotifyFd, FileWatch::DirectoryData& record, Containers::StringView path,
                  Containers::Array<FileWatch::Change>& changes);

} // namespace VespermoorEngine::Implementation

#endif
