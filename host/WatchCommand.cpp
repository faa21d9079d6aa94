#include "WatchCommand.h"

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <Corrade/Utility/Path.h>
#include <VespermoorEditor/Utils/FileWatch.h>

#include "Failure.h"
#include "StopSignals.h"

namespace VespermoorEngine::Host {

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
    std::vector<std::string> paths;
    int tick = 50;
    double seconds = 0.0;
};

/* Prints one line for each change, however many of the paths it concerns. */
class Printer {
public:
    /* Listener of the path at `position`. A change comes to the listeners in the order of their
       paths, so the same one again at a later path is one that has been printed. */
    FileWatch::Callback listener(const std::size_t position) {
        return {Corrade::DefaultInit,
                [this, position](const Containers::StringView path, const FileWatch::Event event) {
                    if (position <= lastPosition || path != lastPath || event != lastEvent) {
                        print(path, event);
                        lastPath = path;
                        lastEvent = event;
                    }
                    lastPosition = position;
                }};
    }

private:
    static void print(const Containers::StringView path, const FileWatch::Event event) {
        std::fputs(event == FileWatch::Event::Remove ? "Remove " : "Modify ", stdout);
        std::fwrite(path.data(), 1, path.size(), stdout);
        std::fputc('\n', stdout);
        std::fflush(stdout);
    }

    std::size_t lastPosition = 0;
    Containers::String lastPath;
    FileWatch::Event lastEvent{};
};

void add(FileWatch& watch, const Containers::StringView path, FileWatch::Callback listener) {
    if (!Utility::Path::exists(path)) {
        throw Failure{path, "there is no such file or directory"};
    }
    if (watch.watch(path, std::move(listener)) == 0) {
        throw Failure{path, "cannot be watched"};
    }
}

void run(const Options& options) {
    StopSignals signals;
    Printer printer;
    FileWatch watch;
    for (std::size_t i = 0; i != options.paths.size(); ++i) {
        const std::string& path = options.paths[i];
        add(watch, {path.data(), path.size()}, printer.listener(i));
    }
    std::fprintf(stderr, "watching %zu directories\n", watch.directoryCount());
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                        std::chrono::duration<double>{options.seconds});
    do {
        watch.update();
    } while (!signals.arriveWithin(std::chrono::milliseconds{options.tick}) &&
             (options.seconds == 0.0 || Clock::now() < end));
    watch.update();
}

} // namespace

void addWatchCommand(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "watch", "Print what changes below directories and in files, one line for each change");
    const auto options = std::make_shared<Options>();
    command->add_option("PATH", options->paths, "Directories, with all below them, and files")
        ->required();
    command->add_option("--tick", options->tick, "Milliseconds between two looks at what changed")
        ->check(CLI::Range(1, 60'000))
        ->capture_default_str();
    command->add_option("--for", options->seconds, "Seconds to watch, in place of until Ctrl-C")
        ->check(CLI::PositiveNumber);
    command->footer(
        "Example, in the root of the sources:\n  vespermoor-utils watch --for 1 examples");
    command->callback([options] { run(*options); });
}

} // namespace VespermoorEngine::Host
