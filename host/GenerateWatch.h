#ifndef Vespermoor_Host_GenerateWatch_h
#define Vespermoor_Host_GenerateWatch_h

#include <map>
#include <memory>
#include <set>
#include <string>

#include <VespermoorEditor/Utils/FileWatch.h>
#include <sys/types.h>

#include "Generator.h"
#include "StopSignals.h"

namespace VespermoorEngine::Host {

/**
 * @brief Regenerates what depends on the files that change, until it is told to stop.
 *
 * Watches the directories of the manifest, the templates and the data files, so that a file can
 * also appear, vanish and be replaced. Changes are taken together until a tick passes without a new
 * one. A failure is printed and leaves the old output; the next change of an input tries again.
 */
class GenerateWatch {
public:
    /** @brief Watches what the manifest at @p path names, as far as it can be read. */
    explicit GenerateWatch(const std::string& path);

    /** @brief Generates everything, and then whatever changes, until a signal arrives. */
    void run(StopSignals& signals);

private:
    /* Which directory stands at a path, to notice that another one has taken its place. */
    struct Identity {
        dev_t device = 0;
        ino_t inode = 0;

        bool operator==(const Identity& other) const {
            return device == other.device && inode == other.inode;
        }
    };

    static Identity identify(const std::string& directory);

    void loadManifest();
    void watchInputs();
    bool directoriesStand() const;
    void noteChange(Containers::StringView path);
    /* Whether something changed since the last tick. */
    bool takeChanges();
    void regenerate();

    std::string manifest;
    std::unique_ptr<Generator> generator;
    std::unique_ptr<FileWatch> watch;
    std::map<std::string, Identity> directories;
    /* The manifest and the inputs by their absolute paths, which are what changes come with. */
    std::map<std::string, std::string> watched;
    std::set<std::string> changed;
};

} // namespace VespermoorEngine::Host

#endif
