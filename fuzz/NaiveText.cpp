/* Tag regions and naming styles. */

#include "Naive.h"

#include <algorithm>

namespace VespermoorEngine::Fuzz::Naive {

namespace {

bool isUpper(const char c) {
    return c >= 'A' && c <= 'Z';
}

bool isLower(const char c) {
    return c >= 'a' && c <= 'z';
}

bool isDigit(const char c) {
    return c >= '0' && c <= '9';
}

bool isInsideWord(const char c) {
    return !isUpper(c) && c != ' ' && c != '-';
}

char toLower(const char c) {
    return isUpper(c) ? char(c - 'A' + 'a') : c;
}

char toUpper(const char c) {
    return isLower(c) ? char(c - 'a' + 'A') : c;
}

} // namespace

std::size_t findTag(const std::string& text, const std::string& tag) {
    return tag.empty() ? std::string::npos : text.find(tag);
}

std::pair<std::string, bool> replaceTagContent(const std::string& text,
                                               const std::vector<Region>& regions) {
    struct Found {
        std::size_t start, end;
        const Region* region;
    };
    std::vector<Found> found;
    for (const Region& region : regions) {
        const Found places{findTag(text, region.start), findTag(text, region.end), &region};
        const bool hasStart = places.start != std::string::npos;
        if (hasStart != (places.end != std::string::npos)) {
            return {"missing tag '" + (hasStart ? region.end : region.start) + "'", false};
        }
        if (hasStart) {
            found.push_back(places);
        }
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const Found& a, const Found& b) { return a.start < b.start; });
    for (std::size_t i = 1; i < found.size(); ++i) {
        if (found[i - 1].end >= found[i].start) {
            return {"overlapping tags: '" + found[i - 1].region->end + "' should appear before '" +
                        found[i].region->start + "'",
                    false};
        }
    }
    std::string result;
    std::size_t copied = 0;
    for (const Found& places : found) {
        const std::size_t content = places.start + places.region->start.size();
        result += text.substr(copied, content - copied) + places.region->content;
        copied = places.end;
    }
    return {result + text.substr(copied), true};
}

std::string toKebapCase(const std::string& name) {
    std::string result;
    for (std::size_t i = 0; i != name.size(); ++i) {
        const char before = i == 0 ? ' ' : name[i - 1];
        if (name[i] == '-' && before == '-') {
            continue;
        }
        const bool followsWord = isUpper(name[i]) && isInsideWord(before);
        const bool endsCapitals = isUpper(name[i]) && isUpper(before) && i + 1 != name.size() &&
                                  isInsideWord(name[i + 1]);
        result += followsWord || endsCapitals ? "-" : "";
        result += name[i] == ' ' ? '-' : toLower(name[i]);
    }
    return result;
}

std::string toBigCamelCase(const std::string& name) {
    std::string result;
    bool capitalise = true;
    for (const char c : name) {
        if (isUpper(c) || isLower(c) || (isDigit(c) && !result.empty())) {
            result += capitalise ? toUpper(c) : c;
            capitalise = false;
        } else if (!isDigit(c)) {
            capitalise = true;
        }
    }
    return result;
}

} // namespace VespermoorEngine::Fuzz::Naive
