#include "JsonCommand.h"

#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <Corrade/Containers/StringStl.h>
#include <VespermoorEditor/Utils/RapidJsonUtils.h>

#include "Documents.h"
#include "Failure.h"
#include "Files.h"

namespace VespermoorEngine::Host {

namespace {

struct Options {
    std::string path;
    std::string pointer;
    int decimals = RapidJsonUtils::defaultMaxDecimalPlaces;
};

/* The library takes a text that is no pointer as the root; a person is told. */
const rapidjson::Value& find(const rapidjson::Document& document, const Options& options) {
    if (!rapidjson::Pointer{options.pointer.data(), options.pointer.size()}.IsValid()) {
        throw Failure{"--pointer", options.pointer + " is no JSON Pointer"};
    }
    const rapidjson::Value* const value = RapidJsonUtils::valueByPointer(document, options.pointer);
    if (!value) {
        throw Failure{options.path, "Nothing at " + options.pointer};
    }
    return *value;
}

void run(const Options& options) {
    const rapidjson::Document document = readDocument(options.path);
    print(printDocument(find(document, options), options.decimals));
}

} // namespace

void addJsonCommand(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("json", "Print a JSON document or a value in it");
    const auto options = std::make_shared<Options>();
    command->add_option("FILE", options->path, "The document")->required();
    command->add_option("--pointer", options->pointer,
                        "JSON Pointer (RFC 6901) to the value to print");
    command
        ->add_option("--decimals", options->decimals,
                     "Cut numbers off after so many fractional digits")
        ->check(CLI::Range(1, RapidJsonUtils::defaultMaxDecimalPlaces));
    command->footer("Example, in the root of the sources:\n"
                    "  vespermoor-utils json examples/greeting/user.json --pointer /user/name");
    command->callback([options] { run(*options); });
}

} // namespace VespermoorEngine::Host
