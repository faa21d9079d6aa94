#include "ElementScope.h"

namespace VespermoorEngine::Host {

using namespace Corrade::Containers::Literals;

ElementScope::ElementScope(rapidjson::Document& owner, rapidjson::Value& value,
                           const Containers::StringView key)
    : DocumentScope{owner, value}, document{owner}, element{value} {
    if (key.data()) {
        name.SetString(rapidjson::StringRef(key.data(), key.size()));
    }
}

Containers::Pointer<JsonObject> ElementScope::member(const Containers::StringView path) {
    if (path == "@value"_s) {
        return Containers::Pointer<DocumentScope>{Corrade::InPlaceInit, document, element};
    }
    if (path == "@key"_s && name.IsString()) {
        return Containers::Pointer<DocumentScope>{Corrade::InPlaceInit, document, name};
    }
    return DocumentScope::member(path);
}

} // namespace VespermoorEngine::Host
