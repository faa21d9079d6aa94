#ifndef VespermoorStandins_Corrade_Containers_Triple_h
#define VespermoorStandins_Corrade_Containers_Triple_h

#include <type_traits>
#include <utility>

#include "Corrade/Containers/Containers.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

/** Stand-in for Corrade's three values. */
template <class F, class S, class T>
class Triple {
    static_assert(!std::is_lvalue_reference<F>::value && !std::is_lvalue_reference<S>::value &&
                      !std::is_lvalue_reference<T>::value,
                  "use a Reference<T> to store a T& in a Triple");

public:
    constexpr Triple() : _first(), _second(), _third() {}
    constexpr Triple(F first, S second, T third)
        : _first(std::move(first)), _second(std::move(second)), _third(std::move(third)) {}

    constexpr const F& first() const { return _first; }
    constexpr const S& second() const { return _second; }
    constexpr const T& third() const { return _third; }

private:
    F _first;
    S _second;
    T _third;
};

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
