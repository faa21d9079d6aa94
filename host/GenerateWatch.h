#ifndef Vespermoor_Host_GenerateWatch_h
#define Vespermoor_Host_GenerateWatch_h

#include <memory>
#include <set>
#include <string>
#include <vector>

#include <VespermoorEditor/Utils/FileWatch.h>

#include "Generator.h"
#include "InputPlaces.h"
#include "StopSignals.h"

namespace VespermoorEngine::Host {

/**
 * @brief Regenerates what depends on the files that change, until it is told to stop.
 *
 * A failure is printed and leaves the old output; the next change of an input tries again. Changes
 * are taken together until a tick passes without a new one.
 *
 * The watch hears of saves at once. Besides, every input is looked at once a second, so a change is
 * not missed where the kernel tells of none: of what does not exist yet, of saves through another
 * name, in directories that cannot be read, and of more saves than it keeps.
 */
class GenerateWatch {
public:
    /** @brief Regenerates what the manifest at @p path names, as far as it can be read. */
    explicit GenerateWatch(const std::string& path);

    /** @brief Generates everything, and then whatever changes, until a signal arrives. */
    void run(StopSignals& signals);

private:
    std::set<std::string> inputs() const;
    void loadManifest();
    void watchInputs();
    /* Returns whether inputs changed since the last tick. */
    bool takeChanges();
    void regenerate();

    std::string manifest;
    std::unique_ptr<Generator> generator;
    InputPlaces places;
    FileWatch watch;
    /* Of the directories of the places. */
    std::vector<int> watchIds;
    /* Inputs that the watch heard of in this tick. */
    std::set<std::string> heard;
    std::set<std::string> changed;
    int ticksSinceLook = 0;
};

} // namespace VespermoorEngine::Host

#endif
