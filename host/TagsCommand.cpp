#include "TagsCommand.h"

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/StringStl.h>
#include <VespermoorEditor/Utils/String.h>

#include "Failure.h"
#include "Files.h"

namespace VespermoorEngine::Host {

namespace {

struct Options {
    std::string path;
    /* Three for each region: start tag, end tag, and the file with the new content. */
    std::vector<std::string> regions;
    std::string output;
};

void run(const Options& options) {
    const Containers::String text = readFile(options.path);
    std::vector<Containers::String> contents;
    contents.reserve(options.regions.size() / 3);
    Containers::Array<Utils::TagReplacement> replacements;
    for (std::size_t i = 0; i != options.regions.size(); i += 3) {
        const Containers::StringView start = options.regions[i];
        const Containers::StringView end = options.regions[i + 1];
        /* The library leaves out a region of which neither tag is there. */
        const auto isThere = [&text](const Containers::StringView tag) {
            return !tag.isEmpty() && text.contains(tag);
        };
        if (!isThere(start) && !isThere(end)) {
            throw Failure{options.path, "missing tag '" + start + "'"};
        }
        contents.push_back(readFile(options.regions[i + 2]));
        arrayAppend(replacements, Utils::TagReplacement{start, end, contents.back()});
    }
    const Containers::Pair<Containers::String, bool> result =
        Utils::replaceTagContent(text, replacements);
    if (!result.second()) {
        throw Failure{options.path, result.first()};
    }
    output(options.output, result.first());
}

} // namespace

void addTagsCommand(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("tags", "Replace what stands between tags in a file");
    const auto options = std::make_shared<Options>();
    command->add_option("FILE", options->path, "The file")->required();
    command
        ->add_option("--region", options->regions,
                     "Start tag, end tag, and a file with what shall stand between them")
        ->type_name("START END CONTENT_FILE")
        ->type_size(3)
        /* Otherwise a tag in brackets is taken as a list. */
        ->allow_extra_args(false)
        ->required();
    command->add_option("--output", options->output,
                        "File to replace with the result, in place of printing it");
    command->footer("Example, in the root of the sources:\n"
                    "  vespermoor-utils tags examples/components/include/ComponentRegistration.h "
                    "--region [components] [/components] examples/greeting/greeting.tmpl");
    command->callback([options] { run(*options); });
}

} // namespace VespermoorEngine::Host
