#ifndef VespermoorStandins_Corrade_Containers_Reference_h
#define VespermoorStandins_Corrade_Containers_Reference_h

#include "Corrade/Containers/Containers.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

/** Stand-in for Corrade's reference that can be stored and assigned. */
template <class T>
class Reference {
public:
    constexpr Reference(T& reference) noexcept : _reference{&reference} {}
    Reference(T&&) = delete;

    constexpr operator T&() const { return *_reference; }
    constexpr T* operator->() const { return _reference; }

private:
    T* _reference;
};

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
