#ifndef VespermoorStandins_Corrade_Containers_Optional_h
#define VespermoorStandins_Corrade_Containers_Optional_h

#include <optional>
#include <utility>

#include "Corrade/Containers/Containers.h"
#include "Corrade/Containers/Implementation/Assertion.h"
#include "Corrade/Utility/Debug.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

struct NullOptT {
    struct Init {};
    constexpr explicit NullOptT(Init) {}
};
constexpr NullOptT NullOpt{NullOptT::Init{}};

/** Stand-in for Corrade's optional value. */
template <class T>
class Optional {
public:
    Optional(NullOptT = NullOpt) noexcept {}
    Optional(const T& value) : _value{std::in_place, value} {}
    Optional(T&& value) : _value{std::in_place, std::move(value)} {}

    Optional& operator=(NullOptT) noexcept {
        _value.reset();
        return *this;
    }

    explicit operator bool() const { return bool(_value); }

    T* operator->() { return &checked(*this); }
    const T* operator->() const { return &checked(*this); }
    T& operator*() & { return checked(*this); }
    T operator*() && { return std::move(checked(*this)); }
    const T& operator*() const& { return checked(*this); }

    template <class... Args>
    T& emplace(Args&&... args) {
        return _value.emplace(std::forward<Args>(args)...);
    }

private:
    template <class Self>
    static auto& checked(Self& self) {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(self._value,
                                         "Containers::Optional: the optional is empty");
        return *self._value;
    }

    std::optional<T> _value;
};

template <class T>
Utility::Debug& operator<<(Utility::Debug& debug, const Optional<T>& value) {
    return value ? debug << *value : debug << "Containers::NullOpt";
}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
