#include "Commands.h"

#include <memory>
#include <string>
#include <utility>
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
    std::vector<std::string> inputs = options.data;
    inputs.push_back(options.templatePath);
    expectOneStandardInput(inputs);
    Input input = readInput(options.templatePath);
    NamedTemplate source = compileTemplate(input.name, std::move(input.content));
    std::vector<rapidjson::Document> documents;
    documents.reserve(options.data.size());
    Scopes scopes;
    for (const std::string& path : options.data) {
        const Input text = readInput(path);
        documents.push_back(parseDocument(text.name, text.content));
        scopes.add(documents.back());
    }
    PrintedErrors errors;
    output(options.output, render(source, scopes.all(), errors));
}

} // namespace

void addRenderCommand(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("render", "Render a template against JSON documents");
    const auto options = std::make_shared<Options>();
    command->add_option("TEMPLATE", options->templatePath, "The template; - for standard input")
        ->required();
    command
        ->add_option("--data", options->data,
                     "JSON documents, - for standard input; the first one that has "
                     "a name gives its value")
        ->type_name("FILE...")
        /* Otherwise CLI11 takes a path in brackets for a list. */
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
