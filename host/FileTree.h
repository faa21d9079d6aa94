#ifndef Vespermoor_Host_FileTree_h
#define Vespermoor_Host_FileTree_h

#include <functional>
#include <string>

namespace VespermoorEngine::Host {

/**
 * @brief Calls @p visit for each regular file below the directory @p path, in the order of names.
 *
 * Includes hidden files and follows no links below @p path. If @p path is not a directory or a link
 * to one, it is visited itself, whatever its kind. For a directory that cannot be read, calls @p
 * report with its path and the system's reason, and goes on.
 */
void visitFiles(const std::string& path, const std::function<void(const std::string&)>& visit,
                const std::function<void(const std::string&, const std::string&)>& report);

} // namespace VespermoorEngine::Host

#endif
