#ifndef VespermoorStandins_Magnum_Math_Matrix4_h
#define VespermoorStandins_Magnum_Math_Matrix4_h

#include "Magnum/Math/Vector4.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

/** Stand-in for Magnum's transformation in space, stored column after column. */
template <class T>
class Matrix4 {
public:
    /** The identity. */
    constexpr Matrix4() noexcept
        : Matrix4{{T(1), T(0), T(0), T(0)},
                  {T(0), T(1), T(0), T(0)},
                  {T(0), T(0), T(1), T(0)},
                  {T(0), T(0), T(0), T(1)}} {}
    constexpr Matrix4(const Vector4<T>& first, const Vector4<T>& second, const Vector4<T>& third,
                      const Vector4<T>& fourth) noexcept
        : _columns{first, second, third, fourth} {}

    auto data() -> T (&)[16] { return reinterpret_cast<T(&)[16]>(_columns); }
    auto data() const -> const T (&)[16] { return reinterpret_cast<const T(&)[16]>(_columns); }

private:
    Vector4<T> _columns[4];
};

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
