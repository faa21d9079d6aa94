#ifndef VespermoorStandins_Corrade_Containers_StringStlView_h
#define VespermoorStandins_Corrade_Containers_StringStlView_h

/** @file Stands in for Corrade's conversions between its strings and `std::string_view`. */

#include <string_view>

#include "Corrade/Containers/String.h"
#include "Corrade/Containers/StringIterable.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {
namespace Implementation {

template <>
struct StringConverter<std::string_view> {
    static String from(std::string_view other) { return {other.data(), other.size()}; }
    static std::string_view to(const String& other) { return {other.data(), other.size()}; }
};
template <>
struct StringViewConverter<const char, std::string_view> {
    static StringView from(std::string_view other) { return {other.data(), other.size()}; }
    static std::string_view to(StringView other) { return {other.data(), other.size()}; }
};
template <>
struct StringViewConverter<char, std::string_view> {
    static std::string_view to(MutableStringView other) { return {other.data(), other.size()}; }
};
template <>
struct StringIterableConverter<std::string_view>
    : ConvertibleStringIterableConverter<std::string_view> {};

} // namespace Implementation
} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
