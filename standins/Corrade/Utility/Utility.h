#ifndef VespermoorStandins_Corrade_Utility_Utility_h
#define VespermoorStandins_Corrade_Utility_Utility_h

#include "Corrade/Containers/Containers.h"

/** @file @brief Stands in for the forward declarations of Corrade's Utility library. */

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {

class Debug;
class Warning;
class Error;
class Fatal;

} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade

#endif
