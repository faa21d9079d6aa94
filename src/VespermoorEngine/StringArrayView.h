#ifndef VespermoorEngine_StringArrayView_h
#define VespermoorEngine_StringArrayView_h

#include <cstddef>
#include <utility>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/StringView.h>

#include "VespermoorEngine/Corrade.h"
#include "VespermoorEngine/visibility.h"

namespace VespermoorEngine {

/**
 * @brief Read-only list of strings, packed one after the other in one character store.
 *
 * Every string is followed by one NUL byte in the store, so string `i` starts at `offsets[i]`, is
 * `offsets[i + 1] - offsets[i] - 1` bytes long and can be passed to a function that expects a
 * NUL-terminated string. The list owns its offsets but not the character store.
 */
class VESPERMOOR_ENGINE_EXPORT StringArrayView {
public:
    virtual ~StringArrayView();

    StringArrayView(const StringArrayView&) = delete;
    StringArrayView& operator=(const StringArrayView&) = delete;

    /** @brief Number of strings. */
    std::size_t size() const { return offsets.size() - 1; }

    /**
     * @brief String at @p index, expected to be below @ref size().
     *
     * The view is `Corrade::Containers::StringViewFlag::NullTerminated` and lives as long as
     * the character store does not change. An index out of range aborts with
     * `StringArrayView::get(): invalid index 2 for size 2`.
     */
    Containers::StringView get(std::size_t index) const {
        if (index >= size()) {
            invalidIndex(index);
        }
        return {data + offsets[index], offsets[index + 1] - offsets[index] - 1,
                Containers::StringViewFlag::NullTerminated};
    }

    /** @brief Start of each string in the store, then the end of the last one's terminator. */
    Containers::Array<std::size_t> offsets;
    /** @brief First byte of the character store. */
    const char* data = nullptr;
    /** @brief Bytes of the character store in use, the terminators included. */
    std::size_t dataSize = 0;

protected:
    /** @cond */
    StringArrayView() = default;
    StringArrayView(Containers::Array<std::size_t>&& offsets, const char* const data)
        : offsets{std::move(offsets)}, data{data} {}
    StringArrayView(StringArrayView&& other) noexcept
        : offsets{std::move(other.offsets)},
          data{std::exchange(other.data, nullptr)},
          dataSize{std::exchange(other.dataSize, 0)} {}
    /** @endcond */

private:
    [[noreturn]] void invalidIndex(std::size_t index) const;
};

} // namespace VespermoorEngine

#endif
