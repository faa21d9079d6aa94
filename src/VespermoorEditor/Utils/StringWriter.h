#ifndef VespermoorEditor_Utils_StringWriter_h
#define VespermoorEditor_Utils_StringWriter_h

#include <algorithm>
#include <cstddef>
#include <utility>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>

#include "VespermoorEditor/Utils/Text.h"
#include "VespermoorEngine/Contract.h"

namespace VespermoorEngine::Utils {

/**
 * @brief Append-only text buffer that becomes a `Corrade::Containers::String` without a copy.
 *
 * The array's size is the writer's capacity. After every append the byte at position @ref size is a
 * NUL, so the capacity exceeds @ref size from the first append on.
 */
class StringWriter {
public:
    /** @brief Writer with room for @p capacity bytes, the NUL at the end included. */
    explicit StringWriter(const std::size_t capacity) : buffer{Corrade::NoInit, capacity} {}

    /** @brief Bytes between the end of the text and the end of the buffer. */
    std::size_t available() const { return buffer.size() - size; }

    /** @brief Makes the capacity at least @p capacity; the text stays as it is. */
    void reserve(std::size_t capacity);

    /**
     * @brief Appends @p text within the existing room, which is expected to exceed its size.
     *
     * Aborts if there is not enough room, before writing anything.
     */
    void appendInto(Containers::StringView text);

    /**
     * @brief Appends @p text, which must not lie in the writer's own buffer.
     *
     * If the room does not suffice, the capacity grows to the size of the text and its NUL, but at
     * least by half, computed in single precision.
     */
    void append(Containers::StringView text);

    /** @brief Moves the buffer into a string, and leaves the writer empty, without a buffer. */
    Containers::String release();

    /** @brief The text and the room after it. */
    Containers::Array<char> buffer;
    /** @brief Bytes written so far, without the NUL. */
    std::size_t size = 0;
};

inline void StringWriter::reserve(const std::size_t capacity) {
    if (buffer.size() >= capacity) {
        return;
    }
    const Containers::Array<char> old =
        std::exchange(buffer, Containers::Array<char>{Corrade::NoInit, capacity});
    appendInto({old.data(), std::exchange(size, 0)});
}

inline void StringWriter::appendInto(const Containers::StringView text) {
    const std::size_t bytes = text.size();
    if (available() <= bytes) {
        breakContract("Assertion available() > bytes failed at "
                      "../src/VespermoorEngine/Utils/StringWriter:83");
    }
    char* const end = buffer.data() + size;
    size += bytes;
    buffer[size] = '\0';
    std::copy(text.begin(), text.end(), end);
}

inline void StringWriter::append(const Containers::StringView text) {
    const std::size_t bytes = text.size();
    if (available() <= bytes) {
        const auto grown = static_cast<std::size_t>(static_cast<float>(buffer.size()) * 1.5f);
        reserve(std::max(size + bytes + 1, grown));
    }
    appendInto(text);
}

inline Containers::String StringWriter::release() {
    return Implementation::takeString(buffer, std::exchange(size, 0));
}

} // namespace VespermoorEngine::Utils

#endif
