#include "Corrade/Utility/Format.h"

#include <charconv>
#include <cstring>
#include <string>
#include <string_view>

#include "Corrade/Containers/Implementation/Assertion.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {
namespace Implementation {

namespace {

constexpr std::string_view plain = "{}";
constexpr std::string_view fixed = "{:.4f}";

void append(std::string& out, Containers::StringView text) {
    out.append(text.data(), text.size());
}

template <class Integer>
void append(std::string& out, Integer number) {
    out += std::to_string(number);
}

/* As std::printf() in the "C" locale, regardless of the current one. The largest double has 309
   digits. */
void append(std::string& out, double number) {
    char text[320];
    out.append(text, std::to_chars(text, std::end(text), number, std::chars_format::fixed, 4).ptr);
}

} // namespace

Containers::String format(const char* format, const FormatArgument* arguments, std::size_t count) {
    std::string out;
    for (const FormatArgument* const end = arguments + count;; ++arguments) {
        const std::size_t text = std::strcspn(format, "{}");
        out.append(format, text);
        format += text;
        if (!*format)
            return Containers::String{out.data(), out.size()};
        const bool isFixed = !std::strncmp(format, fixed.data(), fixed.size());
        VESPERMOOR_STANDINS_ASSERT(
            isFixed || !std::strncmp(format, plain.data(), plain.size()),
            "Utility::format(): the stand-in knows {} and {:.4f} only, not %s", format);
        VESPERMOOR_STANDINS_ASSERT(arguments != end &&
                                       isFixed == std::holds_alternative<double>(*arguments),
                                   "Utility::format(): no argument of this kind for %s", format);
        std::visit([&](const auto& value) { append(out, value); }, *arguments);
        format += isFixed ? fixed.size() : plain.size();
    }
}

} // namespace Implementation
} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade
