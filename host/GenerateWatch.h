#ifndef Vespermoor_Host_GenerateWatch_h
#define Vespermoor_Host_GenerateWatch_h

#include <memory>
#include <set>
#include <string>
#include <vector>

#include <VespermoorEditor/Utils/FileWatch.h>

#include "GenerateReport.h"
#include "Generator.h"
#include "InputPlaces.h"
#include "StopSignals.h"

namespace VespermoorEngine::Host {

/**
 * @brief Regenerates the outputs of changed files, until it is told to stop.
 *
 * A failure is printed and leaves the old output; the next change of an input tries again. Changes
 * are batched until a tick passes without a new one.
 *
 * Kernel watches on the directories of the inputs report saves at once. In addition, the status of
 * every input and output is polled once a second, for the changes that the kernel does not report:
 * files that do not exist yet, saves through another name, directories that cannot be read, a full
 * queue, and outputs that are deleted or edited, which have no kernel watches.
 */
class GenerateWatch {
public:
    /** @brief How changes are found. */
    enum class Method {
        /** @brief By kernel watches and by polling. */
        Kernel,
        /** @brief By polling alone, without kernel watches. */
        Poll
    };

    /** @brief Keeps the outputs of the manifest at @p path current. */
    GenerateWatch(const std::string& path, Method method, GenerateReport& report);

    /** @brief Generates everything, then regenerates after changes, until a signal arrives. */
    void run(StopSignals& signals);

private:
    void loadManifest();
    void trackFiles();
    void watchDirectories();
    /* Returns whether files changed since the last tick. */
    bool takeChanges();
    void regenerate();

    std::string manifest;
    Method method;
    GenerateReport& report;
    std::unique_ptr<Generator> generator;
    std::set<std::string> outputs;
    InputPlaces places;
    FileWatch watch;
    /* One for each directory of an input. */
    std::vector<int> watchIds;
    /* Inputs that the kernel reported in this tick. */
    std::set<std::string> reported;
    std::set<std::string> changed;
    int ticksSinceLook = 0;
};

} // namespace VespermoorEngine::Host

#endif
