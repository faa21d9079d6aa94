#ifndef VespermoorStandins_Magnum_Math_Vector3_h
#define VespermoorStandins_Magnum_Math_Vector3_h

#include "Magnum/Math/Vector.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

/** Stand-in for Magnum's vector of three components. */
template <class T>
class Vector3 : public Vector<3, T> {
public:
    constexpr Vector3() noexcept = default;
    constexpr Vector3(T x, T y, T z) noexcept : Vector<3, T>(x, y, z) {}
};

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
