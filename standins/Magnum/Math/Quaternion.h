#ifndef VespermoorStandins_Magnum_Math_Quaternion_h
#define VespermoorStandins_Magnum_Math_Quaternion_h

#include "Magnum/Math/Vector3.h"
#include "Magnum/Math/Vector4.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

/** Stands in for Magnum's quaternion, the identity by default: x, y and z, then the scalar. */
template <class T>
class Quaternion {
public:
    constexpr Quaternion() noexcept : Quaternion{{}, T(1)} {}
    constexpr Quaternion(const Vector3<T>& vector, T scalar) noexcept
        : _xyzw{vector.x(), vector.y(), vector.z(), scalar} {}

    auto data() -> T (&)[4] { return _xyzw.data(); }
    auto data() const -> const T (&)[4] { return _xyzw.data(); }
    constexpr const Vector3<T> vector() const { return {_xyzw.x(), _xyzw.y(), _xyzw.z()}; }
    constexpr T& scalar() { return _xyzw.w(); }
    constexpr T scalar() const { return _xyzw.w(); }

    bool operator==(const Quaternion& other) const { return _xyzw == other._xyzw; }
    bool operator!=(const Quaternion& other) const { return !operator==(other); }

private:
    Vector4<T> _xyzw;
};

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
