#ifndef Vespermoor_Host_ChangeCommand_h
#define Vespermoor_Host_ChangeCommand_h

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

#include "ErrorQueue.h"
#include "StopSignals.h"
#include "WatchedPaths.h"

namespace VespermoorEngine::Host {

/**
 * @brief A program that runs when something changed, one run at a time.
 *
 * Changes collect until a look finds no new one, or for a second at most, and then start one run.
 * Nobody can tell who changed a file, so changes during a run count as the program's own. They
 * start no other run, unless the user said that the program changes nothing that is watched.
 *
 * Usage, once per look: @ref noteEnd(), then take the changes of the watch, then @ref take(). In
 * this order, all that the program changed before its end is known to be from its run.
 */
class ChangeCommand {
public:
    /**
     * @brief Program and arguments are @p words.
     *
     * An argument that holds `{}` is passed once for each changed path, with the path in its place.
     * Changes during a run start another one if @p repeats.
     */
    ChangeCommand(std::vector<std::string> words, bool repeats, ErrorQueue& errors);
    ~ChangeCommand();
    ChangeCommand(const ChangeCommand&) = delete;
    ChangeCommand& operator=(const ChangeCommand&) = delete;

    /** @brief Looks whether the run has ended. */
    void noteEnd();

    /** @brief Collects @p changes, and starts a run if it is time. */
    void take(const std::vector<Change>& changes);

    /** @brief Whether the next @ref take() should come soon. */
    bool isCollecting() const { return !isRunning() && !firstEvents.empty(); }

    /** @brief Descriptor that polls as readable when the run ends; -1 if there is none. */
    int runDescriptor() const { return descriptor; }

    /**
     * @brief Makes the last run, with what was collected, and waits for its end.
     *
     * If a stop signal came there is no other run, and the present one gets a SIGTERM and, ten
     * seconds later, a SIGKILL.
     */
    void finish(StopSignals& signals);

private:
    using Clock = std::chrono::steady_clock;

    bool isRunning() const { return process > 0 || !batches.empty(); }
    std::vector<std::string> takePaths();
    void startRun();
    void startBatch();
    void noteExit(int status);
    void terminate();

    std::vector<std::string> words;
    bool repeats;
    ErrorQueue& errors;
    /* Collected paths in the order of their first changes, and what those were. */
    std::vector<std::string> paths;
    std::map<std::string, FileWatch::Event> firstEvents;
    Clock::time_point collectingSince;
    /* Command lines of the present run that have not started yet. */
    std::vector<std::vector<std::string>> batches;
    bool ranSinceLook = false;
    pid_t process = 0;
    int descriptor = -1;
};

} // namespace VespermoorEngine::Host

#endif
