#ifndef VespermoorStandins_Magnum_Math_Quaternion_h
#define VespermoorStandins_Magnum_Math_Quaternion_h

#include "Magnum/Math/Vector3.h"
#include "Magnum/Math/Vector4.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

/** Stand-in for Magnum's quaternion, the identity by default: x, y and z, then the scalar. */
template <class T>
class Quaternion {
public:
    constexpr Quaternion() noexcept : Quaternion{{}, T(1)} {}
    constexpr Quaternion(const Vector3<T>& vector, T scalar) noexcept
        : _xyzw{vector[0], vector[1], vector[2], scalar} {}

    auto data() -> T (&)[4] { return _xyzw.data(); }
    auto data() const -> const T (&)[4] { return _xyzw.data(); }

private:
    Vector4<T> _xyzw;
};

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
