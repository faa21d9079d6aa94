#include "TagRegions.h"

#include <string>
#include <utility>
#include <vector>

#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/Pair.h>
#include <Corrade/Containers/StringStl.h>
#include <Corrade/Containers/Triple.h>

#include "Failure.h"

namespace VespermoorEngine::Host {

namespace {

using Replacements = Containers::ArrayView<const Utils::TagReplacement>;

std::string quoted(const Containers::StringView tag) {
    return "'" + std::string{tag} + "'";
}

/* The line ends of a text: those of its first line. */
enum class LineEnds { None, Lf, CrLf };

LineEnds lineEndsOf(const Containers::StringView text) {
    const Containers::StringView newline = text.find('\n');
    if (newline.isEmpty()) {
        return LineEnds::None;
    }
    return text.prefix(newline.begin()).hasSuffix('\r') ? LineEnds::CrLf : LineEnds::Lf;
}

std::string withLineEnds(const Containers::StringView text, const LineEnds ends) {
    std::string result;
    for (std::size_t i = 0; i != text.size(); ++i) {
        const bool isCrLf = text.exceptPrefix(i).hasPrefix("\r\n");
        if (ends == LineEnds::None || (!isCrLf && text[i] != '\n')) {
            result += text[i];
        } else if (!isCrLf) {
            result += ends == LineEnds::CrLf ? "\r\n" : "\n";
        }
    }
    return result;
}

/* Replacements with the line ends of their tags and contents converted. */
class ConvertedReplacements {
public:
    ConvertedReplacements(const Replacements given, const LineEnds ends) {
        /* Reserved, since the views point into it. */
        strings.reserve(3 * given.size());
        for (const Utils::TagReplacement& region : given) {
            arrayAppend(converted, Utils::TagReplacement{convert(region.first(), ends),
                                                         convert(region.second(), ends),
                                                         convert(region.third(), ends)});
        }
    }

    Replacements all() const { return converted; }

private:
    Containers::StringView convert(const Containers::StringView text, const LineEnds ends) {
        return strings.emplace_back(withLineEnds(text, ends));
    }

    std::vector<std::string> strings;
    Containers::Array<Utils::TagReplacement> converted;
};

void checkTags(const Containers::StringView path, const Containers::StringView text,
               const Replacements replacements) {
    const auto isThere = [&text](const Containers::StringView tag) {
        return !tag.isEmpty() && text.contains(tag);
    };
    for (const Utils::TagReplacement& region : replacements) {
        if (!isThere(region.first()) && !isThere(region.second())) {
            throw Failure{path, "missing tag " + quoted(region.first())};
        }
    }
}

/* All tags are there. */
void checkOrder(const Containers::StringView path, const Containers::StringView text,
                const Utils::TagReplacement& region) {
    if (region.first() == region.second()) {
        throw Failure{path, "start tag and end tag are both " + quoted(region.first())};
    }
    if (text.find(region.second()).begin() < text.find(region.first()).end()) {
        throw Failure{path, "end tag " + quoted(region.second()) + " is not after start tag " +
                                quoted(region.first())};
    }
}

void checkContent(const Containers::StringView path, const Utils::TagReplacement& region,
                  const Containers::StringView tag) {
    if (region.third().contains(tag)) {
        throw Failure{path, "content between " + quoted(region.first()) + " and " +
                                quoted(region.second()) + " contains tag " + quoted(tag)};
    }
}

void checkContents(const Containers::StringView path, const Replacements replacements) {
    for (const Utils::TagReplacement& region : replacements) {
        for (const Utils::TagReplacement& other : replacements) {
            checkContent(path, region, other.first());
            checkContent(path, region, other.second());
        }
    }
}

} // namespace

Containers::String replaceRegions(const Containers::StringView path,
                                  const Containers::StringView text, const Replacements given) {
    const ConvertedReplacements converted{given, lineEndsOf(text)};
    const Replacements replacements = converted.all();
    checkTags(path, text, replacements);
    Containers::Pair<Containers::String, bool> result =
        Utils::replaceTagContent(text, replacements);
    if (!result.second()) {
        throw Failure{path, result.first()};
    }
    for (const Utils::TagReplacement& region : replacements) {
        checkOrder(path, text, region);
    }
    checkContents(path, replacements);
    /* The end of a content and the start of an end tag can form a tag together. */
    if (Utils::replaceTagContent(result.first(), replacements).first() != result.first()) {
        throw Failure{path, "the new content would form a tag with the text next to it"};
    }
    /* The new content can add or remove the first line end. */
    const ConvertedReplacements next{given, lineEndsOf(result.first())};
    if (Utils::replaceTagContent(result.first(), next.all()).first() != result.first()) {
        throw Failure{path, "the new content would mix line ends with the text around it"};
    }
    return std::move(result.first());
}

} // namespace VespermoorEngine::Host
