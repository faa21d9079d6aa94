#include "VespermoorEditor/Utils/String.h"

#include <algorithm>
#include <cctype>
#include <functional>
#include <iterator>
#include <numeric>
#include <typeinfo>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Utility/Format.h>
#include <Corrade/Utility/String.h>

#include "VespermoorEditor/Utils/BytePairFilter.h"
#include "VespermoorEditor/Utils/StringWriter.h"
#include "VespermoorEditor/Utils/TagSearch.h"

namespace VespermoorEngine::Utils {

namespace {

/* The two tags of a replacement in the text, empty if they do not occur. */
struct Finding {
    Containers::StringView start;
    Containers::StringView end;

    bool isPresent() const { return !start.isEmpty(); }
};

/* Stores the first occurrence of each tag of the replacements in `findings`. */
void findTags(const Containers::StringView text,
              const Containers::ArrayView<const TagReplacement> replacements,
              const Containers::ArrayView<Finding> findings) {
    Containers::Array<SoughtTag> tags;
    arrayReserve(tags, replacements.size() * 2);
    for (std::size_t i = 0; i != replacements.size(); ++i) {
        arrayAppend(tags, SoughtTag{replacements[i].first(), &findings[i].start});
        arrayAppend(tags, SoughtTag{replacements[i].second(), &findings[i].end});
    }
    findFirstOccurrences(text, tags);
}

/* Indices of the findings in the order of their start tags, absent ones last. */
Containers::Array<std::size_t>
orderOfFindings(const Containers::ArrayView<const Finding> findings) {
    Containers::Array<std::size_t> order{Corrade::NoInit, findings.size()};
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(), [&findings](const std::size_t a, const std::size_t b) {
        if (!findings[a].isPresent() || !findings[b].isPresent()) {
            return findings[a].isPresent();
        }
        return findings[a].start.data() < findings[b].start.data();
    });
    return order;
}

Containers::StringView between(const char* const begin, const char* const end) {
    return {begin, static_cast<std::size_t>(end - begin)};
}

/* The text with new contents in the regions listed by `order`, of which there is at least one. */
Containers::String writeRegions(const Containers::StringView text,
                                const Containers::ArrayView<const TagReplacement> replacements,
                                const Containers::ArrayView<const Finding> findings,
                                const Containers::ArrayView<const std::size_t> order) {
    std::size_t capacity = text.size() + 1;
    for (const std::size_t i : order) {
        capacity += replacements[i].third().size();
    }
    StringWriter writer{capacity};
    const char* rest = text.begin();
    for (const std::size_t i : order) {
        writer.append(between(rest, findings[i].start.end()));
        writer.append(replacements[i].third());
        rest = findings[i].end.begin();
    }
    writer.append(between(rest, text.end()));
    return writer.release();
}

} // namespace

Containers::Pair<Containers::String, bool>
replaceTagContent(const Containers::StringView text,
                  const std::initializer_list<TagReplacement> replacements) {
    return replaceTagContent(text, Containers::arrayView(replacements));
}

Containers::Pair<Containers::String, bool>
replaceTagContent(const Containers::StringView text,
                  const Containers::ArrayView<const TagReplacement> replacements) {
    Containers::Array<Finding> findings{Corrade::ValueInit, replacements.size()};
    findTags(text, replacements, findings);
    for (std::size_t i = 0; i != replacements.size(); ++i) {
        const auto& [start, end] = findings[i];
        if (start.isEmpty() != end.isEmpty()) {
            const Containers::StringView missing =
                start.isEmpty() ? replacements[i].first() : replacements[i].second();
            return {Utility::format("missing tag '{}'", missing), false};
        }
    }

    const Containers::Array<std::size_t> order = orderOfFindings(findings);
    const std::size_t present = std::count_if(findings.begin(), findings.end(),
                                              [](const Finding& f) { return f.isPresent(); });
    if (present == 0) {
        return {Containers::String{text}, true};
    }
    for (std::size_t i = 1; i != present; ++i) {
        const std::size_t earlier = order[i - 1];
        const std::size_t later = order[i];
        if (findings[earlier].end.data() >= findings[later].start.data()) {
            return {Utility::format("overlapping tags: '{}' should appear before '{}'",
                                    replacements[earlier].second(), replacements[later].first()),
                    false};
        }
    }
    return {writeRegions(text, replacements, findings, order.prefix(present)), true};
}

