#include "InputPlaces.h"

#include <filesystem>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include "Files.h"

namespace VespermoorEngine::Host {

namespace fs = std::filesystem;

bool InputPlaces::follow(const std::set<std::string>& files) {
    const auto stampsBefore = std::exchange(stamps, {});
    const auto identitiesBefore = std::exchange(identities, {});
    places.clear();
    for (const std::string& file : files) {
        const auto known = stampsBefore.find(file);
        stamps[file] = known != stampsBefore.end() ? known->second : stampOf(file);
        std::error_code lost;
        const fs::path place = fs::weakly_canonical(fs::absolute(file, lost), lost);
        if (!lost) {
            places[place].insert(file);
            identities[parentOf(place)] = identityOf(parentOf(place));
        }
    }
    return identities != identitiesBefore;
}

/* The time of change and not that of the content, which says nothing of permissions and can be set
   back. */
InputPlaces::Stamp InputPlaces::stampOf(const std::string& file) {
    struct statx status {};
    if (statx(AT_FDCWD, file.data(), 0, STATX_INO | STATX_SIZE | STATX_CTIME, &status) != 0) {
        return {};
    }
    return {status.stx_dev_major,
            status.stx_dev_minor,
            status.stx_ino,
            status.stx_size,
            std::uint64_t(status.stx_ctime.tv_sec),
            status.stx_ctime.tv_nsec};
}

/* The inode alone would not do, since the next directory often gets that of the one deleted last.
 */
InputPlaces::Stamp InputPlaces::identityOf(const std::string& directory) {
    struct statx status {};
    if (statx(AT_FDCWD, directory.data(), 0, STATX_INO | STATX_BTIME, &status) != 0) {
        return {};
    }
    return {status.stx_dev_major, status.stx_dev_minor, status.stx_ino,
            std::uint64_t(status.stx_btime.tv_sec), status.stx_btime.tv_nsec};
}

std::set<std::string> InputPlaces::takeChanged() {
    std::set<std::string> changed;
    for (auto& [file, stamp] : stamps) {
        const Stamp now = stampOf(file);
        if (now != stamp) {
            stamp = now;
            changed.insert(file);
        }
    }
    return changed;
}

std::set<std::string> InputPlaces::directories() const {
    std::set<std::string> paths;
    for (const auto& [path, identity] : identities) {
        if (identity != Stamp{}) {
            paths.insert(path);
        }
    }
    return paths;
}

std::set<std::string> InputPlaces::at(const std::string& path) const {
    std::error_code lost;
    const fs::path place = fs::canonical(parentOf(path), lost) / fs::path{path}.filename();
    const auto found = places.find(place);
    return found != places.end() ? found->second : std::set<std::string>{};
}

} // namespace VespermoorEngine::Host
