#ifndef Vespermoor_Test_Program_h
#define Vespermoor_Test_Program_h

#include "Processes.h"

namespace VespermoorEngine::Test {

/** @brief What a run of the program left behind. */
struct ProgramRun {
    int exitCode;
    std::string output;
    std::string error;
};

/** @brief Runs the real `vespermoor-utils` with @p arguments to its end. */
ProgramRun runProgram(const std::vector<std::string>& arguments);

/** @brief A run of the real `vespermoor-utils` that goes on beside the test. */
class BackgroundProgram : public ChildProcess {
public:
    /** @brief Starts it in @p directory, which gets its output and its errors as files. */
    BackgroundProgram(const std::string& directory, const std::vector<std::string>& arguments);

    /** @brief What it has printed so far. */
    std::string output() const;
    /** @brief What it has printed to standard error so far. */
    std::string error() const;

private:
    std::string directory;
};

} // namespace VespermoorEngine::Test

#endif
