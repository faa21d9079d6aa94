#include "TagRegions.h"

#include <utility>

#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/Pair.h>
#include <Corrade/Containers/Triple.h>

#include "Failure.h"

namespace VespermoorEngine::Host {

Containers::String
replaceRegions(const Containers::StringView path, const Containers::StringView text,
               const Containers::ArrayView<const Utils::TagReplacement> replacements) {
    const auto isThere = [&text](const Containers::StringView tag) {
        return !tag.isEmpty() && text.contains(tag);
    };
    for (const Utils::TagReplacement& region : replacements) {
        if (!isThere(region.first()) && !isThere(region.second())) {
            throw Failure{path, "missing tag '" + region.first() + "'"};
        }
    }
    Containers::Pair<Containers::String, bool> result =
        Utils::replaceTagContent(text, replacements);
    if (!result.second()) {
        throw Failure{path, result.first()};
    }
    return std::move(result.first());
}

} // namespace VespermoorEngine::Host
