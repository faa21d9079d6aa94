#ifndef VespermoorStandins_Corrade_Containers_Reference_h
#define VespermoorStandins_Corrade_Containers_Reference_h

#include <type_traits>

#include "Corrade/Containers/Containers.h"
#include "Corrade/Utility/Debug.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

/** Stands in for Corrade's reference that can be stored and assigned. */
template <class T>
class Reference {
public:
    using Type = T;

    constexpr Reference(T& reference) noexcept : _reference{&reference} {}
    template <class U, class = std::enable_if_t<std::is_base_of<T, U>::value>>
    constexpr Reference(Reference<U> other) noexcept : _reference{&other.get()} {}
    Reference(T&&) = delete;

    constexpr operator T&() const { return *_reference; }
    constexpr operator Reference<const T>() const { return *_reference; }
    constexpr T& get() const { return *_reference; }
    constexpr T* operator->() const { return _reference; }
    constexpr T& operator*() const { return *_reference; }

private:
    T* _reference;
};

template <class T>
constexpr Reference<T> reference(T& value) {
    return value;
}

template <class T>
Utility::Debug& operator<<(Utility::Debug& debug, Reference<T> value) {
    return debug << value.get();
}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
