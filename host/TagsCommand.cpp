#include "Commands.h"

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/StringStl.h>

#include "CommandLine.h"
#include "Files.h"
#include "TagRegions.h"

namespace VespermoorEngine::Host {

namespace {

struct Options {
    std::string path;
    /* Three per region: start tag, end tag, file with the new content. */
    std::vector<std::string> regions;
    std::string output;
};

void run(const Options& options) {
    std::vector<std::string> inputs{options.path};
    for (std::size_t i = 2; i < options.regions.size(); i += 3) {
        inputs.push_back(options.regions[i]);
    }
    expectOneStandardInput(inputs);
    std::vector<Containers::String> contents;
    contents.reserve(options.regions.size() / 3);
    Containers::Array<Utils::TagReplacement> replacements;
    for (std::size_t i = 0; i != options.regions.size(); i += 3) {
        contents.push_back(readInput(options.regions[i + 2]).content);
        arrayAppend(replacements, Utils::TagReplacement{options.regions[i], options.regions[i + 1],
                                                        contents.back()});
    }
    const Input file = readInput(options.path);
    output(options.output, replaceRegions(file.name, file.content, replacements));
}

} // namespace

void addTagsCommand(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("tags", "Replace the text between tags in a file");
    const auto options = std::make_shared<Options>();
    command->add_option("FILE", options->path, "The file; - for standard input")->required();
    command
        ->add_option("--region", options->regions,
                     "Start tag, end tag, and a file with the new text between them; repeatable")
        ->type_name("START END CONTENT_FILE")
        ->type_size(3)
        /* Otherwise CLI11 takes a tag in brackets for a list. */
        ->allow_extra_args(false)
        ->required();
    addOutputOption(*command, options->output);
    command->footer("Example, in the root of the sources:\n"
                    "  vespermoor-utils tags examples/components/include/ComponentRegistration.h "
                    "--region [components] [/components] examples/greeting/greeting.tmpl");
    command->callback([options] { run(*options); });
}

} // namespace VespermoorEngine::Host
