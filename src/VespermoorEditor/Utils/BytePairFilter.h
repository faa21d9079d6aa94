#ifndef VespermoorEditor_Utils_BytePairFilter_h
#define VespermoorEditor_Utils_BytePairFilter_h

#include <cstddef>

#include <Corrade/Containers/StringView.h>

namespace VespermoorEngine {

namespace Containers = Corrade::Containers;

namespace Utils {

/** @brief Up to four byte values, in a form to compare 16 bytes with at once. */
class ByteSet {
public:
    /** @brief Values that fit. */
    static constexpr std::size_t capacity = 4;

    /** @brief Adds @p value, and returns whether it is in the set now. */
    bool add(char value);

    /** @brief Number of values. */
    std::size_t size() const { return count; }

    /** @brief Value @p i repeated 16 times; behind the last one the last one again. */
    const char* repeated(const std::size_t i) const { return blocks[i]; }

private:
    std::size_t count = 0;
    alignas(16) char blocks[capacity][16] = {};
};

/**
 * @brief Finds the places of a text at which a search is worth its while.
 *
 * Those are the places where a byte of one set stands, and a byte of another set at a fixed
 * distance behind it. The text is not owned.
 */
class BytePairFilter {
public:
    /** @brief Filter for @p text by two sets, each of which has a value at least. */
    explicit BytePairFilter(Containers::StringView text, const ByteSet& first,
                            const ByteSet& second, std::size_t distance);

    /** @brief Number of places in the text that have another one at the distance behind them. */
    std::size_t places() const { return placeCount; }

    /**
     * @brief First place from @p i on that may be one; @ref places() where none is left.
     *
     * Bytes are compared 16 at a time. Where fewer are left, and where the processor cannot do
     * that, it is the next place whatever stands there, so every place is still to be compared in
     * full.
     */
    std::size_t next(std::size_t i) const;

private:
    template <std::size_t values>
    std::size_t nextOf(std::size_t i) const;

    const char* text;
    std::size_t distance;
    std::size_t placeCount;
    ByteSet first;
    ByteSet second;
};

} // namespace Utils
} // namespace VespermoorEngine

#endif
