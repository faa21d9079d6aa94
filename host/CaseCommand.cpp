#include "Commands.h"

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <Corrade/Containers/StringStl.h>
#include <VespermoorEditor/Utils/String.h>

#include "Files.h"

namespace VespermoorEngine::Host {

namespace {

struct Options {
    std::string style;
    std::vector<std::string> texts;
};

void run(const Options& options) {
    for (const std::string& text : options.texts) {
        print((options.style == "kebab" ? Utils::toKebapCase(text) : Utils::toBigCamelCase(text)) +
              "\n");
    }
}

} // namespace

void addCaseCommand(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("case", "Convert identifiers between naming styles");
    const auto options = std::make_shared<Options>();
    command->add_option("STYLE", options->style, "kebab or camel")
        ->required()
        ->check(CLI::IsMember({"kebab", "camel"}));
    command->add_option("TEXT", options->texts, "The identifiers")->required();
    command->footer("Example:\n"
                    "  vespermoor-utils case kebab XMLParser");
    command->callback([options] { run(*options); });
}

} // namespace VespermoorEngine::Host
