#include "Scopes.h"

#include <Corrade/Containers/GrowableArray.h>

namespace VespermoorEngine::Host {

void Scopes::add(rapidjson::Document& document) {
    roots.emplace_back(document);
    arrayAppend(references, Containers::Reference<JsonObject>{roots.back()});
    elementFirst = {};
}

Containers::ArrayView<const Containers::Reference<JsonObject>>
Scopes::withElement(JsonObject& element) {
    if (!elementFirst.isEmpty()) {
        elementFirst[0] = element;
        return elementFirst;
    }
    arrayReserve(elementFirst, references.size() + 1);
    arrayAppend(elementFirst, Containers::Reference<JsonObject>{element});
    for (const Containers::Reference<JsonObject>& reference : references) {
        arrayAppend(elementFirst, reference);
    }
    return elementFirst;
}

} // namespace VespermoorEngine::Host
