#ifndef VespermoorStandins_Corrade_Utility_Format_h
#define VespermoorStandins_Corrade_Utility_Format_h

#include <cstddef>
#include <cstdio>
#include <limits>
#include <type_traits>

#include "Corrade/Containers/String.h"
#include "Corrade/Containers/StringView.h"
#include "Corrade/visibility.h"

/** @file @brief Stands in for Corrade::Utility::format() and its relatives. */

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {

namespace Implementation {

/* One value to be printed, without its type. Integers keep their width, since a negative one is
   printed in two's complement in the bases 8 and 16. */
struct FormatArgument {
    enum class Kind : unsigned char { Signed, Unsigned, Double, LongDouble, Text };

    template <class T> /*implicit*/ FormatArgument(const T& value);

    Kind kind;
    bool isBool = false;
    unsigned char bytes = 0;
    int digits = 0;
    union {
        unsigned long long integer;
        double doubleValue;
        long double longDoubleValue;
        struct {
            const char* data;
            std::size_t size;
        } text;
    };

private:
    template <class T>
    void setInteger(T value);
};

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
void FormatArgument::setInteger(T value) {
    using Integer = std::conditional_t<sizeof(T) < sizeof(int), int, T>;
    kind = std::is_signed_v<T> ? Kind::Signed : Kind::Unsigned;
    bytes = sizeof(Integer);
    integer = static_cast<unsigned long long>(value);
}

template <class T>
FormatArgument::FormatArgument(const T& value) {
    if constexpr (isEnumeration<T>) {
        setInteger(static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (isInteger<T>) {
        isBool = std::is_same_v<T, bool>;
        setInteger(value);
    } else if constexpr (std::is_floating_point_v<T>) {
        digits = std::numeric_limits<T>::digits10;
        kind = std::is_same_v<T, long double> ? Kind::LongDouble : Kind::Double;
        if constexpr (std::is_same_v<T, long double>)
            longDoubleValue = value;
        else
            doubleValue = double(value);
    } else {
        static_assert(isText<T>, "no argument of this type can be formatted");
        const Containers::StringView view = value;
        kind = Kind::Text;
        text = {view.data(), view.size()};
    }
}

VESPERMOOR_STANDINS_EXPORT Containers::String
format(const char* format, const FormatArgument* arguments, std::size_t count);
VESPERMOOR_STANDINS_EXPORT std::size_t formatInto(Containers::MutableStringView buffer,
                                                  const char* format,
                                                  const FormatArgument* arguments,
                                                  std::size_t count);
VESPERMOOR_STANDINS_EXPORT void formatInto(std::FILE* file, const char* format,
                                           const FormatArgument* arguments, std::size_t count);

} // namespace Implementation

template <class... Args>
Containers::String format(const char* format, const Args&... args) {
    const Implementation::FormatArgument arguments[]{args..., 0};
    return Implementation::format(format, arguments, sizeof...(args));
}

template <class... Args>
std::size_t formatInto(const Containers::MutableStringView& buffer, const char* format,
                       const Args&... args) {
    const Implementation::FormatArgument arguments[]{args..., 0};
    return Implementation::formatInto(buffer, format, arguments, sizeof...(args));
}

/* Not the view of a C string: the whole array is the room there is. */
template <std::size_t size, class... Args>
std::size_t formatInto(char (&buffer)[size], const char* format, const Args&... args) {
    return formatInto(Containers::MutableStringView{buffer, size}, format, args...);
}

template <class... Args>
void formatInto(std::FILE* file, const char* format, const Args&... args) {
    const Implementation::FormatArgument arguments[]{args..., 0};
    Implementation::formatInto(file, format, arguments, sizeof...(args));
}

template <class... Args>
void print(const char* format, const Args&... args) {
    formatInto(stdout, format, args...);
}

template <class... Args>
void printError(const char* format, const Args&... args) {
    formatInto(stderr, format, args...);
}

} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade

#endif
