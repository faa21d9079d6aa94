#ifndef Vespermoor_Host_ElementScope_h
#define Vespermoor_Host_ElementScope_h

#include "DocumentScope.h"

namespace VespermoorEngine::Host {

/**
 * @brief The scope of one element of an array or object, for a template that is rendered for each.
 *
 * The element's members are found by their names. `@key` is the element's own name in an object,
 * and `@value` is the element itself, for elements without members.
 */
class ElementScope : public DocumentScope {
public:
    /** @brief @p value is inside @p owner; @p key lives as long and is empty in an array. */
    ElementScope(rapidjson::Document& owner, rapidjson::Value& value, Containers::StringView key);

    Containers::Pointer<JsonObject> member(Containers::StringView path) override;

private:
    rapidjson::Document& document;
    rapidjson::Value& element;
    rapidjson::Value name;
};

} // namespace VespermoorEngine::Host

#endif
