#include "Corrade/Utility/Format.h"

#include <charconv>
#include <cstring>
#include <string>

#include "Corrade/Containers/Implementation/Assertion.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {
namespace Implementation {

namespace {

/* What stands between the braces. A negative number stands for one that isn't given. */
struct Placeholder {
    int index = -1;
    int precision = -1;
};

int parseNumber(const char*& at) {
    if (*at < '0' || *at > '9')
        return -1;
    int number = 0;
    for (; *at >= '0' && *at <= '9'; ++at)
        number = number * 10 + (*at - '0');
    return number;
}

/* Expects the position behind the opening brace, leaves it behind the closing one. */
Placeholder parsePlaceholder(const char*& at) {
    const char* const begin = at;
    Placeholder placeholder;
    placeholder.index = parseNumber(at);
    if (at[0] == ':' && at[1] == '.') {
        at += 2;
        placeholder.precision = parseNumber(at);
        if (placeholder.precision != -1 && *at == 'f')
            ++at;
        else
            at = begin;
    }
    VESPERMOOR_STANDINS_ASSERT(*at, "Utility::format(): unexpected end of format string");
    VESPERMOOR_STANDINS_ASSERT(
        *at == '}', "Utility::format(): the stand-in knows {}, {0} and {:.4f} only, not {%s",
        begin);
    ++at;
    return placeholder;
}

/* As std::printf() in the "C" locale, whatever the locale. */
void append(std::string& out, FormattedFloat number, int precision) {
    const bool fixed = precision != -1;
    std::string text(32, '\0');
    std::to_chars_result result;
    while ((result = std::to_chars(text.data(), text.data() + text.size(), number.value,
                                   fixed ? std::chars_format::fixed : std::chars_format::general,
                                   fixed ? precision : number.digits))
               .ec == std::errc::value_too_large)
        text.resize(2 * text.size());
    out.append(text.data(), result.ptr);
}

void append(std::string& out, Containers::StringView text, int) {
    out.append(text.data(), text.size());
}

template <class Integer>
void append(std::string& out, Integer number, int) {
    out += std::to_string(number);
}

void appendArgument(std::string& out, const FormatArgument& argument, int precision) {
    VESPERMOOR_STANDINS_ASSERT(
        precision == -1 || std::holds_alternative<FormattedFloat>(argument),
        "Utility::format(): floating-point type used for an integral value or a text");
    std::visit([&](const auto& value) { append(out, value, precision); }, argument);
}

} // namespace

/* A placeholder without an argument stays as it stands. */
Containers::String format(const char* format, const FormatArgument* arguments, std::size_t count) {
    std::string out;
    std::size_t next = 0;
    for (const char* at = format; *at;) {
        const std::size_t plain = std::strcspn(at, "{}");
        out.append(at, plain);
        at += plain;
        if (*at && at[0] == at[1]) {
            out += *at;
            at += 2;
        } else if (*at) {
            VESPERMOOR_STANDINS_ASSERT(*at == '{', "Utility::format(): mismatched }");
            const char* const begin = at++;
            const Placeholder placeholder = parsePlaceholder(at);
            if (placeholder.index != -1)
                next = std::size_t(placeholder.index);
            if (next < count)
                appendArgument(out, arguments[next], placeholder.precision);
            else
                out.append(begin, at);
            ++next;
        }
    }
    return Containers::String{out.data(), out.size()};
}

} // namespace Implementation
} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade
