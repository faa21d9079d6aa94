#include "Documents.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>
#include <utility>

#include <Corrade/Containers/StringStl.h>
#include <Corrade/Utility/Format.h>

#include "Files.h"
#include "TextPlace.h"

namespace VespermoorEngine::Host {

namespace {

using namespace Corrade::Containers::Literals;

constexpr double integerMinusZero = std::numeric_limits<double>::quiet_NaN();

Containers::String reasonOf(const rapidjson::ParseErrorCode code) {
    const Containers::StringView reason = rapidjson::GetParseError_En(code);
    return reason.exceptSuffix(reason.hasSuffix('.') ? 1 : 0);
}

/* A document that filters the parser's events: it refuses some of them. */
class ParsedDocument : public rapidjson::Document {
public:
    bool Double(const double number) {
        return std::isfinite(number) ? rapidjson::Document::Double(number) : refuseTooBig();
    }

    /* A number that the parser has checked but not converted. */
    bool RawNumber(const char* const text, const rapidjson::SizeType size, bool) {
        const char* const end = text + size;
        const bool isInteger =
            std::none_of(text, end, [](const char c) { return c == '.' || c == 'e' || c == 'E'; });
        return isInteger ? integer(text, end) : decimal({text, end});
    }

    bool StartObject() { return descend() && rapidjson::Document::StartObject(); }
    bool StartArray() { return descend() && rapidjson::Document::StartArray(); }
    bool EndObject(const rapidjson::SizeType count) {
        --levels;
        return rapidjson::Document::EndObject(count);
    }
    bool EndArray(const rapidjson::SizeType count) {
        --levels;
        return rapidjson::Document::EndArray(count);
    }

    /* Why an event was refused. */
    Containers::String reason;

private:
    bool refuse(Containers::String why) {
        reason = std::move(why);
        return false;
    }
    bool refuseTooBig() { return refuse(reasonOf(rapidjson::kParseErrorNumberTooBig)); }

    bool descend() { return ++levels <= RapidJsonUtils::maxNesting || refuse(nestedTooDeep()); }

    bool integer(const char* const text, const char* const end) {
        std::int64_t number = 0;
        if (std::from_chars(text, end, number).ec == std::errc{}) {
            return number == 0 && *text == '-' ? rapidjson::Document::Double(integerMinusZero)
                                               : Int64(number);
        }
        std::uint64_t large = 0;
        return std::from_chars(text, end, large).ec == std::errc{}
                   ? Uint64(large)
                   : refuse("The integer is not between -2^63 and 2^64 - 1"_s);
    }

    /* The C library rounds to the nearest double, whatever the number of digits. */
    bool decimal(const std::string& text) { return Double(std::strtod(text.data(), nullptr)); }

