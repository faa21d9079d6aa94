#ifndef VespermoorStandins_Magnum_Math_Matrix4_h
#define VespermoorStandins_Magnum_Math_Matrix4_h

#include "Magnum/Math/RectangularMatrix.h"
#include "Magnum/Math/Vector4.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

/** Stands in for Magnum's transformation in space, the identity by default. */
template <class T>
class Matrix4 : public RectangularMatrix<4, 4, T> {
public:
    static constexpr Matrix4 translation(const Vector3<T>& vector) {
        Matrix4 matrix;
        matrix[3] = Vector4<T>{vector, T(1)};
        return matrix;
    }

    constexpr Matrix4() noexcept : Matrix4{IdentityInit} {}
    constexpr explicit Matrix4(IdentityInitT, T value = T(1)) noexcept
        : RectangularMatrix<4, 4, T>{IdentityInit, value} {}
    constexpr explicit Matrix4(ZeroInitT) noexcept : RectangularMatrix<4, 4, T>{ZeroInit} {}
    explicit Matrix4(Magnum::NoInitT) noexcept : RectangularMatrix<4, 4, T>{Magnum::NoInit} {}
    constexpr Matrix4(const Vector4<T>& first, const Vector4<T>& second, const Vector4<T>& third,
                      const Vector4<T>& fourth) noexcept
        : RectangularMatrix<4, 4, T>{first, second, third, fourth} {}

    Vector3<T>& translation() { return Vector3<T>::from(&(*this)[3][0]); }
    constexpr Vector3<T> translation() const {
        return {(*this)[3][0], (*this)[3][1], (*this)[3][2]};
    }
};

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
