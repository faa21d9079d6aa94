#include "Documents.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>

#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/StringStl.h>
#include <Corrade/Utility/Format.h>
#include <VespermoorEditor/Utils/RapidJsonUtils.h>

#include "Failure.h"
#include "Files.h"

namespace VespermoorEngine::Host {

namespace {

Containers::String reasonOf(const rapidjson::ParseErrorCode code) {
    const Containers::StringView reason = rapidjson::GetParseError_En(code);
    return reason.exceptSuffix(reason.hasSuffix('.') ? 1 : 0);
}

/* Reads JSON without recursion and without keeping it, and takes what the library takes: as many
   levels, and only numbers that fit a double. */
class Validator : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Validator> {
public:
    bool Double(const double number) { return std::isfinite(number); }
    bool StartObject() { return ++levels <= RapidJsonUtils::maxNesting; }
    bool EndObject(rapidjson::SizeType) { return --levels >= 0; }
    bool StartArray() { return StartObject(); }
    bool EndArray(rapidjson::SizeType) { return --levels >= 0; }

    /* Why this has ended the reading, if it has. */
    Containers::String reason() const {
        return levels > RapidJsonUtils::maxNesting ? nestedTooDeep()
                                                   : reasonOf(rapidjson::kParseErrorNumberTooBig);
    }

private:
    int levels = 0;
};

Containers::StringView withoutByteOrderMark(const Containers::StringView json) {
    return json.exceptPrefix(json.hasPrefix("\xef\xbb\xbf") ? 3 : 0);
}

/* Throws where `json`, which `name` stands for in the message, is not what the library takes. */
void validate(const Containers::StringView name, const Containers::StringView json) {
    rapidjson::MemoryStream stream{json.data(), json.size()};
    Validator validator;
    const rapidjson::ParseResult result =
        rapidjson::Reader{}.Parse<rapidjson::kParseIterativeFlag>(stream, validator);
    if (!result.IsError() && stream.Tell() == json.size()) {
        return;
    }
    const rapidjson::ParseErrorCode code =
        result.IsError() ? result.Code() : rapidjson::kParseErrorDocumentRootNotSingular;
    const std::size_t offset = result.IsError() ? result.Offset() : stream.Tell();
    const Containers::StringView before = json.prefix(std::min(offset, json.size()));
    const std::size_t line = 1 + std::size_t(std::count(before.begin(), before.end(), '\n'));
    const Containers::StringView newline = before.findLast('\n');
    const std::size_t column =
        1 + std::size_t(before.end() - (newline.data() ? newline.end() : before.begin()));
    throw Failure{Utility::format("{}:{}:{}", name, line, column),
                  code == rapidjson::kParseErrorTermination ? validator.reason() : reasonOf(code)};
}

bool isRegularFile(const Containers::StringView path) {
    std::error_code error;
    return std::filesystem::is_regular_file(std::string{path}, error);
}

} // namespace

Containers::String nestedTooDeep() {
    return Utility::format("Nested deeper than {} levels", RapidJsonUtils::maxNesting);
}

rapidjson::Document readDocument(const Containers::StringView path) {
    /* The library says that a text is no JSON, and reading it again says where and why. A pipe can
       be read only once. */
    if (isRegularFile(path)) {
        Utility::Error silent{nullptr};
        ValueOrError<rapidjson::Document> document = RapidJsonUtils::parseJsonFile(path);
        if (document) {
            return std::move(document).value();
        }
    }
    return parseDocument(path, readFile(path));
}

rapidjson::Document parseDocument(const Containers::StringView name,
                                  const Containers::StringView json) {
    const Containers::StringView text = withoutByteOrderMark(json);
    validate(name, text);
    rapidjson::Document document;
    document.Parse(text.data(), text.size());
    return document;
}

Containers::String printDocument(const rapidjson::Value& value, const int decimals) {
    const Containers::Optional<Containers::String> text =
        RapidJsonUtils::jsonToString(value, decimals);
    return *text + "\n";
}

} // namespace VespermoorEngine::Host
