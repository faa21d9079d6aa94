#ifndef Vespermoor_Test_Program_h
#define Vespermoor_Test_Program_h

#include "Processes.h"

namespace VespermoorEngine::Test {

/** @brief Exit code and output of a run of the program. */
struct ProgramRun {
    int exitCode;
    std::string output;
    std::string error;
};

/** @brief Runs the real `vespermoor-utils` with @p arguments to its end. */
ProgramRun runProgram(const std::vector<std::string>& arguments);

/** @brief A run of the real `vespermoor-utils` in the background. */
class BackgroundProgram : public ChildProcess {
public:
    /** @brief Starts it in @p directory, with its output and its errors in files there. */
    BackgroundProgram(const std::string& directory, const std::vector<std::string>& arguments);

    /** @brief Its output so far. */
    std::string output() const { return readFile(directory + "/program.output"); }
    /** @brief Its output to standard error so far. */
    std::string error() const { return readFile(directory + "/program.error"); }

private:
    std::string directory;
};

} // namespace VespermoorEngine::Test

#endif
