#ifndef VespermoorStandins_Magnum_Math_Vector_h
#define VespermoorStandins_Magnum_Math_Vector_h

#include <cstddef>
#include <type_traits>

#include "Magnum/Magnum.h"

namespace Magnum {
inline namespace VespermoorStandins {
namespace Math {

/** Stand-in for Magnum's vector of a fixed size, without its arithmetic. */
template <std::size_t size, class T>
class Vector {
public:
    constexpr Vector() noexcept : _data{} {}
    template <class... Next, class = std::enable_if_t<sizeof...(Next) + 1 == size>>
    constexpr Vector(T first, Next... next) noexcept : _data{first, T(next)...} {}

    constexpr auto data() -> T (&)[size] { return _data; }
    constexpr auto data() const -> const T (&)[size] { return _data; }
    constexpr const T& operator[](std::size_t i) const { return _data[i]; }

private:
    T _data[size];
};

} // namespace Math
} // namespace VespermoorStandins
} // namespace Magnum

#endif
