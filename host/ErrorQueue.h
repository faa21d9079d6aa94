#ifndef Vespermoor_Host_ErrorQueue_h
#define Vespermoor_Host_ErrorQueue_h

#include <cstddef>
#include <string>

#include "Failure.h"

namespace VespermoorEngine::Host {

/**
 * @brief Lines for standard error, queued so that a stalled reader never blocks the program.
 *
 * For commands that run for hours: a pipe that nobody reads is full after 64 KiB, and a plain write
 * would then block forever. Lines that do not fit are queued, up to the size of a pipe; further
 * ones are dropped and counted, and the count is printed when the reader continues.
 */
class ErrorQueue {
public:
    ErrorQueue() = default;
    /** @brief Flushes once more. Lines that the reader does not take then are lost. */
    ~ErrorQueue() { flush(); }
    ErrorQueue(const ErrorQueue&) = delete;
    ErrorQueue& operator=(const ErrorQueue&) = delete;

    /** @brief Adds @p text as a line, escaped. */
    void addLine(Containers::StringView text);

    /** @brief Adds @p message as the program's own line, as @ref printError() prints it. */
    void addError(Containers::StringView message);

    /** @brief Writes as many lines as the reader takes at once. */
    void flush();

private:
    bool writeSome();

    std::string lines;
    std::size_t dropped = 0;
};

} // namespace VespermoorEngine::Host

#endif