namespace {

bool isUpper(const char c) {
    return std::isupper(static_cast<unsigned char>(c));
}

bool isUpperOrSeparator(const char c) {
    return isUpper(c) || c == ' ' || c == '-';
}

bool isLetter(const char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(const char c) {
    return c >= '0' && c <= '9';
}

/* Whether the byte at `i`, which follows `previous`, is the capital that a word begins with. */
bool beginsWord(const Containers::StringView name, const std::size_t i, const char previous) {
    if (!isUpper(name[i])) {
        return false;
    }
    if (!isUpperOrSeparator(previous)) {
        return true;
    }
    return isUpper(previous) && i + 1 != name.size() && !isUpperOrSeparator(name[i + 1]);
}

} // namespace

Containers::String toKebapCase(const Containers::StringView name) {
    Containers::Array<char> kebap;
    arrayReserve(kebap, name.size() + 1);
    char previous = ' ';
    for (std::size_t i = 0; i != name.size(); previous = name[i++]) {
        const char c = name[i];
        if (c == '-' && previous == '-') {
            continue;
        }
        if (beginsWord(name, i, previous)) {
            arrayAppend(kebap, '-');
        }
        arrayAppend(kebap, c == ' ' ? '-' : c);
    }
    Utility::String::lowercaseInPlace({kebap.data(), kebap.size()});
    return {kebap.data(), kebap.size()};
}

Containers::String toBigCamelCase(const Containers::StringView name) {
    Containers::Array<char> camel;
    arrayReserve(camel, name.size() + 1);
    bool capitalizeNext = true;
    for (const char c : name) {
        if (!isLetter(c) && !isDigit(c)) {
            capitalizeNext = true;
            continue;
        }
        if (isDigit(c) && camel.isEmpty()) {
            continue;
        }
        const bool capital = capitalizeNext || isUpper(c);
        arrayAppend(camel, static_cast<char>(capital ? std::toupper(c) : std::tolower(c)));
        capitalizeNext = false;
    }
    return {camel.data(), camel.size()};
}

namespace {

/* Search without case. A facet derived by a caller may answer anything and throw, so it gets
   exactly the calls of the plain comparator. The upper case of the classic locale is known, and the
   facets of the standard library convert many bytes in one call: a short text is folded whole, and
   for a long one the upper case of all byte values goes into a table. These texts are then searched
   with a filter. */

using Facet = std::ctype<char>;

/* Text size in bytes from which a table of all upper cases costs less than folding the text. */
constexpr std::size_t longText = 512;

/* The only facets of the standard library itself, which never throw. */
bool isStandard(const Facet& facet) {
    return typeid(facet) == typeid(Facet) || typeid(facet) == typeid(std::ctype_byname<char>);
}

/* The facet is looked up once and not for every comparison, which costs ten times the comparison.
 */
std::uint64_t searchEveryPlace(const Containers::StringView text,
                               const Containers::StringView substring, const Facet& facet) {
    const char* const match = std::search(
        text.begin(), text.end(), substring.begin(), substring.end(),
        [&facet](const char a, const char b) { return facet.toupper(a) == facet.toupper(b); });
    return match == text.end() ? noMatch : match - text.begin();
}

/* Searches with a filter by the bytes that match the first and the last byte of `substring`. */
template <class Equal>
std::uint64_t searchFiltered(const Containers::StringView text,
                             const Containers::StringView substring, const ByteSet& first,
                             const ByteSet& last, const Equal& equal) {
    const BytePairFilter filter{first, last, substring.size() - 1};
    const std::size_t placeCount = text.size() - substring.size() + 1;
    const std::size_t place =
        filter.find(text.data(), placeCount, [substring, &equal](const char* const candidate) {
            return std::equal(substring.begin(), substring.end(), candidate, equal);
        });
    return place == placeCount ? noMatch : place;
}

char classicUpperCase(const char c) {
    return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c;
}

ByteSet classicSameLetters(const char letter) {
    ByteSet set;
    set.add(letter);
    if (isLetter(letter)) {
        set.add(char(letter ^ ('a' - 'A')));
    }
    return set;
}

std::uint64_t searchClassic(const Containers::StringView text,
                            const Containers::StringView substring) {
    return searchFiltered(text, substring, classicSameLetters(substring.front()),
                          classicSameLetters(substring.back()), [](const char a, const char b) {
                              return classicUpperCase(a) == classicUpperCase(b);
                          });
}

ByteSet onlyByte(const char value) {
    ByteSet set;
    set.add(value);
    return set;
}

/* Searches a text below `longText` for a part of at most its size. */
std::uint64_t searchFolded(const Containers::StringView text,
                           const Containers::StringView substring, const Facet& facet) {
    char folded[2 * longText];
    char* const textEnd = std::copy(text.begin(), text.end(), folded);
    char* const end = std::copy(substring.begin(), substring.end(), textEnd);
    facet.toupper(folded, end);
    return searchFiltered({folded, text.size()}, {textEnd, substring.size()}, onlyByte(*textEnd),
                          onlyByte(end[-1]), std::equal_to<char>{});
}

/* The upper case of each byte value. */
class UpperCaseTable {
public:
    explicit UpperCaseTable(const Facet& facet) {
        std::iota(std::begin(upperCase), std::end(upperCase), '\0');
        facet.toupper(std::begin(upperCase), std::end(upperCase));
    }

