#include <memory>
#include <set>
#include <string>

#include <CLI/CLI.hpp>
#include <Corrade/Containers/StringStl.h>

#include "Commands.h"
#include "DependencyFile.h"
#include "Failure.h"
#include "Files.h"
#include "GenerateReport.h"
#include "GenerateWatch.h"
#include "Generator.h"
#include "StopSignals.h"

namespace VespermoorEngine::Host {

namespace {

constexpr int outOfDate = 1;
constexpr int checkFailed = 2;

struct Options {
    std::string manifest;
    bool watch = false;
    bool poll = false;
    bool check = false;
    bool diff = false;
    bool list = false;
    bool quiet = false;
    std::string dependencyFile;
    std::string stamp;
};

/* Written only after a complete update, so that a build tool retries a failed one. */
void writeBuildFiles(const Options& options, const Generator& generator) {
    if (!options.dependencyFile.empty()) {
        std::set<std::string> targets{options.stamp}, inputs{options.manifest};
        inputs.merge(generator.inputs());
        if (options.stamp.empty()) {
            targets = generator.outputs();
            targets.merge(generator.regionFiles());
        } else {
            inputs.merge(generator.regionFiles());
        }
        replaceFile(options.dependencyFile, dependencyRule(targets, inputs));
    }
    if (!options.stamp.empty()) {
        replaceFile(options.stamp, "");
    }
}

void generate(const Options& options) {
    Generator generator{options.manifest};
    GenerateReport report{"wrote", options.quiet};
    const Generator::Result result = generator.update(Generator::Mode::Write, report.progress());
    report.result(result);
    if (!result.failures.empty()) {
        throw SilentFailure{};
    }
    writeBuildFiles(options, generator);
}

/* Distinct exit codes for a difference and a failure, as with diff and grep. */
void check(const Options& options) {
    GenerateReport report{"out of date:", options.quiet};
    Generator::Result result;
    try {
        result = Generator{options.manifest}.update(
            options.diff ? Generator::Mode::Compare : Generator::Mode::Check, report.progress());
        report.result(result);
    } catch (const Failure& failure) {
        report.failure(failure.what());
        throw SilentFailure{checkFailed};
    }
    if (!result.failures.empty()) {
        throw SilentFailure{checkFailed};
    }
    if (!result.changes.empty()) {
        throw SilentFailure{outOfDate};
    }
}

std::string linesOf(const std::string& kind, const std::set<std::string>& paths) {
    std::string lines;
    for (const std::string& path : paths) {
        lines.append(kind).append(" ").append(path).append("\n");
    }
    return lines;
}

void list(const Options& options) {
    const Generator generator{options.manifest};
    print(linesOf("input", generator.inputs()) + linesOf("output", generator.outputs()) +
          linesOf("regions", generator.regionFiles()));
}

void watch(const Options& options) {
    StopSignals signals;
    GenerateReport report{"wrote", options.quiet};
    GenerateWatch{options.manifest,
                  options.poll ? GenerateWatch::Method::Poll : GenerateWatch::Method::Kernel,
                  report}
        .run(signals);
}

} // namespace

void addGenerateCommand(CLI::App& program) {
    CLI::App* const command = program.add_subcommand(
        "generate", "Make the files of a manifest from JSON data and templates");
    const auto options = std::make_shared<Options>();
    command->add_option("MANIFEST", options->manifest, "The manifest")->required();
    CLI::Option* const watchFlag = command->add_flag(
        "--watch", options->watch, "Keep running, and regenerate the outputs of changed files");
    command
        ->add_flag("--poll", options->poll,
                   "With --watch: compare the files once a second, without kernel watches")
        ->needs(watchFlag);
    CLI::Option* const checkFlag =
        command
            ->add_flag("--check", options->check,
                       "Write nothing; print outdated outputs and end with 1 if there are any")
            ->excludes(watchFlag);
    command->add_flag("--diff", options->diff, "With --check: print the changes as a diff")
        ->needs(checkFlag);
    CLI::Option* const listFlag =
        command
            ->add_flag("--list", options->list,
                       "Write nothing; print the paths of inputs, outputs and files with regions")
            ->excludes(watchFlag)
            ->excludes(checkFlag);
    command->add_flag("--quiet", options->quiet, "Print only failures and diffs");
    command
        ->add_option("--depfile", options->dependencyFile,
                     "Write the dependencies of the outputs to this file, for make and ninja")
        ->type_name("FILE")
        ->excludes(watchFlag)
        ->excludes(checkFlag)
        ->excludes(listFlag);
    command
        ->add_option("--stamp", options->stamp,
                     "Write this empty file after all outputs; the target in the depfile")
        ->type_name("FILE")
        ->excludes(watchFlag)
        ->excludes(checkFlag)
        ->excludes(listFlag);
    command->footer(R"(A manifest, with paths relative to it:
  {
      "outputs": [{
          "file": "include/Names.h",
          "data": ["names.json"],
          "template": "templates/names.h.tmpl"
      }]
  }
vespermoor-manifest(5) describes all members.

Example, in the root of the sources:
  vespermoor-utils generate --check examples/components/manifest.json)");
    command->callback([options] {
        if (options->watch) {
            watch(*options);
        } else if (options->check) {
            check(*options);
        } else if (options->list) {
            list(*options);
        } else {
            generate(*options);
        }
    });
}

} // namespace VespermoorEngine::Host
