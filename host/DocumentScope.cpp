#include "DocumentScope.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
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

using Word = std::uint32_t;

Word wordAt(const char* const bytes) {
    Word word;
    std::memcpy(&word, bytes, sizeof(Word));
    return word;
}

bool hasSlash(const Word word) {
    constexpr Word ones = 0x01010101;
    const Word zeroIfSlash = word ^ '/' * ones;
    return (zeroIfSlash - ones) & ~zeroIfSlash & 0x80 * ones;
}

bool equalWithoutSlash(const char* const path, const char* const name, const std::size_t size) {
    return std::equal(name, name + size, path) && std::find(name, name + size, '/') == name + size;
}

/* Whether the first step of a path is `name`. Rendering spends a third of its time here. Names of 4
   to 8 bytes are compared as two words, which may overlap. A library call would take longer, and
   the processor would mispredict the exit of a loop. Names in one object often share a prefix and
   end in a number, so the last word is compared first. */
inline bool isFirstStep(const rapidjson::Value& name, const char* const path,
                        const char* const end) {
    const std::size_t size = name.GetStringLength();
    const auto pathSize = std::size_t(end - path);
    if (size > pathSize) {
        return false;
    }
    const char* const bytes = name.GetString();
    const std::size_t last = size - sizeof(Word);
    if (size >= sizeof(Word) && wordAt(path + last) != wordAt(bytes + last)) {
        return false;
    }
    if (size != pathSize && path[size] != '/') {
        return false;
    }
    if (size < sizeof(Word) || size > 2 * sizeof(Word)) {
        return equalWithoutSlash(path, bytes, size);
    }
    return wordAt(path) == wordAt(bytes) && !hasSlash(wordAt(bytes)) &&
           !hasSlash(wordAt(bytes + last));
}

/* Like `RapidJsonUtils::getMember()` with the first step of a path. The names of the members tell
   where that step can end, so there is no need to search for its end first. */
inline rapidjson::Value::Member* findMember(rapidjson::Value& object, const char* const path,
                                            const char* const end) {
    for (auto& member : object.GetObject()) {
        if (isFirstStep(member.name, path, end)) {
            return &member;
        }
    }
    return nullptr;
}

/* Not inlined, so that the compiler inlines the member lookup. */
[[gnu::noinline]] rapidjson::Value* findElement(rapidjson::Value& array,
                                                const Containers::StringView step) {
    const Containers::Optional<rapidjson::SizeType> index = parseIndex(step);
    return index && *index < array.Size() ? &array[*index] : nullptr;
}

/* Goes down by the first step of a path and advances `path` to the end of that step. Returns false
   if the step is missing. */
inline bool goDown(rapidjson::Value*& value, const char*& path, const char* const end) {
    if (value->IsObject()) {
        rapidjson::Value::Member* const member = findMember(*value, path, end);
        if (!member) {
            return false;
        }
        value = &member->value;
        path += member->name.GetStringLength();
        return true;
    }
    const char* const slash = std::find(path, end, '/');
    rapidjson::Value* const element =
        value->IsArray() ? findElement(*value, {path, std::size_t(slash - path)}) : nullptr;
    if (!element) {
        return false;
    }
    value = element;
    path = slash;
    return true;
}

/* Follows a path up to its `end`, and returns whether all steps exist. If one is missing, `value`
   is the last value reached and `path` begins with the missing step. */
bool follow(rapidjson::Value*& value, const char*& path, const char* const end) {
    while (goDown(value, path, end)) {
        if (path == end) {
            return true;
        }
        ++path;
    }
    return false;
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
    return !missing;
}

Containers::Pointer<JsonObject> DocumentScope::member(const Containers::StringView path) {
    rapidjson::Value* value = reached;
    const char* rest = path.begin();
    const bool isFound = !missing && follow(value, rest, path.end());
    Containers::Pointer<DocumentScope> place{Corrade::InPlaceInit, *document, *value};
    if (!isFound) {
        place->addMissingSteps(*this, {rest, std::size_t(path.end() - rest)});
    }
    return place;
}

void DocumentScope::addMissingSteps(const DocumentScope& above, const Containers::StringView path) {
    if (above.missing) {
        for (const Containers::String& step : *above.missing) {
            addMissing(step);
        }
    }
    const char* step = path.begin();
    for (const char* slash; (slash = std::find(step, path.end(), '/')) != path.end();) {
        addMissing({step, std::size_t(slash - step)});
        step = slash + 1;
    }
    addMissing({step, std::size_t(path.end() - step)});
}

void DocumentScope::addMissing(const Containers::StringView step) {
    if (!missing) {
        missing = Containers::pointer<Containers::Array<Containers::String>>();
    }
    arrayAppend(*missing, Corrade::InPlaceInit, step);
}

rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>& DocumentScope::allocator() {
    return document->GetAllocator();
}

const rapidjson::Value& DocumentScope::value() const {
    if (!missing) {
        return *reached;
    }
    static const rapidjson::Value null;
    return null;
}

rapidjson::Value& DocumentScope::mutableValue() {
    if (!missing) {
        return *reached;
    }
    for (const Containers::String& step : *missing) {
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
    missing = nullptr;
    return *reached;
}

void DocumentScope::descend(const Containers::StringView name) {
    rapidjson::Value* const next = missing               ? nullptr
                                   : reached->IsObject() ? RapidJsonUtils::getMember(*reached, name)
                                   : reached->IsArray()  ? findElement(*reached, name)
                                                         : nullptr;
    if (next) {
        reached = next;
    } else {
        addMissing(name);
    }
}

bool DocumentScope::canBeMade() const {
    return !missing || reached->IsObject() || reached->IsNull() ||
           (reached->IsArray() && appends(*reached, missing->front()));
}

} // namespace VespermoorEngine::Host
