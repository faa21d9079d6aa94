#ifndef VespermoorStandins_Corrade_Containers_Triple_h
#define VespermoorStandins_Corrade_Containers_Triple_h

#include <type_traits>
#include <utility>

#include "Corrade/Containers/Containers.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

/** Stands in for Corrade's three values. */
template <class F, class S, class T>
class Triple {
    static_assert(!std::is_lvalue_reference<F>::value && !std::is_lvalue_reference<S>::value &&
                      !std::is_lvalue_reference<T>::value,
                  "use a Reference<T> to store a T& in a Triple");

public:
    constexpr Triple() : _first(), _second(), _third() {}
    constexpr Triple(F first, S second, T third)
        : _first(std::move(first)), _second(std::move(second)), _third(std::move(third)) {}

    constexpr bool operator==(const Triple& other) const {
        return _first == other._first && _second == other._second && _third == other._third;
    }
    constexpr bool operator!=(const Triple& other) const { return !operator==(other); }

    constexpr F& first() & { return _first; }
    constexpr F first() && { return std::move(_first); }
    constexpr const F& first() const& { return _first; }
    constexpr S& second() & { return _second; }
    constexpr S second() && { return std::move(_second); }
    constexpr const S& second() const& { return _second; }
    constexpr T& third() & { return _third; }
    constexpr T third() && { return std::move(_third); }
    constexpr const T& third() const& { return _third; }

private:
    F _first;
    S _second;
    T _third;
};

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
