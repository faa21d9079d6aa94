#ifndef Vespermoor_Host_StopSignals_h
#define Vespermoor_Host_StopSignals_h

#include <chrono>
#include <csignal>

namespace VespermoorEngine::Host {

/**
 * @brief Turns SIGINT and SIGTERM into something to wait for, in place of the end of the process.
 *
 * The signals stay blocked until the object ends, so one that arrives early is not missed.
 */
class StopSignals {
public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    /** @brief Waits for a signal, at most @p time; returns whether one came. */
    bool arriveWithin(std::chrono::milliseconds time);

private:
    sigset_t awaited;
    sigset_t before;
};

} // namespace VespermoorEngine::Host

#endif
