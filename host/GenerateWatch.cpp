#include "GenerateWatch.h"

#include <chrono>
#include <cstdio>
#include <utility>

#include <Corrade/Containers/StringStl.h>
#include <Corrade/Utility/Debug.h>

#include "Failure.h"
#include "Files.h"

namespace VespermoorEngine::Host {

namespace {

/* Short enough that a save shows at once, long enough for the writes of one save to fall together.
 */
constexpr std::chrono::milliseconds tick{40};

/* Ticks after which a file that is written to without a pause is tried all the same. */
constexpr int patience = 25;

/* Ticks between two looks at all inputs, of which there can be thousands. */
constexpr int ticksPerLook = 25;

/* What the library says of directories that it cannot watch: they are looked at all the same. */
struct WatchSilence {
    Utility::Warning warning{nullptr};
    Utility::Error error{nullptr};
};

} // namespace

GenerateWatch::GenerateWatch(const std::string& path) : manifest{path}, changed{path} {}

void GenerateWatch::run(StopSignals& signals) {
    regenerate();
    std::fprintf(stderr, "watching %zu directories\n", watch.directoryCount());
    int waited = 0;
    do {
        const bool more = takeChanges();
        if (!changed.empty() && (!more || ++waited > patience)) {
            waited = 0;
            regenerate();
        }
    } while (!signals.arriveWithin(tick));
}

std::set<std::string> GenerateWatch::inputs() const {
    std::set<std::string> paths;
    if (generator) {
        paths = generator->inputs();
    }
    paths.insert(manifest);
    return paths;
}

/* A manifest that cannot be read leaves the one before in force. */
void GenerateWatch::loadManifest() {
    try {
        generator = std::make_unique<Generator>(manifest);
    } catch (const Failure& failure) {
        printError(failure.what());
    }
}

/* All anew where one directory is another one: the watch of one that was deleted and made again
   hears nothing. */
void GenerateWatch::watchInputs() {
    if (!places.follow(inputs())) {
        return;
    }
    const WatchSilence silence;
    for (const int id : std::exchange(watchIds, {})) {
        watch.remove(id);
    }
    for (const std::string& directory : places.directories()) {
        watchIds.push_back(watch.watch(
            directory, FileWatch::Callback{Corrade::DefaultInit, [this](const auto path, auto) {
                                               heard.merge(places.at(path));
                                           }}));
    }
}

bool GenerateWatch::takeChanges() {
    const WatchSilence silence;
    watch.update();
    /* What was heard is looked at as well, or it would be found changed by the next look. */
    if (!heard.empty() || ++ticksSinceLook == ticksPerLook) {
        heard.merge(places.takeChanged());
        ticksSinceLook = 0;
    }
    const bool more = !heard.empty();
    changed.merge(std::exchange(heard, {}));
    return more;
}

/* What changes from here on is for the next time. The watch comes before the reading, so that no
   save falls in between. */
void GenerateWatch::regenerate() {
    const std::set<std::string> taken = std::exchange(changed, {});
    watchInputs();
    if (taken.count(manifest) != 0) {
        loadManifest();
        watchInputs();
    }
    if (!generator) {
        return;
    }
    for (const std::string& input : taken) {
        generator->forget(input);
        generator->lookAgain(input);
    }
    const Generator::Result result = generator->update(Generator::Mode::Write);
    for (const std::string& failure : result.failures) {
        printError(failure);
    }
    for (const std::string& path : result.changed) {
        print("wrote " + escaped(path) + "\n");
    }
}

} // namespace VespermoorEngine::Host
