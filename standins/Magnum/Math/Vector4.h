#ifndef VespermoorStandins_Magnum_Math_Vector4_h
#define VespermoorStandins_Magnum_Math_Vector4_h

#include "Magnum/Math/Vector3.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

/** Stands in for Magnum's vector of four components. */
template <class T>
class Vector4 : public Vector<4, T> {
public:
    static Vector4& from(T* data) { return *reinterpret_cast<Vector4*>(data); }
    static const Vector4& from(const T* data) { return *reinterpret_cast<const Vector4*>(data); }

    constexpr Vector4() noexcept = default;
    constexpr explicit Vector4(ZeroInitT) noexcept : Vector<4, T>{ZeroInit} {}
    explicit Vector4(Magnum::NoInitT) noexcept : Vector<4, T>{Magnum::NoInit} {}
    constexpr explicit Vector4(T value) noexcept : Vector<4, T>(value) {}
    constexpr Vector4(T x, T y, T z, T w) noexcept : Vector<4, T>(x, y, z, w) {}
    constexpr Vector4(const Vector3<T>& xyz, T w) noexcept
        : Vector4{xyz.x(), xyz.y(), xyz.z(), w} {}
    template <class U>
    constexpr explicit Vector4(const Vector<4, U>& other) noexcept : Vector<4, T>(other) {}
    constexpr Vector4(const Vector<4, T>& other) noexcept : Vector<4, T>(other) {}

    constexpr T& x() { return this->_data[0]; }
    constexpr const T& x() const { return this->_data[0]; }
    constexpr T& y() { return this->_data[1]; }
    constexpr const T& y() const { return this->_data[1]; }
    constexpr T& z() { return this->_data[2]; }
    constexpr const T& z() const { return this->_data[2]; }
    constexpr T& w() { return this->_data[3]; }
    constexpr const T& w() const { return this->_data[3]; }

    Vector3<T>& xyz() { return Vector3<T>::from(this->_data); }
    constexpr const Vector3<T> xyz() const { return {x(), y(), z()}; }
};

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
