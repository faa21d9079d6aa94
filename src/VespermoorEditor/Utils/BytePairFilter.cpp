#include "VespermoorEditor/Utils/BytePairFilter.h"

#include <algorithm>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace VespermoorEngine::Utils {

bool ByteSet::add(const char value) {
    for (std::size_t i = 0; i != count; ++i) {
        if (blocks[i][0] == value) {
            return true;
        }
    }
    if (count == capacity) {
        return false;
    }
    std::memset(blocks[count], value, sizeof(blocks) - count * sizeof(blocks[0]));
    ++count;
    return true;
}

BytePairFilter::BytePairFilter(const Containers::StringView text, const ByteSet& first,
                               const ByteSet& second, const std::size_t distance)
    : text{text.data()},
      distance{distance},
      placeCount{text.size() - std::min(distance, text.size())},
      first{first},
      second{second} {}

#ifdef __SSE2__
namespace {

/* All bits set in the place of each of 16 bytes that is in the set. */
template <std::size_t values>
__m128i findAny(const ByteSet& set, const char* const bytes) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    __m128i found = _mm_setzero_si128();
    for (std::size_t i = 0; i != values; ++i) {
        const __m128i value = _mm_load_si128(reinterpret_cast<const __m128i*>(set.repeated(i)));
        found = _mm_or_si128(found, _mm_cmpeq_epi8(block, value));
    }
    return found;
}

} // namespace

template <std::size_t values>
std::size_t BytePairFilter::nextOf(std::size_t i) const {
    for (; i + sizeof(__m128i) <= placeCount; i += sizeof(__m128i)) {
        const char* const bytes = text + i;
        const int found = _mm_movemask_epi8(_mm_and_si128(
            findAny<values>(first, bytes), findAny<values>(second, bytes + distance)));
        if (found != 0) {
            return i + __builtin_ctz(found);
        }
    }
    return i;
}

std::size_t BytePairFilter::next(const std::size_t i) const {
    const std::size_t values = std::max(first.size(), second.size());
    return values <= 1 ? nextOf<1>(i) : values <= 2 ? nextOf<2>(i) : nextOf<ByteSet::capacity>(i);
}
#else
std::size_t BytePairFilter::next(const std::size_t i) const {
    return i;
}
#endif

} // namespace VespermoorEngine::Utils
