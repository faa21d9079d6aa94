#include "VespermoorEditor/Utils/JsonObject.h"

#include <algorithm>

#include "VespermoorEditor/Utils/Text.h"
#include "VespermoorEngine/Contract.h"

namespace VespermoorEngine {

namespace {

std::size_t elementCount(const rapidjson::Value& value) {
    return value.IsArray() ? value.Size() : 0;
}

/* RapidJSON makes a moved-from value null but keeps its number. */
float toFloat(const rapidjson::Value& number) {
    return number.IsNumber() ? static_cast<float>(number.GetDouble()) : 0.0f;
}

int toInt(const rapidjson::Value& number) {
    return number.GetInt();
}

unsigned int toUnsignedInt(const rapidjson::Value& number) {
    return number.GetUint();
}

Containers::StringView toStringView(const rapidjson::Value& string) {
    if (!string.IsString()) {
        return {};
    }
    return {string.GetString(), string.GetStringLength(),
            Containers::StringViewFlag::NullTerminated};
}

/* Fills `array` with the converted elements of `value`, or aborts with `message` before the first
   one is written. */
template <class T>
void readInto(const rapidjson::Value& value, const Containers::ArrayView<T> array,
              T (*const convert)(const rapidjson::Value&), const char* const message) {
    if (array.size() != elementCount(value)) {
        breakContract(message);
    }
    for (std::size_t i = 0; i != array.size(); ++i) {
        array[i] = convert(value[rapidjson::SizeType(i)]);
    }
}

using Allocator = rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>;

rapidjson::Value toJson(const int number, Allocator&) {
    return rapidjson::Value{number};
}

rapidjson::Value toJson(const unsigned char number, Allocator&) {
    return rapidjson::Value{unsigned{number}};
}

rapidjson::Value toJson(const float number, Allocator&) {
    return rapidjson::Value{double{number}};
}

rapidjson::Value toJson(const Containers::StringView string, Allocator& allocator) {
    return rapidjson::Value{Implementation::dataOrEmpty(string), rapidjson::SizeType(string.size()),
                            allocator};
}

/* Replaces the writable value with an array of the elements of a view or an iterable. */
template <class Elements>
void writeArray(JsonObject& object, const Elements& elements) {
    rapidjson::Value& array = object.mutableValue();
    array.SetArray();
    array.Reserve(rapidjson::SizeType(elements.size()), object.allocator());
    for (const auto& element : elements) {
        Allocator& allocator = object.allocator();
        array.PushBack(toJson(element, allocator), allocator);
    }
}

/* The writable value as an array: a copy of the readable one if the two differ, or empty if that is
   no array. */
rapidjson::Value& updatedArray(JsonObject& object) {
    const rapidjson::Value& readable = object.value();
    rapidjson::Value& writable = object.mutableValue();
    if (&readable != &writable) {
        writable = rapidjson::Value{readable, object.allocator()};
    }
    if (!writable.IsArray()) {
        writable.SetArray();
    }
    return writable;
}

void appendString(JsonObject& object, rapidjson::Value& array,
                  const Containers::StringView string) {
    rapidjson::Value element = toJson(string, object.allocator());
    array.PushBack(element, object.allocator());
}

bool hasString(const rapidjson::Value& array, const Containers::StringView string) {
    return std::any_of(array.Begin(), array.End(), [&string](const rapidjson::Value& element) {
        return element.IsString() && Containers::StringView{element.GetString()} == string;
    });
}

void expectElement(const rapidjson::Value& json, const std::size_t index) {
    if (!json.IsArray()) {
        breakContract("JsonObject::eraseElement(): Not an array");
    }
    if (index >= json.Size()) {
        breakContract("JsonObject::eraseElement(): Index is out of bounds");
    }
}

} // namespace

JsonObject::~JsonObject() = default;

bool JsonObject::isNull() const {
    return value().IsNull();
}

std::size_t JsonObject::size() const {
    const rapidjson::Value& json = value();
    return json.IsObject() ? json.MemberCount() : elementCount(json);
}

Containers::StringView JsonObject::asString() const {
    const rapidjson::Value& json = value();
    if (!json.IsString()) {
        return {};
    }
    return {json.GetString(), json.GetStringLength()};
}

bool JsonObject::asBool() const {
    return value().IsTrue();
}

int JsonObject::asInt(const int defaultValue) const {
    const rapidjson::Value& json = value();
    return json.IsNull() ? defaultValue : json.GetInt();
}

unsigned int JsonObject::asUnsignedInt(const unsigned int defaultValue) const {
    const rapidjson::Value& json = value();
    return json.IsNull() ? defaultValue : json.GetUint();
}

float JsonObject::asFloat() const {
    return toFloat(value());
}

Magnum::Vector2 JsonObject::asVector2() const {
    Magnum::Vector2 result;
    asFloatArray({result.data(), 2});
    return result;
}

Magnum::Vector3 JsonObject::asVector3() const {
    Magnum::Vector3 result;
    asFloatArray({result.data(), 3});
    return result;
}

Magnum::Vector4 JsonObject::asVector4() const {
    Magnum::Vector4 result;
    asFloatArray({result.data(), 4});
    return result;
}

Magnum::Vector2i JsonObject::asVector2i() const {
    Magnum::Vector2i result;
    asIntArray({result.data(), 2});
    return result;
}

Magnum::Math::Matrix4<float> JsonObject::asMatrix4() const {
    Magnum::Math::Matrix4<float> result;
    asFloatArray({result.data(), 16});
    return result;
}

Magnum::Math::Quaternion<float> JsonObject::asQuaternion() const {
    const Containers::Array<float> numbers = asFloatArray();
    if (numbers.size() < 4) {
        breakContract("JsonObject::asQuaternion(): Sizes do not match");
    }
    return {{numbers[0], numbers[1], numbers[2]}, numbers[3]};
}

void JsonObject::asFloatArray(const Containers::ArrayView<float> array) const {
    readInto(value(), array, toFloat, "JsonObject::asFloatArray(): Sizes do not match");
}

void JsonObject::asIntArray(const Containers::ArrayView<int> array) const {
    readInto(value(), array, toInt, "JsonObject::asIntArray(): Sizes do not match");
}

void JsonObject::asUnsignedIntArray(const Containers::ArrayView<unsigned int> array) const {
    readInto(value(), array, toUnsignedInt, "JsonObject::asUnsignedIntArray(): Sizes do not match");
}

void JsonObject::asStringArray(const Containers::ArrayView<Containers::StringView> array) const {
    readInto(value(), array, toStringView, "JsonObject::asStringArray(): Sizes do not match");
}

Containers::Array<float> JsonObject::asFloatArray() const {
    Containers::Array<float> array{Corrade::NoInit, elementCount(value())};
    asFloatArray(array);
    return array;
}

Containers::Array<int> JsonObject::asIntArray() const {
    Containers::Array<int> array{Corrade::NoInit, elementCount(value())};
    asIntArray(array);
    return array;
}

Containers::Array<unsigned int> JsonObject::asUnsignedIntArray() const {
    Containers::Array<unsigned int> array{Corrade::NoInit, elementCount(value())};
    asUnsignedIntArray(array);
    return array;
}

Containers::Array<Containers::String> JsonObject::asStringArray() const {
    const rapidjson::Value& json = value();
    Containers::Array<Containers::String> array{Corrade::ValueInit, elementCount(json)};
    for (std::size_t i = 0; i != array.size(); ++i) {
        array[i] = toStringView(json[rapidjson::SizeType(i)]);
    }
    return array;
}

Containers::Array<Containers::StringView> JsonObject::asStringViewArray() const {
    Containers::Array<Containers::StringView> array{Corrade::ValueInit, elementCount(value())};
    asStringArray(array);
    return array;
}

Containers::StringView JsonObject::elementAsString(const std::size_t index) const {
    const rapidjson::Value& json = value();
    if (!json.IsArray()) {
        breakContract("JsonObject::elementAsString(): Not an array");
    }
    if (index >= json.Size()) {
        breakContract("JsonObject::elementAsString(): Index is out of bounds");
    }
    return toStringView(json[rapidjson::SizeType(index)]);
}

void JsonObject::setNull() {
    mutableValue().SetNull();
}

void JsonObject::setBool(const bool boolean) {
    mutableValue().SetBool(boolean);
}

void JsonObject::setInt(const int number) {
    mutableValue().SetInt(number);
}

void JsonObject::setFloat(const float number) {
    mutableValue().SetDouble(double{number});
}

void JsonObject::setString(const Containers::StringView string) {
    /* Copied before the old value is overwritten, since the string may be a view of it. */
    rapidjson::Value& json = mutableValue();
    json = toJson(string, allocator());
}

void JsonObject::setFloatArray(const Containers::ArrayView<const float> numbers) {
    writeArray(*this, numbers);
}

void JsonObject::setIntArray(const Containers::ArrayView<const int> numbers) {
    writeArray(*this, numbers);
}

void JsonObject::setUnsignedCharArray(const Containers::ArrayView<const unsigned char> numbers) {
    writeArray(*this, numbers);
}

void JsonObject::setArray(const Containers::StringIterable& strings) {
    writeArray(*this, strings);
}

void JsonObject::setArray(const Containers::ArrayView<const float> numbers) {
    setFloatArray(numbers);
}

void JsonObject::setArray(const Containers::ArrayView<const int> numbers) {
    setIntArray(numbers);
}

void JsonObject::setArray(const Containers::ArrayView<const unsigned char> numbers) {
    setUnsignedCharArray(numbers);
}

void JsonObject::setArray(const Containers::ArrayView<const Containers::StringView> strings) {
    setArray(Containers::StringIterable{strings});
}

void JsonObject::setMatrix(const Magnum::Math::Matrix4<float>& matrix) {
    setFloatArray({matrix.data(), 16});
}

void JsonObject::setQuaternion(const Magnum::Math::Quaternion<float>& quaternion) {
    setFloatArray({quaternion.data(), 4});
}

void JsonObject::pushBackString(const Containers::StringView string) {
    appendString(*this, updatedArray(*this), string);
}

void JsonObject::pushBackStringUnique(const Containers::StringView string) {
    rapidjson::Value& array = updatedArray(*this);
    if (!hasString(array, string)) {
        appendString(*this, array, string);
    }
}

void JsonObject::eraseElement(const std::size_t index) {
    const rapidjson::Value& readable = value();
    rapidjson::Value& writable = mutableValue();
    expectElement(readable, index);
    expectElement(writable, index);
    writable.Erase(writable.Begin() + index);
}

} // namespace VespermoorEngine
