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

    /** @brief @p element followed by all roots. */
    Containers::Array<Containers::Reference<JsonObject>> withElement(JsonObject& element) const;

private:
    /* A deque, since the references point into it. */
    std::deque<DocumentScope> roots;
    Containers::Array<Containers::Reference<JsonObject>> references;
};

} // namespace VespermoorEngine::Host

#endif
