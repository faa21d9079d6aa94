#include "VespermoorEditor/Utils/RapidJsonUtils.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include <Corrade/Utility/Format.h>
#include <Corrade/Utility/Path.h>

#include "VespermoorEditor/Utils/Text.h"
#include "VespermoorEngine/Contract.h"

namespace VespermoorEngine::RapidJsonUtils {

namespace {

using Implementation::dataOrEmpty;

constexpr std::size_t byteOrderMarkSize = 3;

/* Builds a document from the parser's events, and ends the parse if they nest too deep or a number
   does not fit a double. The parser recurses once per level, so the limit has to act while it runs.
   RapidJSON 1.1.0 reads some of the numbers that are too large as infinity. */
class DocumentBuilder {
public:
    using Ch = char;

    explicit DocumentBuilder(rapidjson::Document& target) : document(target) {}

    bool Null() { return document.Null(); }
    bool Bool(const bool value) { return document.Bool(value); }
    bool Int(const int value) { return document.Int(value); }
    bool Uint(const unsigned int value) { return document.Uint(value); }
    bool Int64(const std::int64_t value) { return document.Int64(value); }
    bool Uint64(const std::uint64_t value) { return document.Uint64(value); }
    bool Double(const double value) { return std::isfinite(value) && document.Double(value); }
    bool RawNumber(const char* const text, const rapidjson::SizeType size, const bool copy) {
        return document.RawNumber(text, size, copy);
    }
    bool String(const char* const text, const rapidjson::SizeType size, const bool copy) {
        return document.String(text, size, copy);
    }
    bool StartObject() { return ++nesting <= maxNesting && document.StartObject(); }
    bool Key(const char* const text, const rapidjson::SizeType size, const bool copy) {
        return document.Key(text, size, copy);
    }
    bool EndObject(const rapidjson::SizeType count) {
        --nesting;
        return document.EndObject(count);
    }
    bool StartArray() { return ++nesting <= maxNesting && document.StartArray(); }
    bool EndArray(const rapidjson::SizeType count) {
        --nesting;
        return document.EndArray(count);
    }

private:
    rapidjson::Document& document;
    int nesting = 0;
};

/* Names of one object often begin alike and end in a number, so their last byte tells most of them
   apart before anything is called. */
bool nameEquals(const rapidjson::Value& name, const Containers::StringView key) {
    const std::size_t size = name.GetStringLength();
    if (size != key.size()) {
        return false;
    }
    const char* const data = name.GetString();
    return size == 0 ||
           (data[size - 1] == key[size - 1] && std::memcmp(data, key.data(), size) == 0);
}

/* The first member of that name, or null, for constant and writable objects. */
template <class Value>
auto* findMember(Value& object, const Containers::StringView name) {
    const auto end = object.MemberEnd();
    for (auto member = object.MemberBegin(); member != end; ++member) {
        if (nameEquals(member->name, name)) {
            return &*member;
        }
    }
    return static_cast<decltype(&*object.MemberBegin())>(nullptr);
}

template <class Value>
Value* findMemberValue(Value& object, const Containers::StringView name) {
    auto* const member = findMember(object, name);
    return member ? &member->value : nullptr;
}

/* Value one step of a pointer below `value`, or null. RapidJSON 1.1.0's own lookup ends a name at
   its first NUL, later ones do not. */
template <class Value>
Value* childAt(Value& value, const rapidjson::Pointer::Token& step) {
    if (value.IsObject()) {
        return findMemberValue(value, {step.name, step.length});
    }
    return value.IsArray() && step.index < value.Size() ? &value[step.index] : nullptr;
}

template <class Value>
Value* findByPointer(Value& root, const Containers::StringView pointer) {
    /* RapidJSON reads one byte past a text that is empty or ends inside an escape. */
    const Containers::String text = Containers::String::nullTerminatedView(pointer);
    const rapidjson::Pointer steps{text.data(), text.size()};
    Value* value = &root;
    for (std::size_t i = 0; value && i != steps.GetTokenCount(); ++i) {
        value = childAt(*value, steps.GetTokens()[i]);
    }
    return value;
}

Containers::StringView view(const rapidjson::Value& string) {
    return {string.GetString(), string.GetStringLength(),
            Containers::StringViewFlag::NullTerminated};
}

} // namespace

Containers::Optional<Containers::String> jsonToString(const rapidjson::Value& value,
                                                      const int maxDecimalPlaces) {
    if (maxDecimalPlaces < 1) {
        breakContract("RapidJsonUtils::jsonToString(): maxDecimalPlaces must be greater than 0");
    }

    using Buffer = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, rapidjson::CrtAllocator>;
    using IndentingWriter =
        rapidjson::PrettyWriter<Buffer, rapidjson::UTF8<>, rapidjson::UTF8<>,
                                rapidjson::CrtAllocator, rapidjson::kWriteNoFlags>;
    /* JSON has no text for these numbers, and the writer gives up on them. */
    class HandleInvalidDoubleWriter : public IndentingWriter {
    public:
        explicit HandleInvalidDoubleWriter(Buffer& buffer) : IndentingWriter{buffer} {}

        bool Double(const double number) {
            if (std::isnan(number)) {
                return IndentingWriter::Double(0.0);
            }
            if (std::isinf(number)) {
                return IndentingWriter::Double(
                    std::copysign(std::numeric_limits<double>::max(), number));
            }
            return IndentingWriter::Double(number);
        }
    };

    Buffer buffer;
    HandleInvalidDoubleWriter writer{buffer};
    writer.SetMaxDecimalPlaces(maxDecimalPlaces);
    if (!value.Accept(writer)) {
        return {};
    }
    return Containers::String{buffer.GetString(), buffer.GetSize()};
}

ValueOrError<rapidjson::Document> parseJsonFile(const Containers::StringView filename,
                                                const rapidjson::Type type) {
    const Containers::Optional<Containers::String> text = Utility::Path::readString(filename);
    if (!text) {
        return Utility::format("File does not exist: {}", filename);
    }

    rapidjson::Document document{type};
    rapidjson::MemoryStream memory{text->data(), text->size()};
    rapidjson::EncodedInputStream<rapidjson::UTF8<>, rapidjson::MemoryStream> stream{memory};
    rapidjson::Reader reader;
    bool parsed = false;
    auto parse = [&](rapidjson::Document& handler) {
        DocumentBuilder builder{handler};
        /* The stream skips each byte of a byte order mark on its own, so it takes a part of one for
           the whole. To the parser a NUL ends the text, wherever it is. */
        parsed = (stream.Tell() == 0 || stream.Tell() == byteOrderMarkSize) &&
                 reader.Parse<rapidjson::kParseNoFlags>(stream, builder) &&
                 stream.Tell() == text->size();
        return parsed;
    };
    document.Populate(parse);
    if (!parsed) {
        return Utility::format("Invalid JSON in file: {}", filename);
    }
    return document;
}

Containers::Pair<Containers::StringView, rapidjson::Value*>
getSubValue(rapidjson::Value& value, const Containers::StringView key) {
    if (value.IsArray()) {
        const unsigned long index = std::stoul(dataOrEmpty(key));
        if (index >= value.Size()) {
            return {};
        }
        return {{}, &value[rapidjson::SizeType(index)]};
    }
    if (value.IsObject()) {
        if (auto* const member = findMember(value, key)) {
            return {view(member->name), &member->value};
        }
    }
    return {};
}

Containers::Pair<Containers::StringView, rapidjson::Value*> getSubValue(rapidjson::Value& value,
                                                                        const unsigned int index) {
    if (value.IsObject() && index < value.MemberCount()) {
        const auto member = value.MemberBegin() + index;
        return {view(member->name), &member->value};
    }
    if (value.IsArray() && index < value.Size()) {
        return {{}, &value[index]};
    }
    return {};
}

rapidjson::Value* getMember(rapidjson::Value& object, const rapidjson::Value& name) {
    return findMemberValue(object, view(name));
}

rapidjson::Value* getMember(rapidjson::Value& object, const Containers::StringView name) {
    return findMemberValue(object, name);
}

const rapidjson::Value* getMember(const rapidjson::Value& object,
                                  const Containers::StringView name) {
    return findMemberValue(object, name);
}

rapidjson::Value&
getOrAddMember(rapidjson::Value& object, const Containers::StringView name,
               rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>& allocator) {
    if (rapidjson::Value* const found = findMemberValue(object, name)) {
        return *found;
    }
    object.AddMember(
        rapidjson::Value{dataOrEmpty(name), rapidjson::SizeType(name.size()), allocator},
        rapidjson::Value{rapidjson::kObjectType}, allocator);
    return (object.MemberEnd() - 1)->value;
}

rapidjson::Value* valueByPointer(rapidjson::Value& root, const Containers::StringView pointer) {
    return findByPointer(root, pointer);
}

const rapidjson::Value* valueByPointer(const rapidjson::Value& root,
                                       const Containers::StringView pointer) {
    return findByPointer(root, pointer);
}

} // namespace VespermoorEngine::RapidJsonUtils

namespace rapidjson {

Corrade::Utility::Debug& operator<<(Corrade::Utility::Debug& debug, const Value& value) {
    return debug << VespermoorEngine::RapidJsonUtils::jsonToString(
               value, VespermoorEngine::RapidJsonUtils::defaultMaxDecimalPlaces);
}

} // namespace rapidjson
