#ifndef Vespermoor_Test_Program_h
#define Vespermoor_Test_Program_h

#include <string>
#include <vector>

namespace VespermoorEngine::Test {

/** @brief What a run of the program left behind. */
struct ProgramRun {
    int exitCode;
    std::string output;
    std::string error;
};

/** @brief Runs the real `vespermoor-utils` with @p arguments to its end. */
ProgramRun runProgram(const std::vector<std::string>& arguments);

} // namespace VespermoorEngine::Test

#endif
