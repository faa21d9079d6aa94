#include "Commands.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <Corrade/Containers/StringStl.h>
#include <Corrade/Utility/Path.h>
#include <VespermoorEditor/Utils/FileWatch.h>

#include "Failure.h"
#include "Files.h"
#include "StopSignals.h"

namespace VespermoorEngine::Host {

namespace {

using Clock = std::chrono::steady_clock;
/* Of floating point, which no number of seconds overflows. */
using Seconds = std::chrono::duration<double>;

struct Options {
    std::vector<std::string> paths;
    int tick = 50;
    double seconds = std::numeric_limits<double>::infinity();
};

/* Collects one line for each change, however many of the paths it concerns, and prints them. */
class Printer {
public:
    /* Listener of the path at `position`. A change comes to the listeners in the order of their
       paths, so the same one again at a later path is one that there is a line for. */
    FileWatch::Callback listener(const std::size_t position) {
        return {Corrade::DefaultInit,
                [this, position](const Containers::StringView path, const FileWatch::Event event) {
                    if (position <= lastPosition || path != lastPath || event != lastEvent) {
                        add(path, event);
                        lastPath = path;
                        lastEvent = event;
                    }
                    lastPosition = position;
                }};
    }

    /* Not done by the listeners: what they throw goes no further than the watch. */
    void printChanges() { print(std::exchange(lines, {})); }

private:
    void add(const Containers::StringView path, const FileWatch::Event event) {
        lines += event == FileWatch::Event::Remove ? "Remove " : "Modify ";
        lines += escaped(path);
        lines += '\n';
    }

    std::string lines;
    std::size_t lastPosition = 0;
    Containers::String lastPath;
    FileWatch::Event lastEvent{};
};

void add(FileWatch& watch, const Containers::StringView path, FileWatch::Callback listener) {
    if (!Utility::Path::exists(path)) {
        throw Failure{path, std::strerror(ENOENT)};
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
    const Clock::time_point begin = Clock::now();
    const Seconds tick = std::chrono::milliseconds{options.tick};
    bool isOver = false;
    while (!isOver) {
        watch.update();
        printer.printChanges();
        const Seconds left = Seconds{options.seconds} - (Clock::now() - begin);
        isOver = left <= Seconds::zero() ||
                 signals.arriveWithin(
                     std::chrono::duration_cast<std::chrono::nanoseconds>(std::min(left, tick)));
    }
    watch.update();
    printer.printChanges();
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
        ->type_name("SECONDS")
        ->check([](const std::string& text) {
            double seconds = 0.0;
            const bool isNumber = CLI::detail::lexical_cast(text, seconds);
            return isNumber && seconds > 0.0 ? "" : text + " is no number of seconds above 0";
        });
    command->footer(
        "Example, in the root of the sources:\n  vespermoor-utils watch --for 1 examples");
    command->callback([options] { run(*options); });
}

} // namespace VespermoorEngine::Host
