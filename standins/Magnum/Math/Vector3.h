#ifndef VespermoorStandins_Magnum_Math_Vector3_h
#define VespermoorStandins_Magnum_Math_Vector3_h

#include "Magnum/Math/Vector2.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

/** Stands in for Magnum's vector of three components. */
template <class T>
class Vector3 : public Vector<3, T> {
public:
    static Vector3& from(T* data) { return *reinterpret_cast<Vector3*>(data); }
    static const Vector3& from(const T* data) { return *reinterpret_cast<const Vector3*>(data); }

    constexpr Vector3() noexcept = default;
    constexpr explicit Vector3(ZeroInitT) noexcept : Vector<3, T>{ZeroInit} {}
    explicit Vector3(Magnum::NoInitT) noexcept : Vector<3, T>{Magnum::NoInit} {}
    constexpr explicit Vector3(T value) noexcept : Vector<3, T>(value) {}
    constexpr Vector3(T x, T y, T z) noexcept : Vector<3, T>(x, y, z) {}
    constexpr Vector3(const Vector2<T>& xy, T z) noexcept : Vector3{xy.x(), xy.y(), z} {}
    template <class U>
    constexpr explicit Vector3(const Vector<3, U>& other) noexcept : Vector<3, T>(other) {}
    constexpr Vector3(const Vector<3, T>& other) noexcept : Vector<3, T>(other) {}

    constexpr T& x() { return this->_data[0]; }
    constexpr const T& x() const { return this->_data[0]; }
    constexpr T& y() { return this->_data[1]; }
    constexpr const T& y() const { return this->_data[1]; }
    constexpr T& z() { return this->_data[2]; }
    constexpr const T& z() const { return this->_data[2]; }

    Vector2<T>& xy() { return Vector2<T>::from(this->_data); }
    constexpr const Vector2<T> xy() const { return {x(), y()}; }
};

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
