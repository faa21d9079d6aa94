#ifndef VespermoorStandins_Corrade_Utility_String_h
#define VespermoorStandins_Corrade_Utility_String_h

#include "Corrade/Containers/String.h"
#include "Corrade/Containers/StringView.h"
#include "Corrade/visibility.h"

/** @file @brief Stands in for Corrade::Utility::String: ASCII case and replacing. */

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {
namespace String {

VESPERMOOR_STANDINS_EXPORT void lowercaseInPlace(Containers::MutableStringView string);
VESPERMOOR_STANDINS_EXPORT Containers::String lowercase(Containers::StringView string);
VESPERMOOR_STANDINS_EXPORT Containers::String lowercase(Containers::String string);
VESPERMOOR_STANDINS_EXPORT void uppercaseInPlace(Containers::MutableStringView string);
VESPERMOOR_STANDINS_EXPORT Containers::String uppercase(Containers::StringView string);
VESPERMOOR_STANDINS_EXPORT Containers::String uppercase(Containers::String string);

VESPERMOOR_STANDINS_EXPORT Containers::String replaceFirst(Containers::StringView string,
                                                           Containers::StringView search,
                                                           Containers::StringView replace);
VESPERMOOR_STANDINS_EXPORT Containers::String replaceAll(Containers::StringView string,
                                                         Containers::StringView search,
                                                         Containers::StringView replace);
VESPERMOOR_STANDINS_EXPORT Containers::String replaceAll(Containers::String string, char search,
                                                         char replace);
VESPERMOOR_STANDINS_EXPORT void replaceAllInPlace(Containers::MutableStringView string, char search,
                                                  char replace);

} // namespace String
} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade

#endif
