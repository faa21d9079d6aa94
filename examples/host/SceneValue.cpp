#include "SceneValue.h"

#include <fstream>

#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/StringStl.h>
#include <Corrade/Utility/Path.h>
#include <VespermoorEditor/Utils/RapidJsonUtils.h>

using namespace Corrade;
using namespace Corrade::Containers::Literals;
namespace RapidJsonUtils = VespermoorEngine::RapidJsonUtils;

/* Writes a temporary file and renames it: even if the disk is full, the file holds either the old
   scene or the new one, never a part. */
bool saveScene(const rapidjson::Document& scene, const Containers::StringView path) {
    const Containers::Optional<Containers::String> text = RapidJsonUtils::jsonToString(scene);
    if (!text) {
        return false;
    }
    const Containers::String beside = path + ".new"_s;
    std::ofstream file{beside.data(), std::ios::binary};
    file.write(text->data(), std::streamsize(text->size()));
    file.close();
    if (file && Utility::Path::move(beside, path)) {
        return true;
    }
    Utility::Path::remove(beside);
    return false;
}

SceneValue::SceneValue(rapidjson::Document& document, const Containers::StringView place)
    : document{document}, place{place} {}

bool SceneValue::exists() {
    return RapidJsonUtils::valueByPointer(document, place);
}

//! [member]
/* A step down is a slash in both notations, and the pointer begins with one more. In a pointer `~`
   begins an escape, so one in a name becomes `~0`. */
Containers::Pointer<VespermoorEngine::JsonObject>
SceneValue::member(const Containers::StringView path) {
    std::string pointer{place + "/"_s};
    for (const char c : path) {
        pointer += c;
        if (c == '~') {
            pointer += '0';
        }
    }
    return Containers::Pointer<SceneValue>{InPlaceInit, document, pointer};
}
//! [member]

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
