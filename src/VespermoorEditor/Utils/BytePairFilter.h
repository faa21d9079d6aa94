#ifndef VespermoorEditor_Utils_BytePairFilter_h
#define VespermoorEditor_Utils_BytePairFilter_h

#include <algorithm>
#include <cstddef>

#include <Corrade/Containers/StringView.h>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "VespermoorEngine/Corrade.h"

/** @file
 * Search for a pattern in a text, where each byte of the pattern may match several byte values.
 *
 * The idea: only places where the first byte and the last byte of the pattern both match are worth
 * a full comparison, and the processor tests 16 places for that at once. Each of the two bytes is a
 * set of at most four values, which is compared value by value. The text is read in blocks of 16
 * places; the last block overlaps the one before it, so only texts with less than 16 places are
 * compared place by place.
 *
 * Cost: linear in the text, with about two instructions a block for each value, plus the full
 * comparisons. Worst case, for texts in which every place passes the filter: text size times
 * pattern size, as for `std::search()`.
 */

namespace VespermoorEngine::Utils {

/** @brief Set of one to four byte values. */
class ByteSet {
public:
    /** @brief Maximum number of values in a set. */
    static constexpr std::size_t capacity = 4;

    /** @brief Adds @p value, which is not in the set yet; returns false if the set is full. */
    bool add(const char value) {
        if (count == capacity) {
            return false;
        }
        /* Also fills the unused values, so that comparing with them is harmless. */
        std::fill(values + count++, values + capacity, value);
        return true;
    }

    /** @brief Number of values. */
    std::size_t size() const { return count; }

    /** @brief Value @p i; the last value again if there are fewer. */
    char operator[](const std::size_t i) const { return values[i]; }

private:
    std::size_t count = 0;
    char values[capacity] = {};
};

/**
 * @brief Finds the places of a text where a byte of one set is followed, at a fixed distance, by
 * one of another set.
 */
class BytePairFilter {
public:
    /**
     * @brief Filter for a byte of @p first and, @p distance bytes after it, a byte of @p second.
     *
     * Neither set is empty.
     */
    explicit BytePairFilter(const ByteSet& first, const ByteSet& second, const std::size_t distance)
        : first{first}, second{second}, distance{distance} {}

    /**
     * @brief First place that passes the filter and that @p matches accepts, or @p placeCount.
     *
     * The places are the first @p placeCount bytes of @p text, which holds @ref distance bytes
     * more. @p matches gets a pointer to the place. It has to compare in full: places that do not
     * pass the filter may be offered too.
     */
    template <class Matches>
    std::size_t find(const char* const text, const std::size_t placeCount,
                     const Matches& matches) const {
        const std::size_t values = std::max(first.size(), second.size());
        return values <= 1   ? findAnyOf<1>(text, placeCount, matches)
               : values <= 2 ? findAnyOf<2>(text, placeCount, matches)
                             : findAnyOf<ByteSet::capacity>(text, placeCount, matches);
    }

private:
    template <std::size_t values, class Matches>
    std::size_t findAnyOf(const char* text, std::size_t placeCount, const Matches& matches) const;

    ByteSet first;
    ByteSet second;
    std::size_t distance;
};

#ifdef __SSE2__
/** @brief The values of a set, each repeated for 16 bytes. */
template <std::size_t values>
class RepeatedBytes {
public:
    explicit RepeatedBytes(const ByteSet& set) {
        for (std::size_t i = 0; i != values; ++i) {
            repeated[i] = _mm_set1_epi8(set[i]);
        }
    }

    /** @brief Mask of 16 @p bytes: all bits set for each byte that is in the set. */
    __m128i find(const char* const bytes) const {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
        __m128i found = _mm_cmpeq_epi8(block, repeated[0]);
        for (std::size_t i = 1; i != values; ++i) {
            found = _mm_or_si128(found, _mm_cmpeq_epi8(block, repeated[i]));
        }
        return found;
    }

private:
    __m128i repeated[values];
};
#endif

template <std::size_t values, class Matches>
std::size_t BytePairFilter::findAnyOf(const char* const text, const std::size_t placeCount,
                                      const Matches& matches) const {
    std::size_t i = 0;
#ifdef __SSE2__
    constexpr std::size_t blockSize = sizeof(__m128i);
    const RepeatedBytes<values> firstBytes{first};
    const RepeatedBytes<values> secondBytes{second};
    while (placeCount >= blockSize && i != placeCount) {
        const std::size_t block = std::min(i, placeCount - blockSize);
        int found = _mm_movemask_epi8(_mm_and_si128(firstBytes.find(text + block),
                                                    secondBytes.find(text + block + distance)));
        for (; found != 0; found &= found - 1) {
            const std::size_t place = block + __builtin_ctz(found);
            if (matches(text + place)) {
                return place;
            }
        }
        i = block + blockSize;
    }
#endif
    while (i != placeCount && !matches(text + i)) {
        ++i;
    }
    return i;
}

} // namespace VespermoorEngine::Utils

#endif
