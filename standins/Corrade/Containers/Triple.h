#ifndef VespermoorStandins_Corrade_Containers_Triple_h
#define VespermoorStandins_Corrade_Containers_Triple_h

#include <cstddef>
#include <type_traits>
#include <utility>

#include "Corrade/Containers/Containers.h"
#include "Corrade/Tags.h"
#include "Corrade/Utility/Debug.h"

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
    using FirstType = F;
    using SecondType = S;
    using ThirdType = T;

    constexpr Triple() : _first(), _second(), _third() {}
    constexpr explicit Triple(ValueInitT) : Triple{} {}
    /* One constructor for every mixture of copies and moves. The defaults let brace lists through,
       which have no type of their own. */
    template <class OtherF = F, class OtherS = S, class OtherT = T,
              class = std::enable_if_t<std::is_convertible<OtherF&&, F>::value &&
                                       std::is_convertible<OtherS&&, S>::value &&
                                       std::is_convertible<OtherT&&, T>::value>>
    constexpr Triple(OtherF&& first, OtherS&& second, OtherT&& third)
        : _first(std::forward<OtherF>(first)),
          _second(std::forward<OtherS>(second)),
          _third(std::forward<OtherT>(third)) {}

    template <class OtherF, class OtherS, class OtherT,
              class = std::enable_if_t<std::is_constructible<F, const OtherF&>::value &&
                                       std::is_constructible<S, const OtherS&>::value &&
                                       std::is_constructible<T, const OtherT&>::value>>
    constexpr explicit Triple(const Triple<OtherF, OtherS, OtherT>& other)
        : _first(other.first()), _second(other.second()), _third(other.third()) {}

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

template <class F, class S, class T>
constexpr Triple<std::decay_t<F>, std::decay_t<S>, std::decay_t<T>> triple(F&& first, S&& second,
                                                                           T&& third) {
    return {std::forward<F>(first), std::forward<S>(second), std::forward<T>(third)};
}

template <class F, class S, class T>
Utility::Debug& operator<<(Utility::Debug& debug, const Triple<F, S, T>& value) {
    return debug << "{" << Utility::Debug::nospace << value.first() << Utility::Debug::nospace
                 << "," << value.second() << Utility::Debug::nospace << "," << value.third()
                 << Utility::Debug::nospace << "}";
}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
