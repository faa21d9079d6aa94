#ifndef Vespermoor_Host_StopSignals_h
#define Vespermoor_Host_StopSignals_h

#include <chrono>
#include <csignal>

namespace VespermoorEngine::Host {

/**
 * @brief Turns SIGINT and SIGTERM into something to wait for, in place of the end of the process.
 *
 * That holds from the construction to the end of the process, so a second signal does not change
 * how it ends. One signal counts for all objects. From then on calls of the system that block are
 * interrupted once a second, so that a stalled reader of the output cannot block the exit.
 */
class StopSignals {
public:
    StopSignals();

    /**
     * @brief Waits for a signal, at most @p time, and until @p descriptor is readable unless it is
     * negative; returns whether a signal came, now or before.
     */
    bool arriveWithin(std::chrono::nanoseconds time, int descriptor = -1);

private:
    sigset_t awaited;
};

} // namespace VespermoorEngine::Host

#endif
