#include "StopSignals.h"

namespace VespermoorEngine::Host {

StopSignals::StopSignals() {
    sigemptyset(&awaited);
    sigaddset(&awaited, SIGINT);
    sigaddset(&awaited, SIGTERM);
    sigprocmask(SIG_BLOCK, &awaited, &before);
}

StopSignals::~StopSignals() {
    sigprocmask(SIG_SETMASK, &before, nullptr);
}

bool StopSignals::arriveWithin(const std::chrono::milliseconds time) {
    const timespec timeout{time.count() / 1000, time.count() % 1000 * 1000000};
    return sigtimedwait(&awaited, nullptr, &timeout) > 0;
}

} // namespace VespermoorEngine::Host
