#include "GenerateWatch.h"

#include <chrono>
#include <cstdio>
#include <utility>

#include <Corrade/Containers/StringStl.h>

#include "Failure.h"
#include "Files.h"

namespace VespermoorEngine::Host {

namespace {

/* Short enough that a save shows at once, long enough for the writes of one save to fall together.
 */
constexpr std::chrono::milliseconds tick{40};

/* A file that is written to without a pause is tried now and then all the same. */
constexpr int patience = 25;

void report(const std::string& failure) {
    std::fprintf(stderr, "vespermoor-utils: %s\n", failure.data());
}

} // namespace

GenerateWatch::GenerateWatch(const std::string& path) : manifest{path}, changed{path} {}

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
        report(failure.what());
    }
}

/* Looks once more after the watch stands, since a link may have led elsewhere by then. */
void GenerateWatch::watchInputs() {
    for (InputPlaces now{inputs()}; !(now == places); now = InputPlaces{inputs()}) {
        if (now.differFrom(places)) {
            changed = inputs();
        }
        places = std::move(now);
        /* All anew: a record of a directory that was deleted and made again hears nothing. */
        auto next = std::make_unique<FileWatch>();
        for (const std::string& directory : places.directories()) {
            next->watch(directory,
                        FileWatch::Callback{Corrade::DefaultInit, [this](const auto path, auto) {
                                                changed.merge(places.at(path));
                                            }});
        }
        /* The one before tells what changed until the new one stood. */
        std::swap(watch, next);
        if (next) {
            next->update();
        }
    }
}

bool GenerateWatch::takeChanges() {
    bool heard = watch->update();
    if (!places.stand()) {
        watchInputs();
        heard = true;
    }
    return heard && !changed.empty();
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
