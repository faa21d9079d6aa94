#include "GenerateWatch.h"

#include <chrono>
#include <string>
#include <utility>

#include <Corrade/Containers/StringStl.h>
#include <Corrade/Utility/Debug.h>

#include "Failure.h"
#include "Files.h"

namespace VespermoorEngine::Host {

namespace {

/* Short enough to show a save at once, long enough to batch the writes of one save. */
constexpr std::chrono::milliseconds tick{40};

/* Ticks after which outputs are made even if writes to inputs have not paused. */
constexpr int patience = 25;

/* Ticks between two scans of all files, of which there can be thousands. */
constexpr int ticksPerLook = 25;

/* Drops the library's messages about directories that it cannot watch. Their files are polled
   anyway. */
struct WatchSilence {
    Utility::Warning warning{nullptr};
    Utility::Error error{nullptr};
};

} // namespace

GenerateWatch::GenerateWatch(const std::string& path, const Method method, GenerateReport& report)
    : manifest{path}, method{method}, report{report}, changed{path} {}

void GenerateWatch::run(StopSignals& signals) {
    regenerate();
    report.note(method == Method::Kernel
                    ? "watching " + std::to_string(watch.directoryCount()) + " directories"
                    : "comparing the files once a second");
    int waited = 0;
    do {
        const bool more = takeChanges();
        if (!changed.empty() && (!more || ++waited > patience)) {
            waited = 0;
            regenerate();
        }
    } while (!signals.arriveWithin(tick));
}

/* If the manifest cannot be read, the last one stays in use. */
void GenerateWatch::loadManifest() {
    try {
        generator = std::make_unique<Generator>(manifest);
        outputs = generator->outputs();
    } catch (const Failure& failure) {
        report.failure(failure.what());
    }
}

void GenerateWatch::trackFiles() {
    std::set<std::string> inputs{manifest};
    if (generator) {
        inputs.merge(generator->inputs());
        inputs.merge(generator->regionFiles());
    }
    if (places.track(inputs, outputs) && method == Method::Kernel) {
        watchDirectories();
    }
}

/* Registers all directories again, since the watch of a replaced directory reports nothing. */
void GenerateWatch::watchDirectories() {
    const WatchSilence silence;
    for (const int id : std::exchange(watchIds, {})) {
        watch.remove(id);
    }
    for (const std::string& directory : places.directories()) {
        watchIds.push_back(watch.watch(
            directory, FileWatch::Callback{Corrade::DefaultInit, [this](const auto path, auto) {
                                               reported.merge(places.inputsAt(path));
                                           }}));
    }
}

bool GenerateWatch::takeChanges() {
    const WatchSilence silence;
    watch.update();
    /* Scans even if the kernel reported changes; otherwise the next scan would find them again. */
    if (!reported.empty() || ++ticksSinceLook == ticksPerLook) {
        reported.merge(places.takeChanged());
        ticksSinceLook = 0;
    }
    const bool more = !reported.empty();
    changed.merge(std::exchange(reported, {}));
    return more;
}

/* Watches the inputs before reading them, so that no save is missed in between. Later changes are
   left for the next round. */
void GenerateWatch::regenerate() {
    const std::set<std::string> taken = std::exchange(changed, {});
    trackFiles();
    if (taken.count(manifest) != 0) {
        loadManifest();
        trackFiles();
    }
    if (!generator) {
        return;
    }
    for (const std::string& path : taken) {
        generator->invalidate(path);
    }
    report.result(generator->update(Generator::Mode::Write, report.progress()));
}

} // namespace VespermoorEngine::Host
