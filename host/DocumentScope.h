#ifndef Vespermoor_Host_DocumentScope_h
#define Vespermoor_Host_DocumentScope_h

#include <VespermoorEditor/Utils/JsonObject.h>

namespace VespermoorEngine::Host {

/**
 * @brief A place in a JSON document, which need not exist yet.
 *
 * A slash in a path is a step down; a decimal step is an array index. If a path does not exist, its
 * accessor reads as null, and the first write creates the missing values on the way. The document
 * is borrowed. An accessor stays valid until something else changes a value above its place.
 */
class DocumentScope : public JsonObject {
public:
    /** @brief The root of @p document. */
    explicit DocumentScope(rapidjson::Document& document);

    /** @brief @p value, which must be inside @p document. */
    DocumentScope(rapidjson::Document& document, rapidjson::Value& value);

    bool exists() override;
    Containers::Pointer<JsonObject> member(Containers::StringView path) override;
    rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>& allocator() override;
    const rapidjson::Value& value() const override;
    rapidjson::Value& mutableValue() override;

    /** @brief Goes down by the single step @p name, in which a slash is an ordinary character. */
    void descend(Containers::StringView name);

    /**
     * @brief Whether a write can create this place without replacing an existing value.
     *
     * Members can be added to an object and to null, and an element to the end of an array if the
     * step is the array's size or `-`.
     */
    bool canBeMade() const;

private:
    /* Adds the missing steps of `above`, then those of a path. */
    void addMissingSteps(const DocumentScope& above, Containers::StringView path);
    void addMissing(Containers::StringView step);

    rapidjson::Document* document;
    /* The value at this place, or the last existing one on the way to it. */
    rapidjson::Value* reached;
    /* The missing steps from there on, or null: most accessors refer to a value, and one pointer is
       cheaper to make and to destroy than a list. */
    Containers::Pointer<Containers::Array<Containers::String>> missing;
};

} // namespace VespermoorEngine::Host

#endif
