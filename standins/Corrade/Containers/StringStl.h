#ifndef VespermoorStandins_Corrade_Containers_StringStl_h
#define VespermoorStandins_Corrade_Containers_StringStl_h

/** @file Stand-in for Corrade's conversions between its strings and `std::string`. */

#include <string>

#include "Corrade/Containers/String.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {
namespace Implementation {

template <>
struct StringConverter<std::string> {
    static String from(const std::string& other) { return {other.data(), other.size()}; }
    static std::string to(const String& other) { return {other.data(), other.size()}; }
};
template <>
struct StringViewConverter<const char, std::string> {
    static StringView from(const std::string& other) {
        return {other.data(), other.size(), StringViewFlag::NullTerminated};
    }
    static std::string to(StringView other) {
        return std::string(std::string_view{other.data(), other.size()});
    }
};

} // namespace Implementation
} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
