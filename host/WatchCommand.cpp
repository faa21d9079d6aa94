#include "Commands.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "ChangeCommand.h"
#include "ChangeFormat.h"
#include "Failure.h"
#include "Files.h"
#include "StopSignals.h"
#include "WatchedPaths.h"

namespace VespermoorEngine::Host {

namespace {

using Clock = std::chrono::steady_clock;
/* Floating point, so that no number of seconds overflows. */
using Seconds = std::chrono::duration<double>;

struct Options {
    std::vector<std::string> paths;
    int tick = 50;
    double seconds = std::numeric_limits<double>::infinity();
    std::vector<std::string> exclusions;
    std::string format;
    bool null = false;
    /* The joined command of joinExecCommand(); empty if there is no program to run. */
    std::string exec;
    bool repeats = false;
};

/* How long a collected change waits for more before the program starts. */
constexpr Seconds collectingTick = std::chrono::milliseconds{50};

/* Splits the joined command of joinExecCommand(). */
std::vector<std::string> splitWords(const std::string& joined) {
    std::vector<std::string> words;
    std::istringstream stream{joined};
    for (std::string word; std::getline(stream, word, '\0');) {
        words.push_back(word);
    }
    return words;
}

ChangeFormat formatOf(const Options& options) {
    return options.null               ? ChangeFormat::Null
           : options.format == "json" ? ChangeFormat::Json
                                      : ChangeFormat::Text;
}

class Watcher {
public:
    explicit Watcher(const Options& options)
        : options{options},
          watched{options.paths, options.exclusions, errors},
          command{splitWords(options.exec), options.repeats, errors} {}

    void run();

private:
    void look();
    Seconds timeToNextLook() const;

    const Options& options;
    StopSignals signals;
    ErrorQueue errors;
    WatchedPaths watched;
    ChangeCommand command;
};

void Watcher::look() {
    command.noteEnd();
    const std::vector<Change> changes = watched.takeChanges();
    errors.flush();
    if (!options.exec.empty()) {
        command.take(changes);
        return;
    }
    std::string lines;
    for (const Change& change : changes) {
        lines += formatted(change, formatOf(options));
    }
    print(lines);
}

Seconds Watcher::timeToNextLook() const {
    const Seconds tick = std::chrono::milliseconds{options.tick};
    return command.isCollecting() ? std::min(tick, collectingTick) : tick;
}

void Watcher::run() {
    errors.addLine("watching " + std::to_string(watched.directoryCount()) + " directories");
    const Clock::time_point begin = Clock::now();
    bool isOver = false;
    while (!isOver) {
        look();
        const Seconds left = Seconds{options.seconds} - (Clock::now() - begin);
        isOver = left <= Seconds::zero() || !watched.anyLeft() ||
                 signals.arriveWithin(std::chrono::duration_cast<std::chrono::nanoseconds>(
                                          std::min(left, timeToNextLook())),
                                      command.runDescriptor());
    }
    look();
    command.finish(signals);
    if (!watched.anyLeft()) {
        throw SilentFailure{};
    }
}

} // namespace

void addWatchCommand(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("watch", "Print changes of files, or run a program on them");
    const auto options = std::make_shared<Options>();
    command->add_option("PATH", options->paths, "Directories, watched recursively, and files")
        ->required();
    command
        ->add_option("--exclude", options->exclusions,
                     "Exclude entries whose path below PATH, or a name in it, matches; repeatable")
        ->type_name("GLOB")
        ->allow_extra_args(false);
    CLI::Option* const format =
        command
            ->add_option("--format", options->format,
                         "text, or json for one object per line; default: text")
            ->type_name("FORMAT")
            ->check(CLI::IsMember{{"text", "json"}});
    CLI::Option* const null =
        command
            ->add_flag("--null", options->null,
                       "Print paths unescaped, with a NUL instead of a newline after each change")
            ->excludes(format);
    CLI::Option* const exec =
        command
            ->add_option("--exec", options->exec,
                         "Run this after changes instead of printing them; an argument with {} is "
                         "passed once for each changed path")
            ->type_name("PROGRAM ARGUMENT... ';'")
            ->excludes(format)
            ->excludes(null);
    command
        ->add_flag("--repeat", options->repeats,
                   "Run it once more after changes during the run; for programs that change "
                   "nothing that is watched")
        ->needs(exec);
    command
        ->add_option("--tick", options->tick,
                     "Milliseconds between two checks for changes; default: 50")
        ->type_name("N")
        ->check(CLI::Range(1, 60'000));
    command->add_option("--for", options->seconds, "Seconds to watch, instead of until Ctrl-C")
        ->type_name("SECONDS")
        ->check([](const std::string& text) {
            double seconds = 0.0;
            const bool isNumber = CLI::detail::lexical_cast(text, seconds);
            return isNumber && seconds > 0.0 ? "" : text + " is not a positive number of seconds";
        });
    command->footer(
        "Example, in the root of the sources:\n  vespermoor-utils watch --for 1 examples");
    command->callback([options] { Watcher{*options}.run(); });
}

void joinExecCommand(std::vector<std::string>& words) {
    const auto end = std::find(words.begin(), words.end(), "--");
    const auto exec = std::find(words.begin(), end, "--exec");
    if (words.empty() || words.front() != "watch" || exec == end) {
        return;
    }
    const auto semicolon = std::find(exec, words.end(), ";");
    if (semicolon == words.end() || semicolon == exec + 1) {
        throw CLI::ValidationError{"--exec", "expects a program, its arguments, and a ';', which "
                                             "the shell takes in quotes"};
    }
    *exec += '=';
    for (auto word = exec + 1; word != semicolon; ++word) {
        *exec += *word + '\0';
    }
    words.erase(exec + 1, semicolon + 1);
}

} // namespace VespermoorEngine::Host
