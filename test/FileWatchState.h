#ifndef Vespermoor_Test_FileWatchState_h
#define Vespermoor_Test_FileWatchState_h

#include <fstream>
#include <set>

#include <sys/inotify.h>

#include "Support.h"
#include "VespermoorEditor/Utils/FileWatch.h"

namespace VespermoorEngine {

/** @brief The private members of a @ref FileWatch that tests check. */
struct FileWatchTestAccess {
    static auto& watches(FileWatch& watch) { return watch.watches; }
    static auto& watchIndices(FileWatch& watch) { return watch.watchIndices; }
    static auto& directories(FileWatch& watch) { return watch.directories; }
    static int inotifyFd(FileWatch& watch) { return watch.inotifyFd; }
};

namespace Test {

using State = FileWatchTestAccess;
using Paths = std::set<std::string>;

/** @brief Descriptors of the kernel watches that @p watch holds, according to the kernel. */
inline std::set<int> kernelWatches(FileWatch& watch) {
    std::set<int> descriptors;
    std::ifstream info{"/proc/self/fdinfo/" + std::to_string(State::inotifyFd(watch))};
    for (std::string line; std::getline(info, line);) {
        if (line.rfind("inotify wd:", 0) == 0) {
            descriptors.insert(std::stoi(line.substr(11), nullptr, 16));
            EXPECT_NE(line.find(" mask:3c2 "), std::string::npos) << line;
        }
    }
    return descriptors;
}

/** @brief Paths listed in the open records. Expects that no record lists one twice. */
inline Paths listedDirectories(FileWatch& watch) {
    Paths paths;
    for (const FileWatch::DirectoryData& directory : State::directories(watch)) {
        Paths own;
        if (!directory.path.isEmpty()) {
            own.insert(text(directory.path));
        }
        for (const Containers::String& path : directory.subPaths) {
            EXPECT_TRUE(own.insert(text(path)).second) << text(path) << " is listed twice";
        }
        paths.merge(own);
    }
    return paths;
}

/** @brief The directories at and below @p root, without links. */
inline Paths directoriesBelow(const std::string& root) {
    Paths paths{root};
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator{root}) {
        if (!entry.is_symlink() && entry.is_directory()) {
            paths.insert(entry.path());
        }
    }
    return paths;
}

/**
 * @brief Expects that exactly the directories at and below @p root are listed and watched.
 *
 * Placing a kernel watch again returns the descriptor of the existing one, or a new one if there
 * was none.
 */
inline void expectWatchesExactly(FileWatch& watch, const std::string& root) {
    const Paths paths = directoriesBelow(root);
    EXPECT_EQ(listedDirectories(watch), paths);
    const std::set<int> present = kernelWatches(watch);
    std::set<int> wanted;
    for (const std::string& path : paths) {
        wanted.insert(inotify_add_watch(State::inotifyFd(watch), path.data(), 0x3C2));
    }
    EXPECT_EQ(present, wanted);
}

} // namespace Test
} // namespace VespermoorEngine

#endif
