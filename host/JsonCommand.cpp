#include "Commands.h"

#include <algorithm>
#include <functional>
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
    JsonFormat format;
    bool raw = false;
    /* In the order of the command line. */
    std::vector<std::function<void(rapidjson::Document&)>> edits;
    std::string output;
};

/* Message for a text that is not a JSON Pointer, which the library takes for the root; empty if
   `text` is one. */
std::string checkPointer(const std::string& text) {
    return rapidjson::Pointer{text.data(), text.size()}.IsValid() ? ""
                                                                  : text + " is no JSON Pointer";
}

std::string checkMember(const std::string& text) {
    const bool isRoot = text.find('/') == std::string::npos;
    return isRoot && checkPointer(text).empty() ? "the root cannot be deleted" : checkPointer(text);
}

std::string checkAssignment(const std::string& text) {
    const std::size_t equals = text.find('=');
    return equals == std::string::npos ? text + " has no equals sign"
                                       : checkPointer(text.substr(0, equals));
}

rapidjson::Value& find(rapidjson::Document& document, const std::string& pointer,
                       const std::string& name) {
    rapidjson::Value* const value = RapidJsonUtils::valueByPointer(document, pointer);
    if (!value) {
        throw Failure{name, "Nothing at " + pointer};
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

/* Writes an array of a single kind by its typed write; returns false for any other array. */
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

/* Uses the typed write if it stores the value exactly; a double that is not a float, a large
   integer and an object are copied. */
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

/* Nesting depth of `value`, which parsing has limited. */
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

void assign(rapidjson::Document& document, const std::string& pointer,
            const rapidjson::Value& value) {
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

/* The JSON text of an option. The message says how to write a string, since the shell removes
   quotes that are not escaped. */
rapidjson::Document parseValue(const std::string& pointer, const std::string& text) {
    const std::string name = "--set " + pointer;
    try {
        return parseDocument(name, text, Numbers::Exact);
    } catch (const Failure& failure) {
        if (text.find_first_of("\"[{-0123456789") == 0) {
            throw;
        }
        throw Failure{std::string{failure.what()} + "; strings need quotes: --set '" +
                      escaped(pointer + "=\"" + text) + "\"' or --set-string"};
    }
}

void set(rapidjson::Document& document, const std::string& assignment) {
    const std::size_t equals = assignment.find('=');
    const std::string pointer = assignment.substr(0, equals);
    assign(document, pointer, parseValue(pointer, assignment.substr(equals + 1)));
}

void setString(rapidjson::Document& document, const std::string& assignment) {
    const std::size_t equals = assignment.find('=');
    const char* const text = assignment.data() + equals + 1;
    assign(document, assignment.substr(0, equals),
           rapidjson::Value{text, rapidjson::SizeType(assignment.size() - equals - 1),
                            document.GetAllocator()});
}

void erase(rapidjson::Document& document, const std::string& pointer) {
    rapidjson::Value* const value = &find(document, pointer, "--delete");
    rapidjson::Value& parent = find(document, pointer.substr(0, pointer.rfind('/')), "--delete");
    if (parent.IsArray()) {
        parent.Erase(value);
        return;
    }
    parent.EraseMember(std::find_if(parent.MemberBegin(), parent.MemberEnd(),
                                    [&](const auto& member) { return &member.value == value; }));
}

rapidjson::Document read(const std::string& path) {
    const Input input = readInput(path);
    return parseDocument(input.name, input.content, Numbers::Exact);
}

void run(const Options& options) {
    rapidjson::Document document = read(options.path);
    for (const auto& edit : options.edits) {
        edit(document);
    }
    const rapidjson::Value& value = find(document, options.pointer, options.path);
    if (options.raw && value.IsString()) {
        output(options.output,
               Containers::StringView{value.GetString(), value.GetStringLength()} + "\n");
        return;
    }
    const rapidjson::StringBuffer text = printExactly(value, options.format);
    output(options.output, {text.GetString(), text.GetSize()});
}

/* An option that changes the document and can be given more than once. */
CLI::Option* addEdit(CLI::App& command, const std::shared_ptr<Options>& options,
                     const std::string& name, const std::string& typeName,
                     void (*const edit)(rapidjson::Document&, const std::string&),
                     const std::string& description) {
    const auto add = [options, edit](const std::string& text) {
        options->edits.emplace_back(
            [edit, text](rapidjson::Document& document) { edit(document, text); });
    };
    /* Applied at once, since the order of different options matters. */
    return command.add_option_function<std::string>(name, add, description)
        ->type_name(typeName)
        ->trigger_on_parse();
}

} // namespace

void addJsonCommand(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("json", "Print a JSON document or a value in it, and write values");
    const auto options = std::make_shared<Options>();
    command->add_option("FILE", options->path, "The document; - for standard input")->required();
    addEdit(*command, options, "--set", "POINTER=JSON", set,
            "Write a JSON value at a JSON Pointer, and create missing members")
        ->check(checkAssignment);
    addEdit(*command, options, "--set-string", "POINTER=TEXT", setString,
            "Write a string, given without quotes")
        ->check(checkAssignment);
    addEdit(*command, options, "--delete", "POINTER", erase,
            "Remove the member or element at a JSON Pointer")
        ->check(checkMember);
    command
        ->add_option("--pointer", options->pointer,
                     "Print only the value at a JSON Pointer (RFC 6901)")
        ->type_name("POINTER")
        ->check(checkPointer);
    command
        ->add_option("--decimals", options->format.decimals,
                     "Cut off fractional digits after N of them, 1 to 324")
        ->type_name("N")
        ->check(CLI::Range(1, RapidJsonUtils::defaultMaxDecimalPlaces));
    CLI::Option* const indent =
        command
            ->add_option("--indent", options->format.indent,
                         "Indent by N blanks per level, 0 to 32; default: 4")
            ->type_name("N")
            ->check(CLI::Range(0, 32));
    command->add_flag("--compact", options->format.compact, "Print everything on one line")
        ->excludes(indent);
    command->add_flag("--raw", options->raw, "Print a string without quotes and escapes");
    addOutputOption(*command, options->output);
    command->footer("Example, in the root of the sources:\n"
                    "  vespermoor-utils json examples/greeting/user.json --pointer /user/name");
    command->callback([options] { run(*options); });
}

} // namespace VespermoorEngine::Host
