#ifndef Vespermoor_Test_FileWatchState_h
#define Vespermoor_Test_FileWatchState_h

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include <sys/inotify.h>

#include "Support.h"
#include "VespermoorEditor/Utils/FileWatch.h"

namespace VespermoorEngine {

/** @brief What tests see of the inside of a @ref FileWatch. */
struct FileWatchTestAccess {
    static auto& watches(FileWatch& watch) { return watch.watches; }
    static auto& watchIndices(FileWatch& watch) { return watch.watchIndices; }
    static auto& pendingCallbacks(FileWatch& watch) { return watch.pendingCallbacks; }
    static auto& directories(FileWatch& watch) { return watch.directories; }
    static int inotifyFd(FileWatch& watch) { return watch.inotifyFd; }
};

namespace Test {

using State = FileWatchTestAccess;

/** @brief Descriptors of the kernel watches that @p watch holds, as the kernel tells them. */
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

/** @brief Paths listed in the open records, sorted, each once. */
inline std::set<std::string> listedDirectories(FileWatch& watch) {
    std::set<std::string> paths;
    for (const FileWatch::DirectoryData& directory : State::directories(watch)) {
        if (!directory.path.isEmpty()) {
            paths.insert(text(directory.path));
        }
        for (const Containers::String& path : directory.subPaths) {
            paths.insert(text(path));
        }
    }
    return paths;
}

/** @brief The directories at and below @p root, links left aside. */
inline std::set<std::string> directoriesBelow(const std::string& root) {
    namespace fs = std::filesystem;
    std::set<std::string> paths{root};
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator{root}) {
        if (!entry.is_symlink() && entry.is_directory()) {
            paths.insert(entry.path());
        }
    }
    return paths;
}

/**
 * @brief Expects that the kernel watches exactly the directories at and below @p root, and that the
 * lists hold them and no others.
 *
 * Placing a watch once more gives the descriptor of the present one, or one that was not there.
 */
inline void expectWatchesExactly(FileWatch& watch, const std::string& root) {
    const std::set<std::string> paths = directoriesBelow(root);
    EXPECT_EQ(listedDirectories(watch), paths);
    const std::set<int> present = kernelWatches(watch);
    std::set<int> wanted;
    for (const std::string& path : paths) {
        wanted.insert(inotify_add_watch(State::inotifyFd(watch), path.data(), 0x3C2));
    }
    EXPECT_EQ(present, wanted);
}

/** @brief Waits until the file system's clock has left the last change beside @p path behind. */
inline void waitUntilQuiet(const std::string& path) {
    namespace fs = std::filesystem;
    const std::string probe = path + ".probe";
    const auto stamp = [&probe] {
        writeFile(probe, "");
        return fs::last_write_time(probe);
    };
    const fs::file_time_type changed = stamp();
    waitUntil([&] { return stamp() - changed > std::chrono::milliseconds{50}; });
    fs::remove(probe);
}

/** @brief Changes that callbacks were told of, as `<label> Modify <path below the root>`. */
class Heard {
public:
    explicit Heard(const TemporaryDirectory& root) : prefix{root / ""} {}

    /** @brief Listener that notes what it hears under @p label; the object has to outlive it. */
    FileWatch::Callback listener(const char* const label = "") {
        return {Corrade::DefaultInit,
                [this, label](const Containers::StringView path, const FileWatch::Event event) {
                    note(label, path, event);
                }};
    }

    void note(const std::string& label, const Containers::StringView path,
              const FileWatch::Event event) {
        std::ostringstream name;
        Corrade::Utility::Debug{&name, Corrade::Utility::Debug::Flag::NoNewlineAtTheEnd} << event;
        const std::string full = text(path);
        EXPECT_EQ(full.rfind(prefix, 0), 0u) << full;
        changes.push_back((label.empty() ? "" : label + ' ') +
                          name.str().substr(std::string{"FileWatch::Event::"}.size()) + ' ' +
                          full.substr(prefix.size()));
    }

    /** @brief Takes what was heard so far. */
    std::vector<std::string> take() { return std::exchange(changes, {}); }

private:
    std::string prefix;
    std::vector<std::string> changes;
};

} // namespace Test
} // namespace VespermoorEngine

#endif
