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
 * @brief Runs a program after changes, one run at a time.
 *
 * Changes collect until a poll finds no new one, or for a second at most, and then start one run.
 * Nobody can tell who changed a file, so changes during a run count as the program's own and start
 * no other run, unless the user said that the program changes nothing that is watched.
 *
 * Usage, once per poll: @ref noteEnd(), then take the changes of the watch, then @ref take(). In
 * this order, everything that the program changed counts as part of its run.
 */
class ChangeCommand {
public:
    /**
     * @brief Takes the program and its arguments from @p words.
     *
     * An argument that contains `{}` is passed once per changed path, with the path in place of
     * `{}`. Changes during a run start another one if @p repeats.
     */
    ChangeCommand(std::vector<std::string> words, bool repeats, ErrorQueue& errors);
    ~ChangeCommand();
    ChangeCommand(const ChangeCommand&) = delete;
    ChangeCommand& operator=(const ChangeCommand&) = delete;

    /** @brief Checks whether the run has ended. */
    void noteEnd();

    /** @brief Collects @p changes, and starts a run if it is time. */
    void take(const std::vector<Change>& changes);

    /** @brief Whether the next @ref take() should come soon. */
    bool isCollecting() const { return !isRunning() && !firstEvents.empty(); }

    /** @brief Descriptor that polls as readable when the run ends; -1 if there is none. */
    int runDescriptor() const { return descriptor; }

    /**
     * @brief Makes the last run, for the collected changes, and waits for its end.
     *
     * After a stop signal no further run starts, and the current one gets a SIGTERM and, ten
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
    /* Collected paths in the order of their first changes, with those changes. */
    std::vector<std::string> paths;
    std::map<std::string, FileWatch::Event> firstEvents;
    Clock::time_point collectingSince;
    /* Command lines of the current run that have not started yet. */
    std::vector<std::vector<std::string>> batches;
    bool ranSinceLook = false;
    pid_t process = 0;
    int descriptor = -1;
};

} // namespace VespermoorEngine::Host

#endif