    char operator[](const char c) const { return upperCase[static_cast<unsigned char>(c)]; }

    /* The byte values with the same upper case as `letter`, unless there are too many. The C
       library's locales have two, or three for the Greek sigma. */
    Containers::Optional<ByteSet> sameLetters(const char letter) const {
        ByteSet set;
        for (unsigned value = 0; value != 256; ++value) {
            if (upperCase[value] == (*this)[letter] && !set.add(char(value))) {
                return {};
            }
        }
        return set;
    }

private:
    char upperCase[256];
};

std::uint64_t searchByTable(const Containers::StringView text,
                            const Containers::StringView substring, const Facet& facet) {
    const UpperCaseTable upperCase{facet};
    const Containers::Optional<ByteSet> first = upperCase.sameLetters(substring.front());
    const Containers::Optional<ByteSet> last = upperCase.sameLetters(substring.back());
    if (!first || !last) {
        return searchEveryPlace(text, substring, facet);
    }
    return searchFiltered(text, substring, *first, *last, [&upperCase](const char a, const char b) {
        return upperCase[a] == upperCase[b];
    });
}

} // namespace

std::uint64_t caseInsensitiveSearch(const Containers::StringView text,
                                    const Containers::StringView substring,
                                    const std::locale& locale) {
    if (!substring.data() || substring.isEmpty()) {
        return 0;
    }
    if (!text.data() || text.size() < substring.size()) {
        return noMatch;
    }
    if (locale == std::locale::classic()) {
        return searchClassic(text, substring);
    }
    const auto& facet = std::use_facet<Facet>(locale);
    if (!isStandard(facet)) {
        return searchEveryPlace(text, substring, facet);
    }
    return text.size() < longText ? searchFolded(text, substring, facet)
                                  : searchByTable(text, substring, facet);
}

std::uint64_t caseInsensitiveSearch(const Containers::StringView text,
                                    const Containers::StringView substring) {
    return caseInsensitiveSearch(text, substring, std::locale{});
}

} // namespace VespermoorEngine::Utils
