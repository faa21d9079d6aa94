#ifndef VespermoorEditor_Utils_ValueOrError_h
#define VespermoorEditor_Utils_ValueOrError_h

#include <new>
#include <utility>

#include <Corrade/Containers/String.h>

#include "VespermoorEngine/Contract.h"

namespace VespermoorEngine {

/**
 * @brief Result that is either a @p T or an error message.
 *
 * Owns the value or message. A moved-from result keeps its state, with a moved-from value or
 * message.
 */
template <class T>
class ValueOrError {
public:
    /** @brief Success, holding @p value. */
    /*implicit*/ ValueOrError(T&& value) noexcept : held{std::move(value)}, hasValue{true} {}

    /** @brief Failure, holding @p message. */
    /*implicit*/ ValueOrError(Containers::String&& message) noexcept
        : reason{std::move(message)}, hasValue{false} {}

    /** @brief Takes over the value or message of @p other. */
    ValueOrError(ValueOrError&& other) noexcept : hasValue{other.hasValue} { takeFrom(other); }

    /** @overload */
    ValueOrError& operator=(ValueOrError&& other) noexcept {
        if (this != &other) {
            destroy();
            hasValue = other.hasValue;
            takeFrom(other);
        }
        return *this;
    }

    ~ValueOrError() { destroy(); }

    /** @brief Whether a value is held. */
    explicit operator bool() const { return hasValue; }

    /**
     * @brief The value, expected to be held.
     *
     * Aborts with `ValueOrError::value(): No value` on a failure.
     */
    T& value() & {
        expectValue();
        return held;
    }
    /** @overload */
    const T& value() const& {
        expectValue();
        return held;
    }
    /** @overload */
    T value() && {
        expectValue();
        return std::move(held);
    }

    /**
     * @brief The message, expected to be held.
     *
     * The view lives as long as this result. Aborts with `ValueOrError::error(): No error` on a
     * success.
     */
    Containers::StringView error() const& {
        if (hasValue) {
            breakContract("ValueOrError::error(): No error");
        }
        return reason;
    }
    Containers::StringView error() const&& = delete;

private:
    void expectValue() const {
        if (!hasValue) {
            breakContract("ValueOrError::value(): No value");
        }
    }

    void takeFrom(ValueOrError& other) {
        if (hasValue) {
            new (&held) T{std::move(other.held)};
        } else {
            new (&reason) Containers::String{std::move(other.reason)};
        }
    }

    void destroy() {
        if (hasValue) {
            held.~T();
        } else {
            reason.~String();
        }
    }

    union {
        T held;
        Containers::String reason;
    };
    bool hasValue;
};

} // namespace VespermoorEngine

#endif
