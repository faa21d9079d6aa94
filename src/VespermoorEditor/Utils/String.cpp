#include "VespermoorEditor/Utils/String.h"

#include <algorithm>
#include <cctype>
#include <numeric>

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

/* Where the two tags of a replacement stand in the text, empty where they do not. */
struct Finding {
    Containers::StringView start;
    Containers::StringView end;

    bool isPresent() const { return !start.isEmpty(); }
};

/* Notes in `findings` where each tag of the replacements stands first in the text. */
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

/* The text with the new contents of the regions, of which `order` names at least one. */
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

/* Whether the byte at `i`, behind `previous`, is the capital that a word begins with. */
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

using Facet = std::ctype<char>;

/* What a facet makes of each byte value, asked once. It is asked for one byte at a time, as the
   comparator does: a facet of the user's may answer differently for a range. */
class UpperCase {
public:
    explicit UpperCase(const Facet& facet) {
        for (unsigned value = 0; value != 256; ++value) {
            table[value] = facet.toupper(static_cast<char>(value));
        }
    }

    char operator()(const char c) const { return table[static_cast<unsigned char>(c)]; }

private:
    char table[256];
};

/* The byte values with the same upper case as a letter, unless these are too many. The C library's
   locales have two, or three as for the Greek sigma, but a facet of the user's may have more. */
Containers::Optional<ByteSet> sameLetters(const UpperCase& upperCase, const char letter) {
    ByteSet set;
    for (unsigned value = 0; value != 256; ++value) {
        const char c = static_cast<char>(value);
        if (upperCase(c) == upperCase(letter) && !set.add(c)) {
            return {};
        }
    }
    return set;
}

/* The facet is looked up once and not at every comparison, which costs ten times the comparison. */
std::uint64_t searchEveryPlace(const Containers::StringView text,
                               const Containers::StringView substring, const Facet& facet) {
    const char* const match = std::search(
        text.begin(), text.end(), substring.begin(), substring.end(),
        [&facet](const char a, const char b) { return facet.toupper(a) == facet.toupper(b); });
    return match == text.end() ? noMatch : match - text.begin();
}

std::uint64_t searchLongText(const Containers::StringView text,
                             const Containers::StringView substring, const std::locale& locale) {
    const Facet& facet = std::use_facet<Facet>(locale);
    const UpperCase upperCase{facet};
    const Containers::Optional<ByteSet> first = sameLetters(upperCase, substring.front());
    const Containers::Optional<ByteSet> last = sameLetters(upperCase, substring.back());
    if (!first || !last) {
        return searchEveryPlace(text, substring, facet);
    }
    const auto matches = [&](const char* const candidate) {
        return std::equal(
                   substring.begin(), substring.end(), candidate,
                   [&](const char a, const char b) { return upperCase(a) == upperCase(b); }) &&
               std::equal(substring.begin(), substring.end(), candidate,
                          CaseInsensitiveStringEqual{locale});
    };
    const BytePairFilter filter{text, *first, *last, substring.size() - 1};
    for (std::size_t i = filter.next(0); i != filter.places(); i = filter.next(i + 1)) {
        if (matches(text.data() + i)) {
            return i;
        }
    }
    return noMatch;
}

/* Bytes of text from which on the table of all upper cases costs less than it saves. */
constexpr std::size_t longText = 384;

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
    return text.size() < longText ? searchEveryPlace(text, substring, std::use_facet<Facet>(locale))
                                  : searchLongText(text, substring, locale);
}

std::uint64_t caseInsensitiveSearch(const Containers::StringView text,
                                    const Containers::StringView substring) {
    return caseInsensitiveSearch(text, substring, std::locale{});
}

} // namespace VespermoorEngine::Utils
