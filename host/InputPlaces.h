#ifndef Vespermoor_Host_InputPlaces_h
#define Vespermoor_Host_InputPlaces_h

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <tuple>

namespace VespermoorEngine::Host {

/**
 * @brief Where files lie when links are followed, and what has to be watched to hear of them.
 *
 * A file that is a link has a place of its own, and one where the link leads. Neither the files nor
 * their directories need exist. An object keeps how things stood when it was made.
 */
class InputPlaces {
public:
    InputPlaces() = default;

    /** @brief Looks up where @p files lie. */
    explicit InputPlaces(const std::set<std::string>& files);

    /** @brief Whether every directory is the one that stood there. Costs one call for each. */
    bool stand() const;

    /** @brief Whether a directory that is part of both is another one than in @p before. */
    bool differFrom(const InputPlaces& before) const;

    /** @brief Those of the directories that exist, as absolute paths without links. */
    std::set<std::string> directories() const;

    /** @brief The files with a place at @p path or below it, by whichever links that leads there.
     */
    std::set<std::string> at(const std::string& path) const;

    bool operator==(const InputPlaces& other) const {
        return visited == other.visited && places == other.places;
    }

private:
    /* Device, inode and time of birth; all 0 where there is no directory. The number alone would
       not do, since the next directory often gets that of the one deleted last. */
    using Identity =
        std::tuple<std::uint32_t, std::uint32_t, std::uint64_t, std::int64_t, std::uint32_t>;

    struct Directory {
        /* Without links. */
        std::string path;
        Identity identity;

        bool operator==(const Directory& other) const {
            return path == other.path && identity == other.identity;
        }
    };

    static Identity identify(const std::string& directory);

    /* By the path that leads there. */
    std::map<std::string, Directory> visited;
    /* The files at each place. */
    std::map<std::string, std::set<std::string>> places;
};

} // namespace VespermoorEngine::Host

#endif