    int levels = 0;
};

/* Offset of the first escaped low surrogate without a high one before it, or the size of `json`.
   Backslashes occur only in strings, and all escapes in `json` are valid. */
std::size_t findLoneLowSurrogate(const Containers::StringView json) {
    const auto surrogateAt = [&](const char* const escape) -> char {
        const bool isSurrogate = json.end() - escape >= 6 && escape[1] == 'u' &&
                                 (escape[2] | 0x20) == 'd' && escape[3] > '7';
        return !isSurrogate ? '\0' : (escape[3] | 0x20) < 'c' ? 'H' : 'L';
    };
    const char* escape = json.begin();
    while ((escape = std::find(escape, json.end(), '\\')) < json.end()) {
        const char surrogate = surrogateAt(escape);
        if (surrogate == 'L') {
            break;
        }
        escape += std::min<std::ptrdiff_t>(surrogate == 'H' ? 12 : 2, json.end() - escape);
    }
    return std::size_t(escape - json.begin());
}

/* The parser's reason, or a better one if that names another fault. */
Containers::String reasonAt(const rapidjson::ParseErrorCode code,
                            const Containers::StringView rest) {
    const bool isInString = code == rapidjson::kParseErrorStringInvalidEncoding ||
                            code == rapidjson::kParseErrorStringEscapeInvalid;
    if (isInString && !rest.isEmpty() && static_cast<unsigned char>(rest.front()) < 0x20) {
        return "A control character in a string must be escaped"_s;
    }
    if (code == rapidjson::kParseErrorDocumentEmpty && !rest.isEmpty()) {
        return "Unexpected character "_s + rest.prefix(1);
    }
    return reasonOf(code);
}

[[noreturn]] void failAt(const Containers::StringView name, const Containers::StringView json,
                         const std::size_t offset, const Containers::StringView reason) {
    throw Failure{textPlace(name, json, offset), reason};
}

template <unsigned int flags>
rapidjson::Document parse(const Containers::StringView name, const Containers::StringView json) {
    rapidjson::MemoryStream stream{json.data(), json.size()};
    rapidjson::Reader reader;
    rapidjson::ParseResult result;
    ParsedDocument document;
    auto read = [&](rapidjson::Document&) {
        /* Iterative, since deep recursion overflows the stack. */
        result = reader.Parse<flags | rapidjson::kParseIterativeFlag>(stream, document);
        return !result.IsError();
    };
    document.Populate(read);
    /* The parser takes a NUL for the end of the text. */
    if (!result.IsError() && stream.Tell() != json.size()) {
        result.Set(rapidjson::kParseErrorDocumentRootNotSingular, stream.Tell());
    }
    const std::size_t offset =
        result.IsError() ? std::min(result.Offset(), json.size()) : json.size();
    const std::size_t lone = findLoneLowSurrogate(json.prefix(offset));
    if (lone != offset) {
        failAt(name, json, lone, reasonOf(rapidjson::kParseErrorStringUnicodeSurrogateInvalid));
    }
    if (result.IsError()) {
        failAt(name, json, offset,
               result.Code() == rapidjson::kParseErrorTermination
                   ? document.reason
                   : reasonAt(result.Code(), json.exceptPrefix(offset)));
    }
    return std::move(document);
}

/* Cuts off all but `decimals` fractional digits. */
std::string decimalText(const double number, const int decimals) {
    char scientific[32]{};
    std::to_chars(scientific, std::end(scientific), std::abs(number),
                  std::chars_format::scientific);
    const char* const mark = std::strchr(scientific, 'e');
    char text[64];
    const auto length = int(std::remove_copy<const char*>(scientific, mark, text, '.') - text);
    const int exponent = std::atoi(mark + 1) - (length - 1);
    return {text, rapidjson::internal::Prettify(text, length, exponent, decimals)};
}

template <class Base>
class ExactWriter : public Base {
public:
    ExactWriter(rapidjson::StringBuffer& buffer, const int decimals)
        : Base{buffer}, decimals{decimals} {}

    bool Double(const double number) {
        const std::string text =
            std::isnan(number) ? "-0"
                               : (std::signbit(number) ? "-" : "") + decimalText(number, decimals);
        return Base::RawValue(text.data(), text.size(), rapidjson::kNumberType);
    }

private:
    int decimals;
};

} // namespace

Containers::String nestedTooDeep() {
    return Utility::format("Nested deeper than {} levels", RapidJsonUtils::maxNesting);
}

rapidjson::Document parseDocument(const Containers::StringView name,
                                  const Containers::StringView json, const Numbers numbers) {
    const Containers::StringView text = json.exceptPrefix(json.hasPrefix("\xef\xbb\xbf") ? 3 : 0);
    return numbers == Numbers::Exact ? parse<rapidjson::kParseNumbersAsStringsFlag>(name, text)
                                     : parse<rapidjson::kParseNoFlags>(name, text);
}

rapidjson::Document readDocument(const Containers::StringView path) {
    return parseDocument(path, readFile(path));
}

rapidjson::StringBuffer printExactly(const rapidjson::Value& value, const JsonFormat& format) {
    rapidjson::StringBuffer buffer;
    if (format.compact) {
        ExactWriter<rapidjson::Writer<rapidjson::StringBuffer>> writer{buffer, format.decimals};
        value.Accept(writer);
    } else {
        ExactWriter<rapidjson::PrettyWriter<rapidjson::StringBuffer>> writer{buffer,
                                                                             format.decimals};
        writer.SetIndent(' ', format.indent);
        value.Accept(writer);
    }
    buffer.Put('\n');
    return buffer;
}

} // namespace VespermoorEngine::Host
