#ifndef Vespermoor_Host_ElementScope_h
#define Vespermoor_Host_ElementScope_h

#include "DocumentScope.h"

namespace VespermoorEngine::Host {

/**
 * @brief An element of an array or object, as the scope of a template that is rendered for each.
 *
 * Its members have their names. In addition, `@key` is its own name if it is a member of an object,
 * and `@value` is the element itself, which helps if it has no members.
 */
class ElementScope : public DocumentScope {
public:
    /** @brief @p value lies inside @p owner; @p key lives as long and is empty in an array. */
    ElementScope(rapidjson::Document& owner, rapidjson::Value& value, Containers::StringView key);

    Containers::Pointer<JsonObject> member(Containers::StringView path) override;

private:
    rapidjson::Document& document;
    rapidjson::Value& element;
    rapidjson::Value name;
};

} // namespace VespermoorEngine::Host

#endif
