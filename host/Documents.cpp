#include "Documents.h"

#include <algorithm>

#include <Corrade/Containers/Optional.h>
#include <Corrade/Utility/Format.h>
#include <VespermoorEditor/Utils/RapidJsonUtils.h>

#include "Failure.h"
#include "Files.h"

namespace VespermoorEngine::Host {

namespace {

/* What a parse without a document, and without recursion, says of `json`. */
rapidjson::ParseResult validate(const Containers::StringView json) {
    rapidjson::MemoryStream memory{json.data(), json.size()};
    rapidjson::EncodedInputStream<rapidjson::UTF8<>, rapidjson::MemoryStream> stream{memory};
    rapidjson::BaseReaderHandler<> ignore;
    return rapidjson::Reader{}.Parse<rapidjson::kParseIterativeFlag>(stream, ignore);
}

/* The library says that a text is no JSON; this says where and why. */
Failure invalid(const Containers::StringView name, const Containers::StringView json) {
    const rapidjson::ParseResult result = validate(json);
    if (!result.IsError()) {
        return {name, Utility::format("Nested deeper than {} levels", RapidJsonUtils::maxNesting)};
    }
    const Containers::StringView before = json.prefix(std::min(result.Offset(), json.size()));
    const std::size_t line = 1 + std::size_t(std::count(before.begin(), before.end(), '\n'));
    const Containers::StringView newline = before.findLast('\n');
    const std::size_t column =
        1 + std::size_t(before.end() - (newline.data() ? newline.end() : before.begin()));
    const Containers::StringView reason = rapidjson::GetParseError_En(result.Code());
    return {Utility::format("{}:{}:{}", name, line, column),
            reason.hasSuffix('.') ? reason.exceptSuffix(1) : reason};
}

} // namespace

rapidjson::Document readDocument(const Containers::StringView path) {
    {
        Utility::Error silent{nullptr};
        ValueOrError<rapidjson::Document> document = RapidJsonUtils::parseJsonFile(path);
        if (document) {
            return std::move(document).value();
        }
    }
    throw invalid(path, readFile(path));
}

rapidjson::Document parseDocument(const Containers::StringView name,
                                  const Containers::StringView json) {
    rapidjson::Document document;
    document.Parse<rapidjson::kParseIterativeFlag>(json.data(), json.size());
    if (document.HasParseError()) {
        throw invalid(name, json);
    }
    return document;
}

Containers::String printDocument(const rapidjson::Value& value, const int decimals) {
    const Containers::Optional<Containers::String> text =
        RapidJsonUtils::jsonToString(value, decimals);
    return *text + "\n";
}

} // namespace VespermoorEngine::Host
