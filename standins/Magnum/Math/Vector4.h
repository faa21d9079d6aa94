#ifndef VespermoorStandins_Magnum_Math_Vector4_h
#define VespermoorStandins_Magnum_Math_Vector4_h

#include "Magnum/Math/Vector.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

/** Stands in for Magnum's vector of four components. */
template <class T>
class Vector4 : public Vector<4, T> {
public:
    constexpr Vector4() noexcept = default;
    constexpr Vector4(T x, T y, T z, T w) noexcept : Vector<4, T>(x, y, z, w) {}

    constexpr T& x() { return (*this)[0]; }
    constexpr const T& x() const { return (*this)[0]; }
    constexpr T& y() { return (*this)[1]; }
    constexpr const T& y() const { return (*this)[1]; }
    constexpr T& z() { return (*this)[2]; }
    constexpr const T& z() const { return (*this)[2]; }
    constexpr T& w() { return (*this)[3]; }
    constexpr const T& w() const { return (*this)[3]; }
};

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
