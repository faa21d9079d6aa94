#include "Commands.h"

#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <Corrade/Containers/StringStl.h>

#include "Failure.h"
#include "Files.h"
#include "GenerateWatch.h"
#include "Generator.h"
#include "StopSignals.h"

namespace VespermoorEngine::Host {

namespace {

struct Options {
    std::string manifest;
    bool watch = false;
    bool check = false;
};

void generate(const Options& options) {
    Generator generator{options.manifest};
    const Generator::Result result =
        generator.update(options.check ? Generator::Mode::Check : Generator::Mode::Write);
    /* First, since the printing may fail, too. */
    for (const std::string& failure : result.failures) {
        printError(failure);
    }
    for (const std::string& path : result.changed) {
        print((options.check ? "out of date: " : "wrote ") + escaped(path) + "\n");
    }
    if (!result.failures.empty() || (options.check && !result.changed.empty())) {
        throw SilentFailure{};
    }
}

void run(const Options& options) {
    if (!options.watch) {
        generate(options);
        return;
    }
    StopSignals signals;
    GenerateWatch{options.manifest}.run(signals);
}

} // namespace

void addGenerateCommand(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "generate", "Make the files of a manifest from JSON data and templates");
    const auto options = std::make_shared<Options>();
    command->add_option("MANIFEST", options->manifest, "The manifest")->required();
    CLI::Option* const watch =
        command->add_flag("--watch", options->watch,
                          "Keep running, and regenerate what depends on a file that changes");
    command
        ->add_flag("--check", options->check,
                   "Write nothing; print what is out of date and end with 1 if anything is")
        ->excludes(watch);
    command->footer("Example, in the root of the sources:\n"
                    "  vespermoor-utils generate --check examples/components/manifest.json");
    command->callback([options] { run(*options); });
}

} // namespace VespermoorEngine::Host
