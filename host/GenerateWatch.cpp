#include "GenerateWatch.h"

#include <chrono>
#include <cstdio>
#include <utility>

#include <sys/stat.h>

#include <Corrade/Containers/Pair.h>
#include <Corrade/Containers/StringStl.h>
#include <Corrade/Utility/Path.h>
#include <VespermoorEngine/Path.h>

#include "Failure.h"
#include "Files.h"

namespace VespermoorEngine::Host {

namespace {

/* Short enough that a save shows at once, long enough for the writes of one save to fall together.
 */
constexpr std::chrono::milliseconds tick{40};

/* A file that is written to without a pause is tried now and then all the same. */
constexpr int patience = 25;

/* The nearest directory above `path`, which is absolute, that exists. */
std::string existingDirectory(Containers::StringView path) {
    do {
        path = Corrade::Utility::Path::split(path).first();
    } while (path != Containers::StringView{"/"} && !Corrade::Utility::Path::isDirectory(path));
    return path;
}

void report(const std::string& failure) {
    std::fprintf(stderr, "vespermoor-utils: %s\n", failure.data());
}

} // namespace

GenerateWatch::GenerateWatch(const std::string& path) : manifest{path} {
    loadManifest();
}

void GenerateWatch::run(StopSignals& signals) {
    regenerate();
    std::fprintf(stderr, "watching %zu directories\n", watch->directoryCount());
    int waited = 0;
    do {
        const bool more = takeChanges();
        if (!changed.empty() && (!more || ++waited > patience)) {
            waited = 0;
            regenerate();
        }
    } while (!signals.arriveWithin(tick));
}

/* A manifest that cannot be read leaves the one before in force. */
void GenerateWatch::loadManifest() {
    try {
        generator = std::make_unique<Generator>(manifest);
    } catch (const Failure& failure) {
        report(failure.what());
    }
    watchInputs();
}

/* All anew: a record of a directory that was deleted and made again hears nothing any more. */
void GenerateWatch::watchInputs() {
    watched = {{Path::absolute(manifest), manifest}};
    if (generator) {
        for (const std::string& input : generator->inputs()) {
            watched.emplace(Path::absolute(input), input);
        }
    }
    directories.clear();
    for (const auto& [absolute, path] : watched) {
        const std::string directory = existingDirectory(absolute);
        directories.emplace(directory, identify(directory));
    }
    auto next = std::make_unique<FileWatch>();
    for (const auto& [directory, identity] : directories) {
        next->watch(directory, FileWatch::Callback{Corrade::DefaultInit,
                                                   [this](const Containers::StringView path,
                                                          FileWatch::Event) { noteChange(path); }});
    }
    /* The one before tells what changed until the new one stood. */
    std::swap(watch, next);
    if (next) {
        next->update();
    }
}

GenerateWatch::Identity GenerateWatch::identify(const std::string& directory) {
    struct stat status {};
    if (stat(directory.data(), &status) != 0) {
        return {};
    }
    return {status.st_dev, status.st_ino};
}

bool GenerateWatch::directoriesStand() const {
    for (const auto& [directory, identity] : directories) {
        if (!(identify(directory) == identity)) {
            return false;
        }
    }
    return true;
}

/* A directory that is renamed or deleted takes with it what lies below. */
void GenerateWatch::noteChange(const Containers::StringView path) {
    for (const auto& [absolute, input] : watched) {
        if (path == Containers::StringView{absolute} || Path::isParentPath(path, absolute)) {
            changed.insert(input);
        }
    }
}

bool GenerateWatch::takeChanges() {
    const std::size_t before = changed.size();
    bool heard = watch->update();
    if (!directoriesStand()) {
        watchInputs();
        for (const auto& [absolute, input] : watched) {
            changed.insert(input);
        }
        heard = true;
    }
    return heard && (changed.size() != before || !changed.empty());
}

void GenerateWatch::regenerate() {
    if (changed.count(manifest) != 0) {
        loadManifest();
    }
    if (!generator) {
        changed.clear();
        return;
    }
    for (const std::string& input : std::exchange(changed, {})) {
        generator->forget(input);
    }
    const Generator::Result result = generator->update(Generator::Mode::Write);
    for (const std::string& path : result.changed) {
        print("wrote " + path + "\n");
    }
    for (const std::string& failure : result.failures) {
        report(failure);
    }
}

} // namespace VespermoorEngine::Host
