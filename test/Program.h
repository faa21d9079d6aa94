#ifndef Vespermoor_Test_Program_h
#define Vespermoor_Test_Program_h

#include <string>
#include <vector>

#include <sys/types.h>

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
class BackgroundProgram {
public:
    /** @brief Starts it in @p directory, which gets its output and its errors as files. */
    BackgroundProgram(const std::string& directory, const std::vector<std::string>& arguments);

    /** @brief Ends the process where @ref stop() did not. */
    ~BackgroundProgram();

    BackgroundProgram(const BackgroundProgram&) = delete;
    BackgroundProgram& operator=(const BackgroundProgram&) = delete;

    /** @brief What it has printed so far. */
    std::string output() const;
    /** @brief What it has printed to standard error so far. */
    std::string error() const;

    /**
     * @brief Sends @p signals and returns the exit code, or -1 where a signal ended it.
     *
     * Fails the test where it does not end.
     */
    int stop(const std::vector<int>& signals);

private:
    std::string outputPath;
    std::string errorPath;
    pid_t process;
};

} // namespace VespermoorEngine::Test

#endif
