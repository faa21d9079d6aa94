#ifndef VespermoorStandins_Magnum_Math_Quaternion_h
#define VespermoorStandins_Magnum_Math_Quaternion_h

#include "Magnum/Math/Vector4.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

/** Stands in for Magnum's quaternion, the identity by default: x, y and z, then the scalar. */
template <class T>
class Quaternion {
public:
    using Type = T;

    constexpr Quaternion() noexcept : Quaternion{Vector3<T>{}, T(1)} {}
    constexpr explicit Quaternion(IdentityInitT) noexcept : Quaternion{} {}
    constexpr explicit Quaternion(ZeroInitT) noexcept : _xyzw{ZeroInit} {}
    explicit Quaternion(Magnum::NoInitT) noexcept : _xyzw{Magnum::NoInit} {}
    constexpr Quaternion(const Vector3<T>& vector, T scalar) noexcept : _xyzw{vector, scalar} {}
    constexpr explicit Quaternion(const Vector3<T>& vector) noexcept : Quaternion{vector, T(0)} {}

    auto data() -> T (&)[4] { return _xyzw.data(); }
    auto data() const -> const T (&)[4] { return _xyzw.data(); }
    Vector3<T>& vector() { return _xyzw.xyz(); }
    constexpr const Vector3<T> vector() const { return _xyzw.xyz(); }
    constexpr T& scalar() { return _xyzw.w(); }
    constexpr T scalar() const { return _xyzw.w(); }
    constexpr Vector4<T> xyzw() const { return _xyzw; }

    bool operator==(const Quaternion& other) const { return _xyzw == other._xyzw; }
    bool operator!=(const Quaternion& other) const { return !operator==(other); }

private:
    Vector4<T> _xyzw;
};

template <class T>
Debug& operator<<(Debug& debug, const Quaternion<T>& value) {
    return debug << "Quaternion({" << Debug::nospace << value.vector().x() << Debug::nospace << ","
                 << value.vector().y() << Debug::nospace << "," << value.vector().z()
                 << Debug::nospace << "}," << value.scalar() << Debug::nospace << ")";
}

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
