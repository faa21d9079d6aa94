#ifndef VespermoorStandins_Magnum_Math_Vector4_h
#define VespermoorStandins_Magnum_Math_Vector4_h

#include "Magnum/Math/Vector.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

/** Stand-in for Magnum's vector of four components. */
template <class T>
class Vector4 : public Vector<4, T> {
public:
    constexpr Vector4() noexcept = default;
    constexpr Vector4(T x, T y, T z, T w) noexcept : Vector<4, T>(x, y, z, w) {}
};

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
