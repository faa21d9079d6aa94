#ifndef VespermoorStandins_Corrade_Utility_String_h
#define VespermoorStandins_Corrade_Utility_String_h

#include "Corrade/Containers/StringView.h"
#include "Corrade/visibility.h"

/** @file @brief Stand-in for Corrade::Utility::String: ASCII case. */

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {
namespace String {

VESPERMOOR_STANDINS_EXPORT void lowercaseInPlace(Containers::MutableStringView string);

} // namespace String
} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade

#endif
