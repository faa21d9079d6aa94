#ifndef Vespermoor_Host_RealPaths_h
#define Vespermoor_Host_RealPaths_h

#include <map>
#include <string>

namespace VespermoorEngine::Host {

/**
 * @brief Absolute paths without links, for files that may not exist yet.
 *
 * Every directory is resolved once and cached, so use an object for one pass over many files only.
 */
class RealPaths {
public:
    /** @brief Where a read or a write of @p path ends, with all links followed. */
    std::string file(const std::string& path);

    /** @brief Where the entry @p path itself is: only the links in its directory are followed. */
    std::string entry(const std::string& path);

private:
    std::map<std::string, std::string> directories;
};

} // namespace VespermoorEngine::Host

#endif
