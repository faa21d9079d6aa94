#include "Scopes.h"

#include <Corrade/Containers/GrowableArray.h>

namespace VespermoorEngine::Host {

void Scopes::add(rapidjson::Document& document) {
    roots.emplace_back(document);
    arrayAppend(references, Containers::Reference<JsonObject>{roots.back()});
}

Containers::Array<Containers::Reference<JsonObject>>
Scopes::withElement(JsonObject& element) const {
    Containers::Array<Containers::Reference<JsonObject>> result;
    arrayReserve(result, references.size() + 1);
    arrayAppend(result, Containers::Reference<JsonObject>{element});
    for (const Containers::Reference<JsonObject>& reference : references) {
        arrayAppend(result, reference);
    }
    return result;
}

} // namespace VespermoorEngine::Host
