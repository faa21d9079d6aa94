#ifndef Vespermoor_Host_InputPlaces_h
#define Vespermoor_Host_InputPlaces_h

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "Files.h"

namespace VespermoorEngine::Host {

/**
 * @brief Tells which files changed since the last scan, and in which directories they really are.
 *
 * Neither the files nor their directories need to exist.
 */
class InputPlaces {
public:
    /**
     * @brief Tracks @p inputs and @p outputs from now on, and no other files.
     *
     * Resolves the links of the inputs again. Returns whether their @ref directories() changed,
     * which includes a directory replaced by another one at the same path.
     */
    bool track(const std::set<std::string>& inputs, const std::set<std::string>& outputs);

    /**
     * @brief The files that changed since the last call, or since they were first tracked.
     *
     * Costs one system call per tracked file. Also finds files that were saved through another
     * name, that appear at the end of a link, or that become readable. A save that keeps device,
     * inode, size and change time is missed.
     */
    std::set<std::string> takeChanged();

    /** @brief The existing directories of the inputs, as absolute paths without links. */
    std::set<std::string> directories() const;

    /** @brief The inputs that lead to the entry @p path, through links or not. */
    std::set<std::string> inputsAt(const std::string& path) const;

private:
    /* Device, inode, size and change time; all 0 if nothing exists. */
    using Stamp = std::array<std::uint64_t, 6>;

    static Stamp stampOf(const std::string& file);

    std::map<std::string, Stamp> stamps;
    /* The directories of the inputs, and which ones exist there. */
    std::map<std::string, std::optional<Identity>> identities;
    /* The inputs at each absolute path without links. */
    std::map<std::string, std::set<std::string>> inputsByPath;
};

} // namespace VespermoorEngine::Host

#endif
