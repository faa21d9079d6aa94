#include "DocumentScope.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include <Corrade/Containers/GrowableArray.h>
#include <Corrade/Containers/Optional.h>
#include <VespermoorEditor/Utils/RapidJsonUtils.h>

namespace VespermoorEngine::Host {

namespace {

using namespace Corrade::Containers::Literals;

/* Parses `step` as a decimal index, as in a JSON Pointer: no sign, leading zero or trailing
   text. */
Containers::Optional<rapidjson::SizeType> parseIndex(const Containers::StringView step) {
    rapidjson::SizeType index = 0;
    const std::from_chars_result parsed = std::from_chars(step.begin(), step.end(), index);
    if (parsed.ec != std::errc{} || parsed.ptr != step.end() ||
        (step.size() > 1 && step.front() == '0')) {
        return {};
    }
    return index;
}

/* Names of one object often begin alike and end in a number, so their last byte tells most of them
   apart. */
bool nameEquals(const rapidjson::Value& name, const Containers::StringView key) {
    const std::size_t size = name.GetStringLength();
    if (size != key.size()) {
        return false;
    }
    const char* const data = name.GetString();
    return size == 0 ||
           (data[size - 1] == key.data()[size - 1] && std::memcmp(data, key.data(), size) == 0);
}

/* As `RapidJsonUtils::getMember()`, but inlined: rendering spends a third of its time here. */
inline rapidjson::Value* findMember(rapidjson::Value& object, const Containers::StringView name) {
    const auto end = object.MemberEnd();
    for (auto member = object.MemberBegin(); member != end; ++member) {
        if (nameEquals(member->name, name)) {
            return &member->value;
        }
    }
    return nullptr;
}

/* Not inlined, so that the member lookup is. */
[[gnu::noinline]] rapidjson::Value* findElement(rapidjson::Value& array,
                                                const Containers::StringView step) {
    const Containers::Optional<rapidjson::SizeType> index = parseIndex(step);
    return index && *index < array.Size() ? &array[*index] : nullptr;
}

inline rapidjson::Value* findChild(rapidjson::Value& value, const Containers::StringView step) {
    return value.IsObject()  ? findMember(value, step)
           : value.IsArray() ? findElement(value, step)
                             : nullptr;
}

/* Steps are short, so this is faster than a call of memchr(). */
const char* endOfStep(const char* step, const char* const end) {
    while (step != end && *step != '/') {
        ++step;
    }
    return step;
}

/* Follows the steps from `step` to `end`, and returns whether all exist. If one is missing, `value`
   is the last value reached and `step` is the start of the missing step. */
bool follow(rapidjson::Value*& value, const char*& step, const char* const end) {
    for (;;) {
        const char* const slash = endOfStep(step, end);
        rapidjson::Value* const next = findChild(*value, {step, std::size_t(slash - step)});
        if (!next) {
            return false;
        }
        value = next;
        if (slash == end) {
            return true;
        }
        step = slash + 1;
    }
}

bool appends(const rapidjson::Value& array, const Containers::StringView step) {
    const Containers::Optional<rapidjson::SizeType> index = parseIndex(step);
    return step == "-"_s || (index && *index == array.Size());
}

} // namespace

DocumentScope::DocumentScope(rapidjson::Document& document) : DocumentScope{document, document} {}

DocumentScope::DocumentScope(rapidjson::Document& document, rapidjson::Value& value)
    : document{&document}, reached{&value} {}

bool DocumentScope::exists() {
    return missing.isEmpty();
}

Containers::Pointer<JsonObject> DocumentScope::member(const Containers::StringView path) {
    rapidjson::Value* value = reached;
    const char* step = path.begin();
    const bool isFound = missing.isEmpty() && follow(value, step, path.end());
    Containers::Pointer<DocumentScope> place{Corrade::InPlaceInit, *document, *value};
    if (!isFound) {
        for (const Containers::String& above : missing) {
            arrayAppend(place->missing, above);
        }
        place->addMissing({step, std::size_t(path.end() - step)});
    }
    return place;
}

void DocumentScope::addMissing(const Containers::StringView path) {
    const char* step = path.begin();
    for (const char* slash; (slash = std::find(step, path.end(), '/')) != path.end();) {
        arrayAppend(missing, Corrade::InPlaceInit, step, std::size_t(slash - step));
        step = slash + 1;
    }
    arrayAppend(missing, Corrade::InPlaceInit, step, std::size_t(path.end() - step));
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
    rapidjson::Value* const next = missing.isEmpty() ? findChild(*reached, name) : nullptr;
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
