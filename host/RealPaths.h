#ifndef Vespermoor_Host_RealPaths_h
#define Vespermoor_Host_RealPaths_h

#include <string>
#include <unordered_map>

namespace VespermoorEngine::Host {

/**
 * @brief Absolute paths without links, for files that may not exist yet.
 *
 * Every path and directory is resolved once and cached, so use an object for one pass over many
 * files only.
 */
class RealPaths {
public:
    /** @brief Real path of the file at @p path, with all links followed. */
    const std::string& file(const std::string& path);

    /**
     * @brief Real path of the entry @p path itself: only the links in its directory are followed.
     */
    std::string entry(const std::string& path);

private:
    std::unordered_map<std::string, std::string> files;
    std::unordered_map<std::string, std::string> directories;
};

} // namespace VespermoorEngine::Host

#endif
