#ifndef Vespermoor_Host_DependencyFile_h
#define Vespermoor_Host_DependencyFile_h

#include <set>
#include <string>

namespace VespermoorEngine::Host {

/**
 * @brief A rule for make and ninja: @p targets depend on @p inputs.
 *
 * Every input is also a target without dependencies, so that make goes on if one was deleted.
 */
std::string dependencyRule(const std::set<std::string>& targets,
                           const std::set<std::string>& inputs);

} // namespace VespermoorEngine::Host

#endif
