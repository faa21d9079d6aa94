#ifndef Vespermoor_Host_InputPlaces_h
#define Vespermoor_Host_InputPlaces_h

#include <array>
#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace VespermoorEngine::Host {

/**
 * @brief Where files lie when links are followed, and whether they are as they were.
 *
 * Neither the files nor their directories need exist.
 */
class InputPlaces {
public:
    /**
     * @brief Follows @p files from now on, and no others, to where they lie now.
     *
     * Returns whether @ref directories() are other ones than before, also under the same paths.
     */
    bool follow(const std::set<std::string>& files);

    /**
     * @brief The files that are not as they were at the last call, or when they were first
     * followed.
     *
     * Costs one call of the system for each that is followed. What is saved through another name,
     * appears behind a link or becomes readable shows as well; a save that leaves device, inode,
     * size and time of change as they are does not.
     */
    std::set<std::string> takeChanged();

    /** @brief Those of the files' directories that exist, as absolute paths without links. */
    std::set<std::string> directories() const;

    /** @brief The files that lie at @p path, by whichever links that leads there. */
    std::set<std::string> at(const std::string& path) const;

private:
    /* Device, inode and what tells two of that number apart; all 0 where there is nothing. */
    using Stamp = std::array<std::uint64_t, 6>;

    static Stamp stampOf(const std::string& file);
    static Stamp identityOf(const std::string& directory);

    std::map<std::string, Stamp> stamps;
    /* By their paths without links, as all below. */
    std::map<std::string, Stamp> identities;
    std::map<std::string, std::set<std::string>> places;
};

} // namespace VespermoorEngine::Host

#endif
