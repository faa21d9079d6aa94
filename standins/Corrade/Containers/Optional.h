#ifndef VespermoorStandins_Corrade_Containers_Optional_h
#define VespermoorStandins_Corrade_Containers_Optional_h

#include <optional>
#include <type_traits>
#include <utility>

#include "Corrade/Containers/Containers.h"
#include "Corrade/Containers/Implementation/Assertion.h"
#include "Corrade/Tags.h"
#include "Corrade/Utility/Debug.h"

namespace Corrade {
inline namespace VespermoorStandins {
namespace Containers {

struct NullOptT {
    struct Init {};
    constexpr explicit NullOptT(Init) {}
};
constexpr NullOptT NullOpt{NullOptT::Init{}};

/** Stands in for Corrade's optional value. */
template <class T>
class Optional {
public:
    using Type = T;

    Optional(NullOptT = NullOpt) noexcept {}
    Optional(const T& value) : _content{std::in_place, InPlaceInit, value} {}
    Optional(T&& value) noexcept(std::is_nothrow_move_constructible<T>::value)
        : _content{std::in_place, InPlaceInit, std::move(value)} {}
    template <class... Args>
    Optional(InPlaceInitT, Args&&... args)
        : _content{std::in_place, InPlaceInit, std::forward<Args>(args)...} {}

    Optional& operator=(NullOptT) noexcept {
        _content.reset();
        return *this;
    }

    explicit operator bool() const { return bool(_content); }

    bool operator==(const Optional& other) const {
        return _content && other._content ? **this == *other : !_content == !other._content;
    }
    bool operator!=(const Optional& other) const { return !operator==(other); }
    bool operator==(NullOptT) const { return !_content; }
    bool operator!=(NullOptT) const { return bool(_content); }
    bool operator==(const T& other) const { return _content && **this == other; }
    bool operator!=(const T& other) const { return !operator==(other); }

    T* operator->() { return &checked(*this); }
    const T* operator->() const { return &checked(*this); }
    T& operator*() & { return checked(*this); }
    T operator*() && { return std::move(checked(*this)); }
    const T& operator*() const& { return checked(*this); }

    template <class... Args>
    T& emplace(Args&&... args) {
        return _content.emplace(InPlaceInit, std::forward<Args>(args)...).value;
    }

private:
    /* Gives the value braces, which std::optional does not, so that aggregates can be made too */
    struct Content {
        template <class... Args>
        explicit Content(InPlaceInitT, Args&&... args) : value{std::forward<Args>(args)...} {}
        T value;
    };

    template <class Self>
    static auto& checked(Self& self) {
        VESPERMOOR_STANDINS_DEBUG_ASSERT(self._content,
                                         "Containers::Optional: the optional is empty");
        return self._content->value;
    }

    std::optional<Content> _content;
};

template <class T>
bool operator==(NullOptT, const Optional<T>& b) {
    return b == NullOpt;
}
template <class T>
bool operator!=(NullOptT, const Optional<T>& b) {
    return b != NullOpt;
}
template <class T>
bool operator==(const T& a, const Optional<T>& b) {
    return b == a;
}
template <class T>
bool operator!=(const T& a, const Optional<T>& b) {
    return b != a;
}

template <class T>
Optional<std::decay_t<T>> optional(T&& value) {
    return Optional<std::decay_t<T>>{std::forward<T>(value)};
}

template <class T, class... Args>
Optional<T> optional(Args&&... args) {
    return Optional<T>{InPlaceInit, std::forward<Args>(args)...};
}

inline Utility::Debug& operator<<(Utility::Debug& debug, NullOptT) {
    return debug << "Containers::NullOpt";
}

template <class T>
Utility::Debug& operator<<(Utility::Debug& debug, const Optional<T>& value) {
    return value ? debug << *value : debug << NullOpt;
}

} // namespace Containers
} // namespace VespermoorStandins
} // namespace Corrade

#endif
