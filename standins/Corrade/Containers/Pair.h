#ifndef VespermoorStandins_Corrade_Containers_Pair_h
#define VespermoorStandins_Corrade_Containers_Pair_h

#include <cstddef>
#include <type_traits>
#include <utility>

#include "Corrade/Containers/Containers.h"
#include "Corrade/Tags.h"
#include "Corrade/Utility/Debug.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

/** Stands in for Corrade's pair of values. */
template <class F, class S>
class Pair {
    static_assert(!std::is_lvalue_reference<F>::value && !std::is_lvalue_reference<S>::value,
                  "use a Reference<T> to store a T& in a Pair");

public:
    using FirstType = F;
    using SecondType = S;

    constexpr Pair() : _first(), _second() {}
    constexpr explicit Pair(ValueInitT) : Pair{} {}
    constexpr Pair(const F& first, const S& second) : _first{first}, _second{second} {}
    constexpr Pair(const F& first, S&& second) : _first{first}, _second{std::move(second)} {}
    constexpr Pair(F&& first, const S& second) : _first{std::move(first)}, _second{second} {}
    constexpr Pair(F&& first, S&& second) noexcept(
        std::is_nothrow_move_constructible<F>::value&& std::is_nothrow_move_constructible<S>::value)
        : _first{std::move(first)}, _second{std::move(second)} {}

    template <class OtherF, class OtherS,
              class = std::enable_if_t<std::is_constructible<F, const OtherF&>::value &&
                                       std::is_constructible<S, const OtherS&>::value>>
    constexpr explicit Pair(const Pair<OtherF, OtherS>& other)
        : _first(other.first()), _second(other.second()) {}
    template <class OtherF, class OtherS,
              class = std::enable_if_t<std::is_constructible<F, OtherF&&>::value &&
                                       std::is_constructible<S, OtherS&&>::value>>
    constexpr explicit Pair(Pair<OtherF, OtherS>&& other)
        : _first(std::move(other.first())), _second(std::move(other.second())) {}

    constexpr bool operator==(const Pair& other) const {
        return _first == other._first && _second == other._second;
    }
    constexpr bool operator!=(const Pair& other) const { return !operator==(other); }

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

template <class F, class S>
constexpr Pair<std::decay_t<F>, std::decay_t<S>> pair(F&& first, S&& second) {
    return {std::forward<F>(first), std::forward<S>(second)};
}

template <class F, class S>
Utility::Debug& operator<<(Utility::Debug& debug, const Pair<F, S>& value) {
    return debug << "{" << Utility::Debug::nospace << value.first() << Utility::Debug::nospace
                 << "," << value.second() << Utility::Debug::nospace << "}";
}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
