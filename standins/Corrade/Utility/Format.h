#ifndef VespermoorStandins_Corrade_Utility_Format_h
#define VespermoorStandins_Corrade_Utility_Format_h

#include <cstddef>
#include <type_traits>
#include <variant>

#include "Corrade/Containers/String.h"
#include "Corrade/Containers/StringView.h"
#include "Corrade/visibility.h"

/** @file @brief Stand-in for Corrade::Utility::format(). */

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {

namespace Implementation {

using FormatArgument = std::variant<long long, unsigned long long, double, Containers::StringView>;

/* Takes no more than the real one: no standard strings or other types that convert to a view, no
   enumerations, and no characters. */
template <class T, class... Others>
constexpr bool isOneOf = (std::is_same_v<T, Others> || ...);
template <class T>
constexpr bool isText =
    isOneOf<std::decay_t<T>, const char*, char*, Containers::StringView, Containers::String>;

template <class T>
FormatArgument formatArgument(const T& value) {
    if constexpr (isOneOf<T, int, long, long long>) {
        return static_cast<long long>(value);
    } else if constexpr (isOneOf<T, unsigned, unsigned long, unsigned long long>) {
        return static_cast<unsigned long long>(value);
    } else if constexpr (isOneOf<T, double>) {
        return value;
    } else {
        static_assert(isText<T>, "no argument of this type can be formatted");
        return Containers::StringView{value};
    }
}

VESPERMOOR_STANDINS_EXPORT Containers::String
format(const char* format, const FormatArgument* arguments, std::size_t count);

} // namespace Implementation

/**
 * Supports the placeholders `{}` for texts and integers and `{:.4f}` for doubles; aborts on any
 * other brace.
 */
template <class... Args>
Containers::String format(const char* format, const Args&... args) {
    const Implementation::FormatArgument arguments[]{Implementation::formatArgument(args)..., 0ll};
    return Implementation::format(format, arguments, sizeof...(args));
}

} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade

#endif
