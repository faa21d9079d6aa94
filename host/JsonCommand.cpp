#include "Commands.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <Corrade/Containers/StringIterable.h>
#include <Corrade/Containers/StringStl.h>
#include <VespermoorEditor/Utils/RapidJsonUtils.h>

#include "CommandLine.h"
#include "DocumentScope.h"
#include "Documents.h"
#include "Failure.h"
#include "Files.h"

namespace VespermoorEngine::Host {

namespace {

struct Options {
    std::string path;
    std::string pointer;
    int decimals = RapidJsonUtils::defaultMaxDecimalPlaces;
    /* Each a JSON Pointer, an equals sign and JSON text. */
    std::vector<std::string> assignments;
    std::string output;
};

/* The library takes a text that is no pointer as the root; a person is told. Empty where `text` is
   a pointer. */
std::string checkPointer(const std::string& text) {
    return rapidjson::Pointer{text.data(), text.size()}.IsValid() ? ""
                                                                  : text + " is no JSON Pointer";
}

std::string checkAssignment(const std::string& text) {
    const std::size_t equals = text.find('=');
    return equals == std::string::npos ? text + " has no equals sign"
                                       : checkPointer(text.substr(0, equals));
}

const rapidjson::Value& find(const rapidjson::Document& document, const Options& options) {
    const rapidjson::Value* const value = RapidJsonUtils::valueByPointer(document, options.pointer);
    if (!value) {
        throw Failure{options.path, "Nothing at " + options.pointer};
    }
    return *value;
}

bool isExactFloat(const rapidjson::Value& value) {
    return value.IsDouble() && double(float(value.GetDouble())) == value.GetDouble();
}

template <class T, class Convert>
Containers::Array<T> convertAll(const rapidjson::Value& array, const Convert convert) {
    Containers::Array<T> result{Corrade::ValueInit, array.Size()};
    std::transform(array.Begin(), array.End(), result.begin(), convert);
    return result;
}

/* Arrays of one kind have their own writes; returns whether this is one. */
bool writeArray(JsonObject& place, const rapidjson::Value& array) {
    const auto all = [&](const auto test) { return std::all_of(array.Begin(), array.End(), test); };
    if (all([](const rapidjson::Value& value) { return value.IsInt(); })) {
        place.setIntArray(
            convertAll<int>(array, [](const rapidjson::Value& value) { return value.GetInt(); }));
    } else if (all(isExactFloat)) {
        place.setFloatArray(convertAll<float>(
            array, [](const rapidjson::Value& value) { return value.GetFloat(); }));
    } else if (all([](const rapidjson::Value& value) { return value.IsString(); })) {
        place.setArray(Containers::StringIterable{
            convertAll<Containers::StringView>(array, [](const rapidjson::Value& value) {
                return Containers::StringView{value.GetString(), value.GetStringLength()};
            })});
    } else {
        return false;
    }
    return true;
}

/* Through the typed write for what one stores exactly; a double that is no float, a large integer
   and an object are copied as they are. */
void write(JsonObject& place, const rapidjson::Value& value) {
    if (value.IsNull()) {
        place.setNull();
    } else if (value.IsBool()) {
        place.setBool(value.GetBool());
    } else if (value.IsInt()) {
        place.setInt(value.GetInt());
    } else if (isExactFloat(value)) {
        place.setFloat(value.GetFloat());
    } else if (value.IsString()) {
        place.setString({value.GetString(), value.GetStringLength()});
    } else if (!value.IsArray() || !writeArray(place, value)) {
        place.mutableValue().CopyFrom(value, place.allocator());
    }
}

/* Levels of arrays and objects in `value`, which was parsed and so has no more than are read. */
std::size_t nesting(const rapidjson::Value& value) {
    std::size_t levels = 0;
    if (value.IsArray()) {
        for (const rapidjson::Value& element : value.GetArray()) {
            levels = std::max(levels, nesting(element));
        }
    } else if (value.IsObject()) {
        for (const auto& member : value.GetObject()) {
            levels = std::max(levels, nesting(member.value));
        }
    }
    return levels + (value.IsArray() || value.IsObject());
}

void assign(rapidjson::Document& document, const std::string& assignment) {
    const std::size_t equals = assignment.find('=');
    const std::string pointer = assignment.substr(0, equals);
    const rapidjson::Document value = parseDocument(
        "--set " + pointer, Containers::StringView{assignment}.exceptPrefix(equals + 1));

    const rapidjson::Pointer steps{pointer.data(), pointer.size()};
    if (steps.GetTokenCount() + nesting(value) > RapidJsonUtils::maxNesting) {
        throw Failure{"--set", nestedTooDeep()};
    }
    DocumentScope place{document};
    for (std::size_t i = 0; i != steps.GetTokenCount(); ++i) {
        const rapidjson::Pointer::Token& step = steps.GetTokens()[i];
        place.descend({step.name, step.length});
    }
    if (!place.canBeMade()) {
        throw Failure{"--set", "Nothing can be made at " + pointer};
    }
    write(place, value);
}

void run(const Options& options) {
    rapidjson::Document document = readDocument(options.path);
    for (const std::string& assignment : options.assignments) {
        assign(document, assignment);
    }
    output(options.output, printDocument(find(document, options), options.decimals));
}

} // namespace

void addJsonCommand(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("json", "Print a JSON document or a value in it, and write values");
    const auto options = std::make_shared<Options>();
    command->add_option("FILE", options->path, "The document")->required();
    command
        ->add_option(
            "--set", options->assignments,
            "Write JSON to the place that a JSON Pointer leads to; missing members are made")
        ->type_name("POINTER=JSON")
        ->check(checkAssignment);
    command
        ->add_option("--pointer", options->pointer, "JSON Pointer (RFC 6901) to the value to print")
        ->check(checkPointer);
    command
        ->add_option("--decimals", options->decimals,
                     "Cut numbers off after so many fractional digits")
        ->check(CLI::Range(1, RapidJsonUtils::defaultMaxDecimalPlaces));
    addOutputOption(*command, options->output);
    command->footer("Example, in the root of the sources:\n"
                    "  vespermoor-utils json examples/greeting/user.json --pointer /user/name");
    command->callback([options] { run(*options); });
}

} // namespace VespermoorEngine::Host
