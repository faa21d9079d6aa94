#include <functional>
#include <limits>

#include "Support.h"
#include "VespermoorEditor/Utils/JsonObject.h"

namespace VespermoorEngine::Test {
namespace {

using Containers::StringIterable;
using Containers::StringView;

std::string print(const rapidjson::Value& json) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer{buffer};
    json.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

/* One value to read and to write, or one for each, with a record of what it was asked for. */
struct RecordingObject : JsonObject {
    explicit RecordingObject(const char* const read, const char* const written = nullptr)
        : writable{written ? other : readable} {
        readable.Parse(read);
        other.Parse(written ? written : "null");
    }

    bool exists() override { return true; }
    Containers::Pointer<JsonObject> member(StringView) override { return nullptr; }
    rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>& allocator() override {
        calls += 'a';
        return writable.GetAllocator();
    }
    const rapidjson::Value& value() const override {
        calls += 'v';
        return readable;
    }
    rapidjson::Value& mutableValue() override {
        calls += 'm';
        return writable;
    }

    rapidjson::Document readable, other;
    rapidjson::Document& writable;
    mutable std::string calls;
};

using Write = std::function<void(JsonObject&)>;

template <class T>
Write write(void (JsonObject::*const operation)(T), const std::decay_t<T> input) {
    return [operation, input](JsonObject& object) { (object.*operation)(input); };
}

/* The string that is passed ends with the call. */
Write writeText(void (JsonObject::*const operation)(StringView), const char* const input) {
    return [operation, input](JsonObject& object) {
        const std::string copy{input};
        (object.*operation)({copy.data(), copy.size()});
    };
}

const float floats[]{0.1f, 3.0f, -0.0f};
const int ints[]{-1, 0, 7};
const unsigned char bytes[]{0, 255};
const StringView strings[]{"short", {}, "long enough for the pool"};

TEST(JsonObjectWriteTest, StoresAndAsks) {
    using J = JsonObject;
    using Floats = Containers::ArrayView<const float>;
    using Ints = Containers::ArrayView<const int>;
    using Bytes = Containers::ArrayView<const unsigned char>;
    using Strings = Containers::ArrayView<const StringView>;
    const char* const object = R"({"a":1})";
    const char* const printedFloats = "[0.10000000149011612,3.0,-0.0]";
    const char* const printedStrings = R"(["short","","long enough for the pool"])";
    const auto setNull = [](J& o) { o.setNull(); };
    const auto setOwnString = [](J& o) { o.setString(o.asString().exceptPrefix(1)); };
    const auto setOwnStrings = [](J& o) { o.setArray(Strings{o.asStringViewArray()}); };
    const auto pushOwnString = [](J& o) { o.pushBackString(o.asString()); };
    struct Row {
        const char* before;
        Write write;
        const char* expected;
        const char* calls;
        const char* writable = nullptr;
    };
    const Row rows[]{
        {object, setNull, "null", "m"},
        {"[1]", write(&J::setBool, true), "true", "m"},
        {object, write(&J::setInt, -5), "-5", "m"},
        {"[1]", write(&J::setFloat, 0.1f), "0.10000000149011612", "m"},
        {"1", write(&J::setFloat, 3.0f), "3.0", "m"},
        {object, writeText(&J::setString, "short"), R"("short")", "ma"},
        {"1", writeText(&J::setString, "more than one value"), R"("more than one value")", "ma"},
        {"1", write(&J::setString, nullptr), R"("")", "ma"},
        {R"("abcdef")", setOwnString, R"("bcdef")", "vma"},
        {object, write(&J::setFloatArray, floats), printedFloats, "maaaa"},
        {"[9]", write(&J::setIntArray, ints), "[-1,0,7]", "maaaa"},
        {"true", write(&J::setUnsignedCharArray, bytes), "[0,255]", "maaa"},
        {object, write<const StringIterable&>(&J::setArray, strings), printedStrings, "maaaa"},
        {"1", write<Floats>(&J::setArray, floats), printedFloats, "maaaa"},
        {"1", write<Ints>(&J::setArray, ints), "[-1,0,7]", "maaaa"},
        {"1", write<Bytes>(&J::setArray, bytes), "[0,255]", "maaa"},
        {"1", write<Strings>(&J::setArray, strings), printedStrings, "maaaa"},
        {R"(["b","a"])", setOwnStrings, R"(["b","a"])", "vvmaaa"},
        {"1", write(&J::setFloatArray, nullptr), "[]", "ma"},
        {"1", write(&J::setIntArray, nullptr), "[]", "ma"},
        {"1", write(&J::setUnsignedCharArray, nullptr), "[]", "ma"},
        {"1", write<Strings>(&J::setArray, nullptr), "[]", "ma"},
        {R"(["a"])", writeText(&J::pushBackString, "a"), R"(["a","a"])", "vmaa"},
        {"[]", write(&J::pushBackString, nullptr), R"([""])", "vmaa"},
        {"null", writeText(&J::pushBackString, "a"), R"(["a"])", "vmaa"},
        {object, writeText(&J::pushBackString, "a"), R"(["a"])", "vmaa"},
        {R"("old")", pushOwnString, R"(["old"])", "vvmaa"},
        {R"(["A","ab"])", writeText(&J::pushBackStringUnique, "a"), R"(["A","ab","a"])", "vmaa"},
        {R"(["b","a"])", writeText(&J::pushBackStringUnique, "a"), R"(["b","a"])", "vm"},
        {R"(["a\u0000b"])", writeText(&J::pushBackStringUnique, "a"), R"(["a\u0000b"])", "vm"},
        {R"([1,["a"]])", writeText(&J::pushBackStringUnique, "a"), R"([1,["a"],"a"])", "vmaa"},
        {R"("a")", writeText(&J::pushBackStringUnique, "a"), R"(["a"])", "vmaa"},
        {"[1]", write(&J::eraseElement, 0), "[]", "vm"},
        {R"([1,"2",[3],4])", write(&J::eraseElement, 1), "[1,[3],4]", "vm"},
        {"[1]", write(&J::setIntArray, ints), "[-1,0,7]", "maaaa", "[2]"},
        {R"([{"x":["y"]}])", writeText(&J::pushBackString, "a"), R"([{"x":["y"]},"a"])", "vmaaa",
         "[2]"},
        {"1", writeText(&J::pushBackString, "a"), R"(["a"])", "vmaaa", "[2]"},
        {R"(["a"])", writeText(&J::pushBackStringUnique, "a"), R"(["a"])", "vma", "[2]"},
        {R"(["b"])", writeText(&J::pushBackStringUnique, "a"), R"(["b","a"])", "vmaaa", R"(["a"])"},
        {"[1,2]", write(&J::eraseElement, 0), "[4]", "vm", "[3,4]"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.before << " to " << row.expected);
        RecordingObject json{row.before, row.writable};
        row.write(json);
        EXPECT_EQ(json.calls, row.calls);
        EXPECT_EQ(print(json.writable), row.expected);
        EXPECT_EQ(print(json.readable), row.writable ? row.before : row.expected);
    }
}

TEST(JsonObjectWriteTest, IsReadBack) {
    RecordingObject json{"null"};
    for (const float number : {0.1f, std::numeric_limits<float>::denorm_min()}) {
        json.setFloat(number);
        EXPECT_EQ(json.asFloat(), number);
    }
    json.setInt(std::numeric_limits<int>::max());
    EXPECT_EQ(json.asUnsignedInt(0), std::numeric_limits<int>::max());
    json.setString({"a\0b", 3});
    EXPECT_EQ(text(json.asString()), (std::string{"a\0b", 3}));
    json.setIntArray(ints);
    json.eraseElement(0);
    EXPECT_EQ(json.writable.Capacity(), 3);

    const Magnum::Math::Matrix4<float> matrix{
        {1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}};
    json.setMatrix(matrix);
    EXPECT_EQ(json.writable[4].GetDouble(), 5.0);
    EXPECT_EQ(json.asMatrix4(), matrix);
    json.setQuaternion({{1, 2, 3}, 0.25f});
    EXPECT_EQ(print(json.writable), "[1.0,2.0,3.0,0.25]");
}

TEST(JsonObjectWriteDeathTest, EraseElement) {
    const char* const notAnArray = "^JsonObject::eraseElement\\(\\): Not an array\n$";
    const char* const outOfBounds = "^JsonObject::eraseElement\\(\\): Index is out of bounds\n$";
    EXPECT_DEATH(RecordingObject{"null"}.eraseElement(0), notAnArray);
    EXPECT_DEATH(RecordingObject{"[1]"}.eraseElement(1), outOfBounds);
    EXPECT_DEATH((RecordingObject{"[1]", "1"}.eraseElement(0)), notAnArray);
    EXPECT_DEATH((RecordingObject{"[1,2]", "[1]"}.eraseElement(1)), outOfBounds);
}

} // namespace
} // namespace VespermoorEngine::Test
