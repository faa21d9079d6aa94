#ifndef VespermoorStandins_Magnum_Math_Vector2_h
#define VespermoorStandins_Magnum_Math_Vector2_h

#include "Magnum/Math/Vector.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

/** Stand-in for Magnum's vector of two components. */
template <class T>
class Vector2 : public Vector<2, T> {
public:
    constexpr Vector2() noexcept = default;
    constexpr Vector2(T x, T y) noexcept : Vector<2, T>(x, y) {}
};

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
