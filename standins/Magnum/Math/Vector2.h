#ifndef VespermoorStandins_Magnum_Math_Vector2_h
#define VespermoorStandins_Magnum_Math_Vector2_h

#include "Magnum/Math/Vector.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

/** Stands in for Magnum's vector of two components. */
template <class T>
class Vector2 : public Vector<2, T> {
public:
    static Vector2& from(T* data) { return *reinterpret_cast<Vector2*>(data); }
    static const Vector2& from(const T* data) { return *reinterpret_cast<const Vector2*>(data); }

    constexpr Vector2() noexcept = default;
    constexpr explicit Vector2(ZeroInitT) noexcept : Vector<2, T>{ZeroInit} {}
    explicit Vector2(Magnum::NoInitT) noexcept : Vector<2, T>{Magnum::NoInit} {}
    constexpr explicit Vector2(T value) noexcept : Vector<2, T>(value) {}
    constexpr Vector2(T x, T y) noexcept : Vector<2, T>(x, y) {}
    template <class U>
    constexpr explicit Vector2(const Vector<2, U>& other) noexcept : Vector<2, T>(other) {}
    constexpr Vector2(const Vector<2, T>& other) noexcept : Vector<2, T>(other) {}

    constexpr T& x() { return this->_data[0]; }
    constexpr const T& x() const { return this->_data[0]; }
    constexpr T& y() { return this->_data[1]; }
    constexpr const T& y() const { return this->_data[1]; }
};

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
