#include "StopSignals.h"

#include <initializer_list>

#include <poll.h>
#include <unistd.h>

namespace VespermoorEngine::Host {

namespace {

volatile std::sig_atomic_t arrived = 0;

/* The alarm repeats, since a call may start to block right after the signal. */
extern "C" void noteSignal(int) {
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGTERM, SIG_IGN);
    arrived = 1;
    alarm(1);
}

} // namespace

StopSignals::StopSignals() {
    /* No SA_RESTART, so that blocking calls are interrupted. */
    struct sigaction action {};
    action.sa_handler = noteSignal;
    sigemptyset(&awaited);
    for (const int signal : {SIGINT, SIGTERM, SIGALRM}) {
        sigaddset(&awaited, signal);
        sigaction(signal, &action, nullptr);
    }
    sigprocmask(SIG_UNBLOCK, &awaited, nullptr);
}

bool StopSignals::arriveWithin(const std::chrono::nanoseconds time, const int descriptor) {
    const timespec timeout{time.count() / 1'000'000'000, time.count() % 1'000'000'000};
    /* Signals stay blocked from the check to the wait, so that one in between ends the wait. */
    sigset_t before;
    sigprocmask(SIG_BLOCK, &awaited, &before);
    if (!arrived) {
        pollfd readable{descriptor, POLLIN, 0};
        ppoll(&readable, 1, &timeout, &before);
    }
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return arrived;
}

} // namespace VespermoorEngine::Host
