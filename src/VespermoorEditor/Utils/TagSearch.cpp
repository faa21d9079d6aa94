#include "VespermoorEditor/Utils/TagSearch.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/GrowableArray.h>

namespace VespermoorEngine::Utils {

namespace {

/* `prefixes` counts the tags up to and with the last one in front that this one begins with; it is
   0 where there is none. */
struct Tag {
    Containers::StringView bytes;
    Containers::StringView* found;
    std::size_t prefixes;
};

/* Counts the tags up to and with the last of the first `count` that `text` begins with, where these
   are the ones in front of it in ascending order. Whatever `text` begins with, everything between
   the two begins with as well, so nothing else is left to try than what the last one begins with.
 */
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

/* Notes the tags that `text` begins with and that were not found before, and returns their number.
   Whatever a tag that was found begins with was found with it, or earlier. */
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

/* A byte for each key of a set, which all keys of the same hash share. There are 64 to a key, so
   few keys that are not in the set meet one that is, but no more than the 256 KB that a second
   level cache holds. */
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

/* Tells by a few bytes where in a text a tag may begin. The text is taken in stretches of as many
   places as the shortest tag has blocks, 8 at most, and only the block at the last place of each is
   looked at: a tag that begins in the stretch has that block at one of its first offsets. */
template <class Block>
class TagFilter {
public:
    TagFilter(Containers::ArrayView<const Tag> tags, std::size_t shortest);

    std::size_t stretch() const { return stretchSize; }

    /* Bytes that a stretch has to have before its block can be looked at. */
    std::size_t neededBytes() const { return stretchSize - 1 + sizeof(Block); }

    /* The places at which a tag may begin in the stretch, one bit each. */
    unsigned places(const char* const stretch) const {
        return placesOfBlock[blockAt(stretch + stretchSize - 1)];
    }

    /* Whether a tag may begin at such a place by the first and last of its blocks. */
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
    /* On its own so that the compiler keeps what it needs in registers. */
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
    /* The library's search for one byte is faster than anything that looks for several. */
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
