#include "Commands.h"

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <Corrade/Containers/StringStl.h>

#include "CommandLine.h"
#include "Documents.h"
#include "Failure.h"
#include "Files.h"
#include "Scopes.h"
#include "Templates.h"

namespace VespermoorEngine::Host {

namespace {

struct Options {
    std::string templatePath;
    std::vector<std::string> data;
    std::string output;
};

void run(const Options& options) {
    NamedTemplate source = readTemplate(options.templatePath);
    std::vector<rapidjson::Document> documents;
    documents.reserve(options.data.size());
    Scopes scopes;
    for (const std::string& path : options.data) {
        documents.push_back(readDocument(path));
        scopes.add(documents.back());
    }
    output(options.output, render(source, scopes.all()));
}

} // namespace

void addRenderCommand(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("render", "Render a template against JSON documents");
    const auto options = std::make_shared<Options>();
    command->add_option("TEMPLATE", options->templatePath, "The template")->required();
    command
        ->add_option("--data", options->data,
                     "JSON documents; the first one that has a name decides its value")
        /* Otherwise a path in brackets is taken as a list. */
        ->expected(1, 1 << 20)
        ->allow_extra_args(false)
        ->required();
    addOutputOption(*command, options->output);
    command->footer("Example, in the root of the sources:\n"
                    "  vespermoor-utils render examples/greeting/greeting.tmpl "
                    "--data examples/greeting/user.json");
    command->callback([options] { run(*options); });
}

} // namespace VespermoorEngine::Host
