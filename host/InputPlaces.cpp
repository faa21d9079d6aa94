#include "InputPlaces.h"

#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include "RealPaths.h"

namespace VespermoorEngine::Host {

bool InputPlaces::track(const std::set<std::string>& inputs, const std::set<std::string>& outputs) {
    const auto lastStamps = std::exchange(stamps, {});
    const auto lastIdentities = std::exchange(identities, {});
    const auto addStamp = [&](const std::string& file) {
        const auto last = lastStamps.find(file);
        stamps.emplace(file, last != lastStamps.end() ? last->second : stampOf(file));
    };
    inputsByPath.clear();
    RealPaths paths;
    for (const std::string& file : inputs) {
        addStamp(file);
        const std::string path = paths.file(file);
        inputsByPath[path].insert(file);
        const auto [identity, isNew] = identities.try_emplace(parentOf(path));
        if (isNew) {
            identity->second = identityOf(identity->first);
        }
    }
    for (const std::string& file : outputs) {
        addStamp(file);
    }
    return identities != lastIdentities;
}

/* The change time: the modification time ignores permissions and can be set back. */
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
        if (identity) {
            paths.insert(path);
        }
    }
    return paths;
}

std::set<std::string> InputPlaces::inputsAt(const std::string& path) const {
    const auto found = inputsByPath.find(RealPaths{}.entry(path));
    return found != inputsByPath.end() ? found->second : std::set<std::string>{};
}

} // namespace VespermoorEngine::Host
