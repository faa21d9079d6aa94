#ifndef Vespermoor_Host_GenerateWatch_h
#define Vespermoor_Host_GenerateWatch_h

#include <memory>
#include <set>
#include <string>

#include <VespermoorEditor/Utils/FileWatch.h>

#include "Generator.h"
#include "InputPlaces.h"
#include "StopSignals.h"

namespace VespermoorEngine::Host {

/**
 * @brief Regenerates what depends on the files that change, until it is told to stop.
 *
 * Watches the directories of the manifest, the templates and the data files, so that a file can
 * also appear, vanish and be replaced. A directory that does not exist is looked for at each tick.
 * Changes are taken together until a tick passes without a new one. A failure is printed and leaves
 * the old output; the next change of an input tries again.
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
    /* Whether inputs changed since the last tick. */
    bool takeChanges();
    void regenerate();

    std::string manifest;
    std::unique_ptr<Generator> generator;
    InputPlaces places;
    /* Of the directories of the places. */
    std::unique_ptr<FileWatch> watch;
    std::set<std::string> changed;
};

} // namespace VespermoorEngine::Host

#endif
