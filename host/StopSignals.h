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
 * interrupted once a second, so that nobody who does not read what is printed can keep the process
 * from its end.
 */
class StopSignals {
public:
    StopSignals();

    /** @brief Waits for a signal, at most @p time; returns whether one came, now or before. */
    bool arriveWithin(std::chrono::nanoseconds time);

private:
    sigset_t awaited;
};

} // namespace VespermoorEngine::Host

#endif
