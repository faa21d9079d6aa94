#include "VespermoorEditor/Utils/JsonObject.h"

#include <limits>

#include "Json.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using Containers::StringView;
using testing::ElementsAre;
using testing::StartsWith;

/* One value to read and to write, or one for each, with a record of the operations that were
   called: a capital if the value to write was an array at that time. */
struct TestObject : JsonObject {
    explicit TestObject(const char* const read, const char* const written = nullptr)
        : readable{parse(read)},
          other{parse(written ? written : "null")},
          writable{written ? other : readable} {}

    bool exists() override { return true; }
    Containers::Pointer<JsonObject> member(StringView) override { return nullptr; }
    rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>& allocator() override {
        calls += writable.IsArray() ? 'A' : 'a';
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

TEST(JsonObjectTest, Numbers) {
    const std::tuple<const char*, int, unsigned int, float> rows[]{
        {"null", -7, 9, 0.0f},
        {"-1", -1, 4294967295, -1.0f},
        {"4294967301", 5, 5, 4294967301.0f},
        {"18446744073709551615", -1, 4294967295, 18446744073709551615.0f},
        /* Through double first: rounding to float at once would give 2^60 + 2^37. */
        {"1152921573326323713", 1, 1, 1152921504606846976.0f},
    };
    for (const auto& [json, asInt, asUnsignedInt, asFloat] : rows) {
        EXPECT_EQ(TestObject{json}.asInt(-7), asInt) << json;
        EXPECT_EQ(TestObject{json}.asUnsignedInt(9), asUnsignedInt) << json;
        EXPECT_EQ(TestObject{json}.asFloat(), asFloat) << json;
    }
}

TEST(JsonObjectTest, Kinds) {
    EXPECT_EQ(TestObject{"[1, 2, 3]"}.size(), 3);
    EXPECT_EQ((TestObject{R"({"a": 1, "b": 2})"}.size()), 2);
    EXPECT_TRUE(TestObject{"true"}.asBool());
    EXPECT_TRUE(TestObject{"null"}.isNull());
    for (const char* const json : {"false", "1", "\"true\""}) {
        const TestObject object{json};
        EXPECT_EQ(object.size(), 0) << json;
        EXPECT_FALSE(object.asBool() || object.isNull()) << json;
    }
}

/* The numbers of a value of a fixed size, in storage order. */
template <class T>
std::vector<float> numbers(const T& value) {
    return {value.data(), value.data() + sizeof(T) / sizeof(*value.data())};
}

TEST(JsonObjectTest, Arrays) {
    EXPECT_THAT(numbers(TestObject{"[1, 2.5]"}.asVector2()), ElementsAre(1.0f, 2.5f));
    EXPECT_THAT(numbers(TestObject{"[1, -2, 3]"}.asVector3()), ElementsAre(1, -2, 3));
    EXPECT_THAT(numbers(TestObject{"[1, 2, 3, 4]"}.asVector4()), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(numbers(TestObject{"[-1, 2]"}.asVector2i()), ElementsAre(-1, 2));
    EXPECT_THAT(numbers(TestObject{"[0.5, -0.5, 0.25, 0.75, 99]"}.asQuaternion()),
                ElementsAre(0.5f, -0.5f, 0.25f, 0.75f));
    const TestObject matrix{"[1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16]"};
    EXPECT_EQ(numbers(matrix.asMatrix4()), elements(matrix.asFloatArray()));
    EXPECT_THAT(elements(TestObject{"[0.1, null, true, \"1\", -1e300]"}.asFloatArray()),
                ElementsAre(0.1f, 0.0f, 0.0f, 0.0f, -std::numeric_limits<float>::infinity()));
    EXPECT_THAT(elements(TestObject{"[-1, 4294967301]"}.asIntArray()), ElementsAre(-1, 5));
    EXPECT_THAT(elements(TestObject{"[-1, 2]"}.asUnsignedIntArray()), ElementsAre(4294967295, 2));
    EXPECT_EQ(TestObject{"null"}.asFloatArray().data(), nullptr);
    EXPECT_EQ(TestObject{"null"}.asStringArray().data(), nullptr);
}

TEST(JsonObjectTest, StringsAreViewsOfTheDocumentOrCopies) {
    const TestObject json{R"(["a\u0000b", "a string too long to be in the value itself", 5])"};
    const Containers::Array<StringView> views = json.asStringViewArray();
    const Containers::Array<Containers::String> strings = json.asStringArray();
    ASSERT_EQ(views.size(), 3);
    for (const rapidjson::SizeType i : {0, 1}) {
        for (const StringView view : {views[i], json.elementAsString(i)}) {
            EXPECT_EQ(view.data(), json.readable[i].GetString());
            EXPECT_EQ(view.size(), json.readable[i].GetStringLength());
            EXPECT_EQ(view.flags(), Containers::StringViewFlag::NullTerminated);
        }
        EXPECT_EQ(strings[i], views[i]);
        EXPECT_NE(strings[i].data(), views[i].data());
    }
    EXPECT_EQ(views[2].data(), nullptr);
    const TestObject single{R"("a\u0000b")"};
    EXPECT_EQ(single.asString().data(), single.readable.GetString());
    EXPECT_EQ(single.asString().size(), 3);
    EXPECT_FALSE(single.asString().flags());
}

std::string dies(const std::string& function, const char* const reason = "Sizes do not match") {
    return "^JsonObject::" + function + "\\(\\): " + reason + "\n$";
}

TEST(JsonObjectDeathTest, BrokenContracts) {
    constexpr const char* notAnArray = "Not an array";
    constexpr const char* outOfBounds = "Index is out of bounds";
    int ints[3];
    unsigned int unsignedInts[3];
    StringView strings[3];
    for (const char* const json : {"[\"a\"]", "[1, 2, 3, 4]", "null"}) {
        const TestObject object{json};
        EXPECT_DEATH(object.asVector3(), dies("asFloatArray"));
        EXPECT_DEATH(object.asIntArray(ints), dies("asIntArray"));
        EXPECT_DEATH(object.asUnsignedIntArray(unsignedInts), dies("asUnsignedIntArray"));
        EXPECT_DEATH(object.asStringArray(strings), dies("asStringArray"));
    }
    EXPECT_DEATH(TestObject{"[1, 2, 3]"}.asQuaternion(), dies("asQuaternion"));
    EXPECT_DEATH(TestObject{"{}"}.elementAsString(0), dies("elementAsString", notAnArray));
    EXPECT_DEATH(TestObject{"[]"}.elementAsString(0), dies("elementAsString", outOfBounds));
    EXPECT_DEATH((TestObject{"1", "[1]"}.eraseElement(0)), dies("eraseElement", notAnArray));
    EXPECT_DEATH((TestObject{"[1]", "1"}.eraseElement(0)), dies("eraseElement", notAnArray));
    EXPECT_DEATH((TestObject{"[1]", "[1,2]"}.eraseElement(1)), dies("eraseElement", outOfBounds));
    EXPECT_DEATH((TestObject{"[1,2]", "[1]"}.eraseElement(1)), dies("eraseElement", outOfBounds));
}

/* The written value and the calls made by the write. The value to read does not change, unless it
   is the same one. */
template <class Write>
std::string after(TestObject&& object, const Write write) {
    const std::string before = compact(object.readable);
    write(object);
    if (&object.writable != &object.readable) {
        EXPECT_EQ(compact(object.readable), before);
    }
    return compact(object.writable) + ' ' + object.calls;
}

TEST(JsonObjectTest, WritesSingleValues) {
    const auto setOwn = [](auto& json) { json.setString(json.asString().exceptPrefix(1)); };
    const auto setLong = [](auto& json) { json.setString("too long for the value"); };
    EXPECT_EQ(after(TestObject{"[1]"}, [](auto& json) { json.setNull(); }), "null m");
    EXPECT_EQ(after(TestObject{"[1]"}, [](auto& json) { json.setBool(true); }), "true m");
    EXPECT_EQ(after(TestObject{"1"}, [](auto& json) { json.setBool(false); }), "false m");
    EXPECT_EQ(after(TestObject{"[1]"}, [](auto& json) { json.setInt(-1); }), "-1 m");
    EXPECT_EQ(after(TestObject{"1"}, [](auto& json) { json.setFloat(0.5f); }), "0.5 m");
    EXPECT_EQ(after(TestObject{"1"}, setLong), "\"too long for the value\" ma");
    EXPECT_EQ(after(TestObject{"\"ab\\u0000\""}, setOwn), "\"b\\u0000\" vma");
}

TEST(JsonObjectTest, WritesArrays) {
    const auto stores = [](const std::string& expected, const auto& input) {
        TestObject object{"1"};
        object.setArray(input);
        EXPECT_EQ(compact(object.writable), expected);
        EXPECT_EQ(object.writable.Capacity(), object.writable.Size());
        EXPECT_EQ(object.calls, "m" + std::string(1 + object.writable.Size(), 'A'));
    };
    const float floats[]{0.1f, 3.0f};
    const int ints[]{-1, 7};
    const unsigned char bytes[]{0, 255};
    const StringView strings[]{"short", {}, "long enough for the pool"};
    const char* const asJson = R"(["short","","long enough for the pool"])";
    stores("[0.10000000149011612,3.0]", floats);
    stores("[-1,7]", ints);
    stores("[0,255]", bytes);
    stores("[]", Containers::ArrayView<const int>{});
    stores(asJson, strings);
    stores(asJson, Containers::StringIterable{strings});
    stores(asJson, TestObject{asJson}.asStringArray());
    const TestObject source{asJson};
    stores(asJson, source.asStringViewArray());

    const auto setOwn = [](auto& json) { json.setArray(json.asStringViewArray()); };
    const auto setQuaternion = [](auto& json) { json.setQuaternion({{1, 2, 3}, 4}); };
    const auto setMatrix = [](auto& json) {
        json.setMatrix({{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 1, 2, 3}, {4, 5, 6, 7}});
    };
    EXPECT_EQ(after(TestObject{R"(["b","a"])"}, setOwn), R"(["b","a"] vvmAAA)");
    EXPECT_EQ(after(TestObject{"1"}, setQuaternion), "[1.0,2.0,3.0,4.0] mAAAAA");
    EXPECT_THAT(after(TestObject{"1"}, setMatrix),
                StartsWith("[1.0,2.0,3.0,4.0,5.0,6.0,7.0,8.0,9.0,1.0,2.0,3.0,4.0,5.0,6.0,7.0] m"));
}

TEST(JsonObjectTest, EditsArrays) {
    const auto push = [](auto& json) { json.pushBackString("a"); };
    const auto pushUnique = [](auto& json) { json.pushBackStringUnique("a"); };
    const auto erase = [](auto& json) { json.eraseElement(1); };
    EXPECT_EQ(after(TestObject{R"({"a":1})"}, push), R"(["a"] vmAA)");
    EXPECT_EQ(after(TestObject{R"([{"x":["y"]}])", "2"}, push), R"([{"x":["y"]},"a"] vmaAA)");
    EXPECT_EQ(after(TestObject{R"(["A",["a"],1])"}, pushUnique), R"(["A",["a"],1,"a"] vmAA)");
    EXPECT_EQ(after(TestObject{R"(["b","a\u0000b"])"}, pushUnique), R"(["b","a\u0000b"] vm)");
    EXPECT_EQ(after(TestObject{R"(["a"])", "2"}, pushUnique), R"(["a"] vma)");
    EXPECT_EQ(after(TestObject{R"(["b"])", R"(["a"])"}, pushUnique), R"(["b","a"] vmAAA)");
    EXPECT_EQ(after(TestObject{"[1,2,4]", "[3,4,[5]]"}, erase), "[3,[5]] vm");

    /* A copy shares constant strings. */
    TestObject json{"[]", "null"};
    const char constant[]{"too long for the value itself"};
    json.readable.PushBack(constant, json.readable.GetAllocator());
    json.pushBackString("a");
    EXPECT_EQ(json.writable[0].GetString(), constant);
}

} // namespace
} // namespace VespermoorEngine::Test
