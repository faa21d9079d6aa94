#ifndef VespermoorStandins_Corrade_Utility_Format_h
#define VespermoorStandins_Corrade_Utility_Format_h

#include <cstddef>
#include <limits>
#include <type_traits>
#include <variant>

#include "Corrade/Containers/String.h"
#include "Corrade/Containers/StringView.h"
#include "Corrade/visibility.h"

/** @file @brief Stands in for Corrade::Utility::format(). */

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {

namespace Implementation {

struct FormattedFloat {
    double value;
    int digits;
};
using FormatArgument =
    std::variant<long long, unsigned long long, FormattedFloat, Containers::StringView>;

/* No more than the real one takes: neither the strings of the standard library, nor what converts
   to a view, nor characters that are not bytes, nor scoped enumerations. */
template <class T, class... Others>
constexpr bool isOneOf = (std::is_same_v<T, Others> || ...);
template <class T>
constexpr bool isText = isOneOf<std::decay_t<T>, const char*, char*, Containers::StringView,
                                Containers::MutableStringView, Containers::String>;
template <class T>
constexpr bool isEnumeration =
    std::conjunction_v<std::is_enum<T>, std::is_convertible<T, long long>>;
template <class T>
constexpr bool isInteger = std::is_integral_v<T> && !isOneOf<T, wchar_t, char16_t, char32_t>;

template <class T>
FormatArgument formatArgument(const T& value) {
    if constexpr (isEnumeration<T>) {
        return formatArgument(std::underlying_type_t<T>(value));
    } else if constexpr (isInteger<T>) {
        using Widest = std::conditional_t<std::is_signed_v<T>, long long, unsigned long long>;
        return Widest(value);
    } else if constexpr (isOneOf<T, float, double>) {
        return FormattedFloat{value, std::numeric_limits<T>::digits10};
    } else {
        static_assert(isText<T>, "no argument of this type can be formatted");
        return Containers::StringView{value};
    }
}

VESPERMOOR_STANDINS_EXPORT Containers::String
format(const char* format, const FormatArgument* arguments, std::size_t count);

} // namespace Implementation

/** Of the placeholders of the real one only `{}`, `{0}` and `{:.4f}`; any other aborts. */
template <class... Args>
Containers::String format(const char* format, const Args&... args) {
    const Implementation::FormatArgument arguments[]{Implementation::formatArgument(args)..., 0ll};
    return Implementation::format(format, arguments, sizeof...(args));
}

} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade

#endif
