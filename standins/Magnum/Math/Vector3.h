#ifndef VespermoorStandins_Magnum_Math_Vector3_h
#define VespermoorStandins_Magnum_Math_Vector3_h

#include "Magnum/Math/Vector.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

/** Stands in for Magnum's vector of three components. */
template <class T>
class Vector3 : public Vector<3, T> {
public:
    constexpr Vector3() noexcept = default;
    constexpr Vector3(T x, T y, T z) noexcept : Vector<3, T>(x, y, z) {}

    constexpr T& x() { return (*this)[0]; }
    constexpr const T& x() const { return (*this)[0]; }
    constexpr T& y() { return (*this)[1]; }
    constexpr const T& y() const { return (*this)[1]; }
    constexpr T& z() { return (*this)[2]; }
    constexpr const T& z() const { return (*this)[2]; }
};

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
