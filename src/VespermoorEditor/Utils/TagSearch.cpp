#include "VespermoorEditor/Utils/TagSearch.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <tuple>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/GrowableArray.h>

#include "VespermoorEditor/Utils/BytePairFilter.h"

namespace VespermoorEngine::Utils {

namespace {

/* `prefixes` counts the tags up to and with the last one in front that this one begins with; it is
   0 where there is none. */
struct Tag {
    Containers::StringView bytes;
    Containers::StringView* found;
    std::size_t prefixes;
};

/* The tags of two bytes or more in ascending order of their bytes. */
Containers::Array<Tag> sortedTags(const Containers::ArrayView<const SoughtTag> sought) {
    Containers::Array<Tag> tags;
    arrayReserve(tags, sought.size());
    for (const SoughtTag& tag : sought) {
        if (tag.bytes.size() > 1) {
            arrayAppend(tags, Tag{tag.bytes, tag.found, 0});
        }
    }
    std::sort(tags.begin(), tags.end(),
              [](const Tag& a, const Tag& b) { return a.bytes < b.bytes; });
    for (std::size_t i = 1; i < tags.size(); ++i) {
        std::size_t prefixes = i;
        while (prefixes != 0 && !tags[i].bytes.hasPrefix(tags[prefixes - 1].bytes)) {
            prefixes = tags[prefixes - 1].prefixes;
        }
        tags[i].prefixes = prefixes;
    }
    return tags;
}

/* Notes the tags that `text` begins with and that were not found before, and returns their number.
   In sorted order nothing but longer tags that begin alike stands between such a tag and the place
   of the whole text, so all of them are prefixes of the last tag in front of that place. */
std::size_t noteTags(const Containers::ArrayView<const Tag> tags,
                     const Containers::StringView text) {
    const Tag* const place = std::upper_bound(
        tags.begin(), tags.end(), text,
        [](const Containers::StringView whole, const Tag& tag) { return whole < tag.bytes; });
    std::size_t noted = 0;
    std::size_t prefixes = place - tags.begin();
    for (; prefixes != 0; prefixes = tags[prefixes - 1].prefixes) {
        const Tag& tag = tags[prefixes - 1];
        if (!text.hasPrefix(tag.bytes)) {
            continue;
        }
        /* Whatever this tag begins with was found with it, or earlier. */
        if (!tag.found->isEmpty()) {
            break;
        }
        *tag.found = text.prefix(tag.bytes.size());
        ++noted;
    }
    return noted;
}

/* For each hash of a block of bytes, how far a window that ends with such a block can move before
   it can stand at a tag's beginning: 0 where it may stand there already. The window is as long as
   the shortest tag, so most of a text is never looked at (Wu and Manber, "A fast algorithm for
   multi-pattern searching", 1994). */
template <class Block>
class SkipTable {
public:
    SkipTable(const Containers::ArrayView<const Tag> tags, const std::size_t window)
        : _blockOffset{window - sizeof(Block)} {
        std::size_t entries = 256;
        const std::size_t blocks = (_blockOffset + 1) * tags.size();
        for (; entries < 8 * blocks && _unusedBits > minimumUnusedBits; entries *= 2) {
            --_unusedBits;
        }
        _skips = Containers::Array<std::uint8_t>{Corrade::DirectInit, entries,
                                                 static_cast<std::uint8_t>(_blockOffset + 1)};
        for (const Tag& tag : tags) {
            for (std::size_t i = 0; i <= _blockOffset; ++i) {
                std::uint8_t& skip = _skips[hash(tag.bytes.data() + i)];
                skip = std::min(skip, static_cast<std::uint8_t>(_blockOffset - i));
            }
        }
    }

    std::size_t skip(const char* const window) const { return _skips[hash(window + _blockOffset)]; }

private:
    /* Tables of at most 256 KB, which a second level cache holds. */
    static constexpr unsigned minimumUnusedBits = 14;

    std::size_t hash(const char* const bytes) const {
        Block block;
        std::memcpy(&block, bytes, sizeof(Block));
        return static_cast<std::uint32_t>(block * 0x9e3779b1u) >> _unusedBits;
    }

