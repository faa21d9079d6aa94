#include "VespermoorEditor/Utils/TagSearch.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/GrowableArray.h>

/* Finds all tags in one scan of the text.

   The tags of two bytes or more are sorted. The text is scanned in stretches of as many places as
   the shortest tag has blocks of two or four bytes, but at most 8. Only the last block of each
   stretch is looked up, in a hashed table that has one bit for each place of the stretch at which a
   tag with that block may begin. At such a place the first and the last block of the shortest size
   are looked up in a second table. If both tables agree, a binary search finds the tags that the
   text begins with at that place; each tag links to the longest other tag that is its prefix.

   Cost: the scan looks up one block for each stretch, so it is linear in the text and mostly
   independent of the number of tags. Worst case, for texts full of prefixes of tags: text size
   times total size of the tags. */

namespace VespermoorEngine::Utils {

namespace {

/* `prefixes` is the number of tags up to and including the last earlier one that is a prefix of
   this one, or 0 if there is none. */
struct Tag {
    Containers::StringView bytes;
    Containers::StringView* found;
    std::size_t prefixes;
};

/* Number of tags up to and including the last of the first `count` that is a prefix of `text`.
   These are the tags that come before `text` in ascending order. A prefix of `text` is also a
   prefix of everything between the two, so after a tag that is not a prefix only its own prefixes
   are left to try. */
std::size_t countToPrefix(const Containers::ArrayView<const Tag> tags, std::size_t count,
                          const Containers::StringView text) {
    while (count != 0 && !text.hasPrefix(tags[count - 1].bytes)) {
        count = tags[count - 1].prefixes;
    }
    return count;
}

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
    for (std::size_t i = 0; i != tags.size(); ++i) {
        tags[i].prefixes = countToPrefix(tags, i, tags[i].bytes);
    }
    return tags;
}

/* Stores the tags that `text` begins with and that were not found before, and returns their number.
   The prefixes of a tag that was found were found with it, or earlier. */
std::size_t noteTags(const Containers::ArrayView<const Tag> tags,
                     const Containers::StringView text) {
    const Tag* const place = std::upper_bound(
        tags.begin(), tags.end(), text,
        [](const Containers::StringView whole, const Tag& tag) { return whole < tag.bytes; });
    std::size_t noted = 0;
    std::size_t count = countToPrefix(tags, place - tags.begin(), text);
    for (; count != 0 && tags[count - 1].found->isEmpty(); count = tags[count - 1].prefixes) {
        const Tag& tag = tags[count - 1];
        *tag.found = text.prefix(tag.bytes.size());
        ++noted;
    }
    return noted;
}

/* A byte for each key of a set; keys of the same hash share one. The table has 64 bytes a key, so
   that few other keys collide with the set, but at most 256 KB, which a second level cache holds.
 */
class HashedBytes {
public:
    explicit HashedBytes(const std::size_t keys) {
        constexpr std::size_t largest = 1 << 18;
        std::size_t size = 256;
        for (; size < 64 * keys && size < largest; size *= 2) {
            --unusedBits;
        }
        bytes = Containers::Array<std::uint8_t>{Corrade::ValueInit, size};
    }

    std::uint8_t& operator[](const std::uint32_t key) { return bytes[hash(key)]; }
    std::uint8_t operator[](const std::uint32_t key) const { return bytes[hash(key)]; }

private:
    std::uint32_t hash(const std::uint32_t key) const { return (key * 0x9e3779b1u) >> unusedBits; }

    unsigned unusedBits = 24;
    Containers::Array<std::uint8_t> bytes;
};

/* The two tables. A tag that begins in a stretch has the last block of the stretch at one of its
   first offsets. */
template <class Block>
class TagFilter {
public:
    TagFilter(Containers::ArrayView<const Tag> tags, std::size_t shortest);

    std::size_t stretch() const { return stretchSize; }

    /* Bytes from the start of a stretch to the end of its last block. */
    std::size_t neededBytes() const { return stretchSize - 1 + sizeof(Block); }

    /* The places at which a tag may begin in the stretch, one bit each. */
    unsigned places(const char* const stretch) const {
        return placesOfBlock[blockAt(stretch + stretchSize - 1)];
    }

    /* Whether a tag may begin at such a place, judged by its first and its last block. */
    bool mayBegin(const char* const place) const { return beginnings[beginningAt(place)] != 0; }

private:
    static std::uint32_t blockAt(const char* const bytes) {
        Block block;
        std::memcpy(&block, bytes, sizeof(Block));
        return block;
    }

    std::uint32_t beginningAt(const char* const bytes) const {
        return blockAt(bytes) + 0x85ebca6bu * blockAt(bytes + lastBlock);
    }

    std::size_t lastBlock;
    std::size_t stretchSize;
    HashedBytes placesOfBlock;
    HashedBytes beginnings;
};

template <class Block>
TagFilter<Block>::TagFilter(const Containers::ArrayView<const Tag> tags, const std::size_t shortest)
    : lastBlock{shortest - sizeof(Block)},
      stretchSize{std::min(lastBlock + 1, std::size_t{8})},
      placesOfBlock{tags.size() * stretchSize},
      beginnings{tags.size()} {
    for (const Tag& tag : tags) {
        const char* const bytes = tag.bytes.data();
        for (std::size_t place = 0; place != stretchSize; ++place) {
            placesOfBlock[blockAt(bytes + stretchSize - 1 - place)] |= 1u << place;
        }
        beginnings[beginningAt(bytes)] = 1;
    }
}

template <class Block>
void scan(const Containers::StringView text, const Containers::ArrayView<const Tag> tags,
          const std::size_t shortest) {
    const TagFilter<Block> filter{tags, shortest};
    /* A loop of its own, so that the compiler keeps its variables in registers. */
    const auto next = [&filter, text](std::size_t i) {
        while (i + filter.neededBytes() <= text.size() && filter.places(text.data() + i) == 0) {
            i += filter.stretch();
        }
        return i;
    };
    std::size_t missing = tags.size();
    for (std::size_t i = next(0); missing != 0 && i + shortest <= text.size();
         i = next(i + filter.stretch())) {
        for (unsigned left = filter.places(text.data() + i); left != 0; left &= left - 1) {
            const std::size_t place = i + __builtin_ctz(left);
            if (place + shortest <= text.size() && filter.mayBegin(text.data() + place)) {
                missing -= noteTags(tags, text.exceptPrefix(place));
            }
        }
    }
}

} // namespace

void findFirstOccurrences(const Containers::StringView text,
                          const Containers::ArrayView<const SoughtTag> sought) {
    /* A search for one byte is faster than any search for several tags. */
    for (const SoughtTag& tag : sought) {
        if (tag.bytes.size() == 1) {
            *tag.found = text.find(tag.bytes.front());
        }
    }

    const Containers::Array<Tag> tags = sortedTags(sought);
    if (tags.isEmpty()) {
        return;
    }
    const std::size_t shortest =
        std::min_element(tags.begin(), tags.end(), [](const Tag& a, const Tag& b) {
            return a.bytes.size() < b.bytes.size();
        })->bytes.size();
    if (shortest >= 4) {
        scan<std::uint32_t>(text, tags, shortest);
    } else {
        scan<std::uint16_t>(text, tags, shortest);
    }
}

} // namespace VespermoorEngine::Utils
