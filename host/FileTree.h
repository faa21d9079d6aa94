#ifndef Vespermoor_Host_FileTree_h
#define Vespermoor_Host_FileTree_h

#include <functional>
#include <string>

namespace VespermoorEngine::Host {

/**
 * @brief Calls @p visit for each regular file below the directory @p path, in the order of names.
 *
 * Hidden ones count, links are not followed. If @p path is no directory, or a link to none, it is
 * visited itself, whatever it is. A directory that cannot be read is a call of @p report with its
 * path and the system's reason, and the others are visited all the same.
 */
void visitFiles(const std::string& path, const std::function<void(const std::string&)>& visit,
                const std::function<void(const std::string&, const std::string&)>& report);

} // namespace VespermoorEngine::Host

#endif
