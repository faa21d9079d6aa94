#include "Corrade/Utility/Format.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string>

#include "Corrade/Utility/Assert.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {
namespace Implementation {

namespace {

using Containers::StringView;

/* What stands between the braces: {[index][:[.precision][type]]}. A negative number stands for
   one that isn't given, a zero type for the default of the value. */
struct Placeholder {
    int index = -1;
    int precision = -1;
    char type = 0;
};

bool isIntegerType(char type) {
    return type && std::strchr("doxX", type);
}

bool isFloatType(char type) {
    return type && std::strchr("gGeEfF", type);
}

int parseNumber(const char*& at) {
    if (*at < '0' || *at > '9')
        return -1;
    int number = 0;
    for (; *at >= '0' && *at <= '9'; ++at)
        number = number * 10 + (*at - '0');
    return number;
}

/* The offending character for a message, or nothing at the end of the format. */
StringView characterAt(const char* at) {
    return {at, std::size_t(*at ? 1 : 0)};
}

/* Expects the position behind the opening brace, leaves it behind the closing one. */
Placeholder parsePlaceholder(const char*& at) {
    Placeholder placeholder;
    placeholder.index = parseNumber(at);
    if (*at == ':') {
        ++at;
        if (*at == '.') {
            placeholder.precision = parseNumber(++at);
            CORRADE_ASSERT(
                placeholder.precision != -1,
                "Utility::format(): invalid character in precision specifier:" << characterAt(at),
                {});
        }
        if (*at && *at != '}') {
            placeholder.type = *at++;
            CORRADE_ASSERT(placeholder.type == 'c' || isIntegerType(placeholder.type) ||
                               isFloatType(placeholder.type),
                           "Utility::format(): invalid type specifier:" << characterAt(at - 1), {});
        }
    }
    CORRADE_ASSERT(*at, "Utility::format(): unexpected end of format string", {});
    CORRADE_ASSERT(*at == '}', "Utility::format(): unknown placeholder content:" << characterAt(at),
                   {});
    ++at;
    return placeholder;
}

void appendText(std::string& out, StringView text, Placeholder placeholder) {
    CORRADE_ASSERT(!placeholder.type,
                   "Utility::format(): type specifier can't be used for a string value", );
    out.append(text.data(), std::min(text.size(), std::size_t(placeholder.precision)));
}

/* To capitals for the types that ask for them: digits of the base 16, exponent, "INF". */
void appendCased(std::string& out, StringView text, char type) {
    const bool isUpper = type >= 'A' && type <= 'Z';
    for (const char c : text)
        out += isUpper && c >= 'a' && c <= 'z' ? char(c - ('a' - 'A')) : c;
}

std::chars_format floatFormat(char type) {
    switch (type) {
    case 'f':
    case 'F':
        return std::chars_format::fixed;
    case 'e':
    case 'E':
        return std::chars_format::scientific;
    default:
        return std::chars_format::general;
    }
}

/* As std::printf() in the "C" locale, whatever the locale. */
template <class T>
void appendFloat(std::string& out, T value, int digits, Placeholder placeholder) {
    CORRADE_ASSERT(placeholder.type != 'c',
                   "Utility::format(): character type used for a floating-point value", );
    CORRADE_ASSERT(!isIntegerType(placeholder.type),
                   "Utility::format(): integral type used for a floating-point value", );
    const int precision = placeholder.precision == -1 ? digits : placeholder.precision;
    std::string text(64, '\0');
    std::to_chars_result result;
    while ((result = std::to_chars(text.data(), text.data() + text.size(), value,
                                   floatFormat(placeholder.type), precision))
               .ec == std::errc::value_too_large)
        text.resize(2 * text.size());
    appendCased(out, {text.data(), std::size_t(result.ptr - text.data())}, placeholder.type);
}

bool isNegative(const FormatArgument& argument) {
    return argument.kind == FormatArgument::Kind::Signed &&
           static_cast<long long>(argument.integer) < 0;
}

int baseOf(char type) {
    return type == 'o' ? 8 : type == 'x' || type == 'X' ? 16 : 10;
}

/* Without its sign, but a negative one in two's complement of its width outside of the base 10. */
unsigned long long magnitude(const FormatArgument& argument, int base) {
    const unsigned long long value = argument.integer;
    if (!isNegative(argument))
        return value;
    return base == 10 ? 0 - value : value & (~0ull >> (8 * (sizeof(value) - argument.bytes)));
}

void appendCharacter(std::string& out, const FormatArgument& argument) {
    CORRADE_ASSERT(!argument.isBool,
                   "Utility::format(): character type used for a boolean value", );
    CORRADE_ASSERT(argument.bytes <= sizeof(int),
                   "Utility::format(): character type used for a 64-bit value", );
    out += char(argument.integer);
}

void appendInteger(std::string& out, const FormatArgument& argument, Placeholder placeholder) {
    CORRADE_ASSERT(!isFloatType(placeholder.type),
                   "Utility::format(): floating-point type used for an integral value", );
    if (placeholder.type == 'c')
        return appendCharacter(out, argument);
    /* The least number of digits; none at all means that a zero vanishes. */
    const int precision = placeholder.precision == -1 ? 1 : placeholder.precision;
    if (!precision && !argument.integer)
        return;
    const int base = baseOf(placeholder.type);
    char digits[32];
    const char* const end =
        std::to_chars(digits, digits + sizeof(digits), magnitude(argument, base), base).ptr;
    const std::size_t size = std::size_t(end - digits);
    if (base == 10 && isNegative(argument))
        out += '-';
    out.append(std::max(size, std::size_t(precision)) - size, '0');
    appendCased(out, {digits, size}, placeholder.type);
}

void appendArgument(std::string& out, const FormatArgument& argument, Placeholder placeholder) {
    switch (argument.kind) {
    case FormatArgument::Kind::Text:
        return appendText(out, {argument.text.data, argument.text.size}, placeholder);
    case FormatArgument::Kind::Double:
        return appendFloat(out, argument.doubleValue, argument.digits, placeholder);
    case FormatArgument::Kind::LongDouble:
        return appendFloat(out, argument.longDoubleValue, argument.digits, placeholder);
    case FormatArgument::Kind::Signed:
    case FormatArgument::Kind::Unsigned:
        return appendInteger(out, argument, placeholder);
    }
}

/* A placeholder without an argument stays as it stands. */
void formatTo(std::string& out, const char* format, const FormatArgument* arguments,
              std::size_t count) {
    std::size_t next = 0;
    for (const char* at = format; *at;) {
        const std::size_t plain = std::strcspn(at, "{}");
        out.append(at, plain);
        at += plain;
        if (!*at)
            break;
        if (at[0] == at[1]) {
            out += *at;
            at += 2;
            continue;
        }
        CORRADE_ASSERT(*at == '{', "Utility::format(): mismatched }", );
        const char* const begin = at++;
        const Placeholder placeholder = parsePlaceholder(at);
        if (placeholder.index != -1)
            next = std::size_t(placeholder.index);
        if (next < count)
            appendArgument(out, arguments[next], placeholder);
        else
            out.append(begin, at);
        ++next;
    }
}

} // namespace

Containers::String format(const char* format, const FormatArgument* arguments, std::size_t count) {
    std::string out;
    formatTo(out, format, arguments, count);
    return Containers::String{out.data(), out.size()};
}

std::size_t formatInto(Containers::MutableStringView buffer, const char* format,
                       const FormatArgument* arguments, std::size_t count) {
    std::string out;
    formatTo(out, format, arguments, count);
    if (buffer.data()) {
        CORRADE_ASSERT(out.size() <= buffer.size(),
                       "Utility::formatInto(): buffer too small, expected at least"
                           << out.size() << "but got" << buffer.size(),
                       {});
        std::copy(out.begin(), out.end(), buffer.data());
    }
    return out.size();
}

void formatInto(std::FILE* file, const char* format, const FormatArgument* arguments,
                std::size_t count) {
    std::string out;
    formatTo(out, format, arguments, count);
    std::fwrite(out.data(), 1, out.size(), file);
}

} // namespace Implementation
} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade
