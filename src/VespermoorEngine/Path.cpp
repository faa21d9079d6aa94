#include "VespermoorEngine/Path.h"

#include <algorithm>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Utility/Path.h>

namespace VespermoorEngine::Path {

namespace {

using namespace Corrade::Containers::Literals;

/* Appends the components of `path` to `normalized`, which is empty or an absolute path without a
   trailing slash; each `..` removes the last component instead. */
void appendNormalized(Containers::Array<char>& normalized, Containers::StringView path) {
    while (!path.isEmpty()) {
        const char* const begin = path.begin();
        const char* const end = path.findOr('/', path.end()).begin();
        const Containers::StringView component = path.prefix(end);
        path = path.suffix(end == path.end() ? end : end + 1);
        if (component.isEmpty() || component == "."_s) {
            continue;
        }
        if (component == ".."_s) {
            while (!normalized.isEmpty()) {
                const char last = normalized.back();
                arrayRemoveSuffix(normalized, 1);
                if (last == '/') {
                    break;
                }
            }
            continue;
        }
        arrayAppend(normalized, '/');
        arrayAppend(normalized, Containers::arrayView(begin, component.size()));
    }
}

Containers::StringView withoutTrailingSlashes(Containers::StringView path) {
    while (path.size() > 1 && path.back() == '/') {
        path = path.exceptSuffix(1);
    }
    return path;
}

/* The parent of `directory`, which has no trailing slash: `/` for an entry of the root, empty for
   the first component of a relative path. */
Containers::StringView parent(const Containers::StringView directory) {
    const Containers::StringView slash = directory.findLast('/');
    if (slash.isEmpty()) {
        return {};
    }
    return withoutTrailingSlashes(directory.prefix(slash.end()));
}

} // namespace

Containers::String absolute(const Containers::StringView path) {
    Containers::Array<char> normalized;
    arrayReserve(normalized, path.size() + 1);
    if (!path.hasPrefix('/')) {
        const Containers::Optional<Containers::String> current = Utility::Path::currentDirectory();
        if (!current) {
            return {};
        }
        appendNormalized(normalized, *current);
    }
    appendNormalized(normalized, path);
    return normalized.isEmpty() ? Containers::String{"/"_s}
                                : Containers::String{normalized.data(), normalized.size()};
}

bool isParentPath(const Containers::StringView directory, const Containers::StringView path) {
    if (directory.isEmpty()) {
        return false;
    }
    const Containers::StringView parent = withoutTrailingSlashes(directory);
    if (!path.hasPrefix(parent)) {
        return false;
    }
    const Containers::StringView rest = path.exceptPrefix(parent.size());
    if (parent.back() != '/' && !rest.hasPrefix('/')) {
        return false;
    }
    return std::any_of(rest.begin(), rest.end(), [](const char c) { return c != '/'; });
}

Containers::StringView upwardsSearch(const Containers::StringView directory,
                                     const Containers::StringView name) {
    for (Containers::StringView candidate = withoutTrailingSlashes(directory); !candidate.isEmpty();
         candidate = candidate == "/"_s ? nullptr : parent(candidate)) {
        if (Utility::Path::exists(Utility::Path::join(candidate, name))) {
            return candidate;
        }
    }
    return {};
}

} // namespace VespermoorEngine::Path
