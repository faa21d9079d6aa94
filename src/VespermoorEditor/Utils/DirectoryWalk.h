#ifndef VespermoorEditor_Utils_DirectoryWalk_h
#define VespermoorEditor_Utils_DirectoryWalk_h

/* Walks that put kernel watches on every directory of a tree while other processes change it.

   The one idea: each directory is watched before it is listed, from the top down. What comes into a
   directory after its listing is then reported by the kernel, and what was there before is found by
   the listing; both may see what came in between, which is reported twice. Lists and reports keep
   the order of the walk's visits, children first.

   A path can lead to another directory when it is listed than when it was watched, because a
   directory above was swapped. Above it everything is watched already, so the kernel reports the
   swap, the directory that arrived is walked anew, and what was listed in between does no harm.
   This rests on the order of the calls alone: no time stamp or inode is compared.

   Cost: one inotify_add_watch() for each directory on top of the walk. An arriving directory is
   also looked up among the entries that were listed before the walk, by a scan of descriptors. */

#include "VespermoorEditor/Utils/FileWatch.h"

namespace VespermoorEngine::Implementation {

/* Watches everything below the root of a record that is new and empty. Links to directories are
   watched and not walked through. Directories that the kernel refuses are left out, with a line on
   `Warning`. */
void watchTree(int inotifyFd, FileWatch::DirectoryData& record);

/* Watches the directory at `path`, which came into the tree of `record`, with all it holds, and
   appends a change for each of its files to `changes`. Walks through links; prints a line on
   `Warning` for each directory that the kernel refuses. Does nothing if nothing is there any more.
 */
void watchArrival(int inotifyFd, FileWatch::DirectoryData& record, Containers::StringView path,
                  Containers::Array<FileWatch::Change>& changes);

} // namespace VespermoorEngine::Implementation

#endif
