#ifndef SceneValue_h
#define SceneValue_h

#include <VespermoorEditor/Utils/JsonObject.h>

/** @brief The value at a JSON Pointer of a scene document, which is borrowed. */
class SceneValue : public VespermoorEngine::JsonObject {
public:
    explicit SceneValue(rapidjson::Document& document, Corrade::Containers::StringView place = {});

    bool exists() override;
    Corrade::Containers::Pointer<JsonObject> member(Corrade::Containers::StringView path) override;
    rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>& allocator() override;
    const rapidjson::Value& value() const override;
    rapidjson::Value& mutableValue() override;

private:
    rapidjson::Document& document;
    Corrade::Containers::String place;
    rapidjson::Value null;
};

/** @brief Replaces the file at @p path with @p scene, or returns false and leaves it alone. */
bool saveScene(const rapidjson::Document& scene, Corrade::Containers::StringView path);

#endif
