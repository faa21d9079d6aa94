#ifndef VespermoorStandins_Magnum_Math_Vector_h
#define VespermoorStandins_Magnum_Math_Vector_h

#include <cmath>
#include <cstddef>
#include <type_traits>

#include "Magnum/Magnum.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {
namespace Implementation {

/* Exact for integers, otherwise near zero by the difference itself, elsewhere by its share of both
   magnitudes. */
template <class T>
bool equals(T a, T b) {
    if (std::is_integral<T>::value || a == b)
        return a == b;
    constexpr T epsilon = std::is_same<T, float>::value ? T(1.0e-5) : T(1.0e-14);
    const T difference = std::abs(a - b);
    if (a == T{} || b == T{} || difference < epsilon)
        return difference < epsilon;
    return difference / (std::abs(a) + std::abs(b)) < epsilon;
}

} // namespace Implementation

/** Stands in for Magnum's vector of a size that the type says; its arithmetic is left out. */
template <std::size_t size, class T>
class Vector {
public:
    constexpr Vector() noexcept : _data{} {}
    template <class... Next, class = std::enable_if_t<sizeof...(Next) + 1 == size>>
    constexpr Vector(T first, Next... next) noexcept : _data{first, T(next)...} {}

    constexpr auto data() -> T (&)[size] { return _data; }
    constexpr auto data() const -> const T (&)[size] { return _data; }
    constexpr T& operator[](std::size_t i) { return _data[i]; }
    constexpr const T& operator[](std::size_t i) const { return _data[i]; }

    bool operator==(const Vector& other) const {
        for (std::size_t i = 0; i != size; ++i)
            if (!Implementation::equals(_data[i], other._data[i]))
                return false;
        return true;
    }
    bool operator!=(const Vector& other) const { return !operator==(other); }

private:
    T _data[size];
};

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
