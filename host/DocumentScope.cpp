#include "DocumentScope.h"

#include <algorithm>
#include <charconv>
#include <new>
#include <utility>

#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/Optional.h>
#include <VespermoorEditor/Utils/RapidJsonUtils.h>

namespace VespermoorEngine::Host {

namespace {

using namespace Corrade::Containers::Literals;

/* Index that `step` spells in decimal, as in a JSON Pointer: without a sign, a leading zero or
   anything after the digits. */
Containers::Optional<rapidjson::SizeType> parseIndex(const Containers::StringView step) {
    rapidjson::SizeType index = 0;
    const std::from_chars_result parsed = std::from_chars(step.begin(), step.end(), index);
    if (parsed.ec != std::errc{} || parsed.ptr != step.end() ||
        (step.size() > 1 && step.front() == '0')) {
        return {};
    }
    return index;
}

rapidjson::Value* child(rapidjson::Value& value, const Containers::StringView step) {
    if (value.IsObject()) {
        return RapidJsonUtils::getMember(value, step);
    }
    if (value.IsArray()) {
        const Containers::Optional<rapidjson::SizeType> index = parseIndex(step);
        return index && *index < value.Size() ? &value[*index] : nullptr;
    }
    return nullptr;
}

struct SpareMemory {
    ~SpareMemory() { ::operator delete(memory); }

    void* memory = nullptr;
};

thread_local SpareMemory spare;

bool appends(const rapidjson::Value& array, const Containers::StringView step) {
    const Containers::Optional<rapidjson::SizeType> index = parseIndex(step);
    return step == "-"_s || (index && *index == array.Size());
}

} // namespace

DocumentScope::DocumentScope(rapidjson::Document& document) : DocumentScope{document, document} {}

DocumentScope::DocumentScope(rapidjson::Document& document, rapidjson::Value& value)
    : document{&document}, reached{&value} {}

void* DocumentScope::operator new(const std::size_t size) {
    return size == sizeof(DocumentScope) && spare.memory ? std::exchange(spare.memory, nullptr)
                                                         : ::operator new(size);
}

void DocumentScope::operator delete(void* const memory, const std::size_t size) {
    if (size == sizeof(DocumentScope) && !spare.memory) {
        spare.memory = memory;
    } else {
        ::operator delete(memory);
    }
}

bool DocumentScope::exists() {
    return missing.isEmpty();
}

Containers::Pointer<JsonObject> DocumentScope::member(const Containers::StringView path) {
    Containers::Pointer<DocumentScope> place{Corrade::InPlaceInit, *document, *reached};
    for (const Containers::String& step : missing) {
        place->descend(step);
    }
    const char* step = path.begin();
    for (const char* slash; (slash = std::find(step, path.end(), '/')) != path.end();) {
        place->descend({step, std::size_t(slash - step)});
        step = slash + 1;
    }
    place->descend({step, std::size_t(path.end() - step)});
    return place;
}

rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>& DocumentScope::allocator() {
    return document->GetAllocator();
}

const rapidjson::Value& DocumentScope::value() const {
    if (missing.isEmpty()) {
        return *reached;
    }
    static const rapidjson::Value null;
    return null;
}

rapidjson::Value& DocumentScope::mutableValue() {
    for (const Containers::String& step : missing) {
        if (reached->IsArray() && appends(*reached, step)) {
            reached->PushBack(rapidjson::Value{}, allocator());
            reached = &(*reached)[reached->Size() - 1];
            continue;
        }
        if (!reached->IsObject()) {
            reached->SetObject();
        }
        reached = &RapidJsonUtils::getOrAddMember(*reached, step, allocator());
    }
    missing = {};
    return *reached;
}

void DocumentScope::descend(const Containers::StringView name) {
    rapidjson::Value* const next = missing.isEmpty() ? child(*reached, name) : nullptr;
    if (next) {
        reached = next;
    } else {
        arrayAppend(missing, Containers::String{name});
    }
}

bool DocumentScope::canBeMade() const {
    return missing.isEmpty() || reached->IsObject() || reached->IsNull() ||
           (reached->IsArray() && appends(*reached, missing.front()));
}

} // namespace VespermoorEngine::Host
