#ifndef VespermoorStandins_Magnum_Math_TypeTraits_h
#define VespermoorStandins_Magnum_Math_TypeTraits_h

#include <cmath>
#include <type_traits>

#include "Magnum/Math/Math.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

/** Stands in for the comparison of Magnum's math types: exact for integers, fuzzy otherwise. */
template <class T>
struct TypeTraits {
    TypeTraits() = delete;

    static constexpr T epsilon() {
        if (std::is_integral<T>::value)
            return T(1);
        return std::is_same<T, Float>::value ? T(1.0e-5) : T(1.0e-14);
    }

    /** Near zero the difference itself is compared, elsewhere its share of both magnitudes. */
    static bool equals(T a, T b) {
        if (std::is_integral<T>::value || a == b)
            return a == b;
        const T difference = std::abs(a - b);
        if (a == T{} || b == T{} || difference < epsilon())
            return difference < epsilon();
        return difference / (std::abs(a) + std::abs(b)) < epsilon();
    }
};

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
