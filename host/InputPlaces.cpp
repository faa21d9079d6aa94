#include "InputPlaces.h"

#include <algorithm>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>

#include <Corrade/Containers/StringStl.h>
#include <VespermoorEngine/Path.h>

#include "Files.h"

namespace VespermoorEngine::Host {

namespace fs = std::filesystem;

InputPlaces::InputPlaces(const std::set<std::string>& files) {
    std::error_code missing;
    for (const std::string& file : files) {
        for (const fs::path& path : linkChain(file)) {
            const std::string parent = parentOf(path);
            Directory& directory = visited[parent];
            directory = {fs::canonical(parent, missing), identify(parent)};
            if (!directory.path.empty()) {
                places[directory.path / path.filename()].insert(file);
            }
        }
    }
}

InputPlaces::Identity InputPlaces::identify(const std::string& directory) {
    struct statx status {};
    if (statx(AT_FDCWD, directory.data(), 0, STATX_INO | STATX_BTIME, &status) != 0) {
        return {};
    }
    return {status.stx_dev_major, status.stx_dev_minor, status.stx_ino, status.stx_btime.tv_sec,
            status.stx_btime.tv_nsec};
}

bool InputPlaces::stand() const {
    return std::all_of(visited.begin(), visited.end(), [](const auto& directory) {
        return identify(directory.first) == directory.second.identity;
    });
}

bool InputPlaces::differFrom(const InputPlaces& before) const {
    return std::any_of(visited.begin(), visited.end(), [&](const auto& directory) {
        const auto found = before.visited.find(directory.first);
        return found != before.visited.end() && !(found->second == directory.second);
    });
}

std::set<std::string> InputPlaces::directories() const {
    std::set<std::string> paths;
    for (const auto& [path, directory] : visited) {
        if (!directory.path.empty()) {
            paths.insert(directory.path);
        }
    }
    return paths;
}

/* A directory that is renamed takes with it what lies below. */
std::set<std::string> InputPlaces::at(const std::string& path) const {
    std::error_code missing;
    const std::string changed = fs::canonical(parentOf(path), missing) / fs::path{path}.filename();
    std::set<std::string> files;
    for (const auto& [place, filesThere] : places) {
        if (place == changed || Path::isParentPath(changed, place)) {
            files.insert(filesThere.begin(), filesThere.end());
        }
    }
    return files;
}

} // namespace VespermoorEngine::Host
