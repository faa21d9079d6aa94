#include "VespermoorEditor/Utils/EditorUtils.h"

#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/Pair.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Utility/Path.h>

#include "VespermoorEngine/Path.h"

namespace VespermoorEngine::Utils {

using namespace Corrade::Containers::Literals;

Containers::String executablesPath() {
    const Containers::Optional<Containers::String> executable = Utility::Path::executableLocation();
    return executable ? Containers::String{Utility::Path::split(*executable).first()}
                      : Containers::String{};
}

Containers::Optional<Containers::String> findEditorRoot(const Containers::StringView start) {
    Containers::String installed =
        Path::absolute(Utility::Path::join(start, "../share/vespermoorengine"_s));
    const Containers::StringView found = Path::upwardsSearch(start, "shaders"_s);
    if (!found.isEmpty()) {
        return Containers::String{found};
    }
    if (Utility::Path::exists(installed)) {
        return installed;
    }
    return {};
}

Containers::Optional<Containers::String> findEditorRoot() {
    const Containers::Optional<Containers::String> executable = Utility::Path::executableLocation();
    if (!executable) {
        return {};
    }
    return findEditorRoot(Utility::Path::split(*executable).first());
}

} // namespace VespermoorEngine::Utils
