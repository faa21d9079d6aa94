#ifndef VespermoorStandins_Corrade_Utility_Utility_h
#define VespermoorStandins_Corrade_Utility_Utility_h

/** @file @brief Stand-in for the forward declarations of Corrade's Utility library. */

namespace Corrade {
inline namespace VespermoorStandins {
namespace Utility {

class Debug;
class Warning;
class Error;

} // namespace Utility
} // namespace VespermoorStandins
} // namespace Corrade

#endif
