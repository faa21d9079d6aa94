#ifndef Vespermoor_Host_StopSignals_h
#define Vespermoor_Host_StopSignals_h

#include <chrono>
#include <csignal>

namespace VespermoorEngine::Host {

/**
 * @brief Turns SIGINT and SIGTERM into an event to wait for, instead of ending the process.
 *
 * The handlers stay installed until the process ends, so a second signal does not change the way it
 * ends. One signal counts for all objects. After it, blocking system calls are interrupted once a
 * second, so that a stalled reader of the output cannot block the exit.
 */
class StopSignals {
public:
    StopSignals();

    /**
     * @brief Waits for a signal, for at most @p time, or until @p descriptor is readable unless it
     * is negative. Returns whether a signal has arrived, now or earlier.
     */
    bool arriveWithin(std::chrono::nanoseconds time, int descriptor = -1);

private:
    sigset_t awaited;
};

} // namespace VespermoorEngine::Host

#endif
