#ifndef Vespermoor_Test_SystemCalls_h
#define Vespermoor_Test_SystemCalls_h

#include <functional>
#include <string>
#include <vector>

/** @brief System functions that replace the C library's in a whole test program. */
namespace VespermoorEngine::Test::SystemCalls {

/**
 * @brief Calls that the libraries make while @p body runs.
 *
 * A lookup of a path is recorded as the path alone, other calls as their name and the path.
 */
std::vector<std::string> callsOf(const std::function<void()>& body);

/** @brief Number of allocations while @p body runs. */
int allocationsOf(const std::function<void()>& body);

/** @brief Called with the path right before and after each kernel watch is placed. */
extern std::function<void(const std::string& path)> aroundKernelWatch;

/** @brief Called once, when a read first finds nothing. */
extern std::function<void()> onEmptyRead;

} // namespace VespermoorEngine::Test::SystemCalls

#endif
