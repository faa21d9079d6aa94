#include "SceneValue.h"

#include <VespermoorEditor/Utils/RapidJsonUtils.h>

using namespace Corrade;
using namespace Corrade::Containers::Literals;
namespace RapidJsonUtils = VespermoorEngine::RapidJsonUtils;

SceneValue::SceneValue(rapidjson::Document& document, const Containers::StringView place)
    : document{document}, place{place} {}

bool SceneValue::exists() {
    return RapidJsonUtils::valueByPointer(document, place);
}

/* A step down is a slash in both notations, and the pointer has one more in front. */
Containers::Pointer<VespermoorEngine::JsonObject>
SceneValue::member(const Containers::StringView path) {
    return Containers::Pointer<SceneValue>{InPlaceInit, document, place + "/"_s + path};
}

rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>& SceneValue::allocator() {
    return document.GetAllocator();
}

const rapidjson::Value& SceneValue::value() const {
    const rapidjson::Value* const found = RapidJsonUtils::valueByPointer(document, place);
    return found ? *found : null;
}

rapidjson::Value& SceneValue::mutableValue() {
    return rapidjson::Pointer{place.data(), place.size()}.Create(document);
}
