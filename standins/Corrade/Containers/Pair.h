#ifndef VespermoorStandins_Corrade_Containers_Pair_h
#define VespermoorStandins_Corrade_Containers_Pair_h

#include <type_traits>
#include <utility>

#include "Corrade/Containers/Containers.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

/** Stand-in for Corrade's pair of values. */
template <class F, class S>
class Pair {
    static_assert(!std::is_lvalue_reference<F>::value && !std::is_lvalue_reference<S>::value,
                  "use a Reference<T> to store a T& in a Pair");

public:
    constexpr Pair() : _first(), _second() {}
    constexpr Pair(F first, S second) : _first(std::move(first)), _second(std::move(second)) {}

    constexpr F& first() & { return _first; }
    constexpr F first() && { return std::move(_first); }
    constexpr const F& first() const& { return _first; }
    constexpr S& second() & { return _second; }
    constexpr S second() && { return std::move(_second); }
    constexpr const S& second() const& { return _second; }

private:
    F _first;
    S _second;
};

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
