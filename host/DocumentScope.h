#ifndef Vespermoor_Host_DocumentScope_h
#define Vespermoor_Host_DocumentScope_h

#include <VespermoorEditor/Utils/JsonObject.h>

namespace VespermoorEngine::Host {

/**
 * @brief A place in a JSON document, which need not exist yet.
 *
 * A slash in a path is a step down, a decimal step leads into an array. A path that leads nowhere
 * gives an accessor that does not exist and reads as null; the first write creates it and all that
 * is missing on the way to it. The document is borrowed. An accessor stays valid until something
 * else changes a value above its place.
 */
class DocumentScope : public JsonObject {
public:
    /** @brief The root of @p document. */
    explicit DocumentScope(rapidjson::Document& document);

    /** @brief @p value, which has to lie inside @p document. */
    DocumentScope(rapidjson::Document& document, rapidjson::Value& value);

    bool exists() override;
    Containers::Pointer<JsonObject> member(Containers::StringView path) override;
    rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>& allocator() override;
    const rapidjson::Value& value() const override;
    rapidjson::Value& mutableValue() override;

    /** @brief Goes down by the single step @p name, in which a slash is an ordinary character. */
    void descend(Containers::StringView name);

    /**
     * @brief Whether a write can make this place without replacing anything that exists.
     *
     * Members can be added to an object and to null, and an element to the end of an array if the
     * step is the array's size or `-`.
     */
    bool canBeMade() const;

private:
    /* Adds the steps of a path that lead nowhere. */
    void addMissing(Containers::StringView path);

    rapidjson::Document* document;
    /* The value that the steps lead to, or the last one on the way if they lead nowhere. */
    rapidjson::Value* reached;
    /* The steps that lead on from there to nowhere. */
    Containers::Array<Containers::String> missing;
};

} // namespace VespermoorEngine::Host

#endif
