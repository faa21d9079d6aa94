#ifndef Vespermoor_Host_Scopes_h
#define Vespermoor_Host_Scopes_h

#include <deque>

#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/Reference.h>

#include "DocumentScope.h"

namespace VespermoorEngine::Host {

/** @brief The roots of JSON documents, as the list of scopes of a template. */
class Scopes {
public:
    /** @brief Appends the root of @p document, which is borrowed. */
    void add(rapidjson::Document& document);

    /** @brief All roots, in the order of their addition. */
    Containers::ArrayView<const Containers::Reference<JsonObject>> all() const {
        return references;
    }

    /** @brief @p element followed by all roots. The list is reused by the next call. */
    Containers::ArrayView<const Containers::Reference<JsonObject>> withElement(JsonObject& element);

private:
    /* A deque, since the references point into it. */
    std::deque<DocumentScope> roots;
    Containers::Array<Containers::Reference<JsonObject>> references;
    /* The references after one to an element, or nothing. */
    Containers::Array<Containers::Reference<JsonObject>> elementFirst;
};

} // namespace VespermoorEngine::Host

#endif