    std::size_t _blockOffset;
    unsigned _unusedBits = 24;
    Containers::Array<std::uint8_t> _skips;
};

template <class Block>
void scanSkipping(const Containers::StringView text, const Containers::ArrayView<const Tag> tags,
                  const std::size_t window) {
    const SkipTable<Block> table{tags, window};
    std::size_t missing = tags.size();
    for (std::size_t i = 0; missing != 0 && i + window <= text.size();) {
        const std::size_t skip = table.skip(text.data() + i);
        if (skip == 0) {
            missing -= noteTags(tags, text.exceptPrefix(i));
        }
        i += std::max(skip, std::size_t{1});
    }
}

/* The values that the tags have at one offset from their beginning, and how often these occur at
   the beginning of the text. */
struct TagBytes {
    std::size_t offset;
    ByteSet values;
    std::size_t occurrences;
};

/* The offsets at which the tags have few values, ordered by how rare these are at the beginning of
   the text. */
Containers::Array<TagBytes> rareTagBytes(const Containers::StringView text,
                                         const Containers::ArrayView<const Tag> tags,
                                         const std::size_t window) {
    constexpr std::size_t sampleSize = 1024;
    std::size_t occurrences[256] = {};
    for (const char c : text.prefix(std::min(text.size(), sampleSize))) {
        ++occurrences[static_cast<unsigned char>(c)];
    }
    constexpr std::size_t maximumOffsets = 16;
    Containers::Array<TagBytes> all;
    for (std::size_t offset = 0; offset != std::min(window, maximumOffsets); ++offset) {
        TagBytes bytes{offset, {}, 0};
        if (!std::all_of(tags.begin(), tags.end(), [&bytes](const Tag& tag) {
                return bytes.values.add(tag.bytes[bytes.offset]);
            })) {
            continue;
        }
        for (std::size_t i = 0; i != bytes.values.size(); ++i) {
            bytes.occurrences += occurrences[static_cast<unsigned char>(bytes.values[i])];
        }
        arrayAppend(all, bytes);
    }
    std::stable_sort(all.begin(), all.end(), [](const TagBytes& a, const TagBytes& b) {
        return a.occurrences < b.occurrences;
    });
    return all;
}

/* Goes from one place to the next at which any tag may stand by two of its bytes. */
void scanFiltered(const Containers::StringView text, const Containers::ArrayView<const Tag> tags,
                  const TagBytes& a, const TagBytes& b) {
    const auto& [first, second] = a.offset < b.offset ? std::tie(a, b) : std::tie(b, a);
    const BytePairFilter filter{text.exceptPrefix(first.offset), first.values, second.values,
                                second.offset - first.offset};
    std::size_t missing = tags.size();
    for (std::size_t i = filter.next(0); missing != 0 && i < text.size(); i = filter.next(i + 1)) {
        missing -= noteTags(tags, text.exceptPrefix(i));
    }
}

} // namespace

void findFirstOccurrences(const Containers::StringView text,
                          const Containers::ArrayView<const SoughtTag> sought) {
    /* The library's search for one byte is faster than anything that looks for several. */
    for (const SoughtTag& tag : sought) {
        if (tag.bytes.size() == 1) {
            *tag.found = text.find(tag.bytes.front());
        }
    }

    const Containers::Array<Tag> tags = sortedTags(sought);
    /* Skips are stored in a byte each. */
    std::size_t window = 128;
    for (const Tag& tag : tags) {
        window = std::min(window, tag.bytes.size());
    }
    if (text.size() < window || tags.isEmpty()) {
        return;
    }
    /* Most sets of tags have marks in common, and then comparing 16 places at once is fastest. */
    if (BytePairFilter::isFast()) {
        const Containers::Array<TagBytes> rare = rareTagBytes(text, tags, window);
        if (!rare.isEmpty()) {
            scanFiltered(text, tags, rare.front(), rare[rare.size() == 1 ? 0 : 1]);
            return;
        }
    }
    if (window >= 8) {
        scanSkipping<std::uint32_t>(text, tags, window);
    } else {
        scanSkipping<std::uint16_t>(text, tags, window);
    }
}

} // namespace VespermoorEngine::Utils
