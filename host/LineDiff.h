#ifndef Vespermoor_Host_LineDiff_h
#define Vespermoor_Host_LineDiff_h

#include <string>
#include <string_view>

namespace VespermoorEngine::Host {

/**
 * @brief The hunks of a unified diff from @p before to @p after, with three lines of context.
 *
 * Without the two lines that name the files; empty if the texts are equal.
 */
std::string unifiedDiff(std::string_view before, std::string_view after);

} // namespace VespermoorEngine::Host

#endif
