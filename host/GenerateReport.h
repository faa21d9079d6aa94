#ifndef Vespermoor_Host_GenerateReport_h
#define Vespermoor_Host_GenerateReport_h

#include <chrono>
#include <cstddef>
#include <string>

#include "Generator.h"

namespace VespermoorEngine::Host {

/** @brief Prints the failures and outputs of `generate` and, on a terminal, its progress. */
class GenerateReport {
public:
    /** @brief Prints @p verb and a blank before each output, or only failures if @p quiet. */
    GenerateReport(std::string verb, bool quiet);

    /** @brief Prints a failure to standard error. */
    void failure(const std::string& message);

    /** @brief Prints a line about the run itself to standard error. */
    void note(const std::string& message);

    /**
     * @brief Prints failures to standard error and changes to standard output.
     *
     * Diffs are coloured on a terminal. Throws @ref Failure if standard output fails.
     */
    void result(const Generator::Result& result);

    /**
     * @brief Shows a count of outputs on one line of standard error if an update takes a while.
     *
     * Empty if standard error is no terminal. The line is erased before anything else is printed.
     */
    Generator::Progress progress();

private:
    void count(std::size_t done, std::size_t all);
    void eraseCount();

    std::string verb;
    bool quiet;
    bool isCounting = false;
    std::chrono::steady_clock::time_point nextCount;
};

} // namespace VespermoorEngine::Host

#endif
