#include "VespermoorEditor/Utils/JsonObject.h"

#include "Json.h"
#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using namespace std::string_literals;
using Containers::StringIterable;
using Containers::StringView;

/* One value to read and to write, or one for each, with a record of what it was asked for: a
   capital where the value to write was an array at that time. */
struct RecordingObject : JsonObject {
    explicit RecordingObject(const char* const read, const char* const written = nullptr)
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

const float floats[]{0.1f, 3.0f};
const int ints[]{-1, 7};
const unsigned char bytes[]{0, 255};
const StringView strings[]{"short", {}, "long enough for the pool"};

TEST(JsonObjectWriteTest, StoresAndAsks) {
    using J = JsonObject;
    struct Row {
        const char* before;
        void (*write)(J&);
        const char *expected, *calls;
        const char* writable = nullptr;
    };
    const auto setOwnStrings = [](J& o) { o.setArray(StringIterable{o.asStringViewArray()}); };
    const auto push = [](J& o) { o.pushBackString("a"); };
    const auto pushUnique = [](J& o) { o.pushBackStringUnique("a"); };
    const Row rows[]{
        // clang-format off
        {"[1]", [](J& o) { o.setNull(); }, "null", "m"},
        {"[1]", [](J& o) { o.setFloat(0.1f); }, "0.10000000149011612", "m"},
        {"\"ab\"", [](J& o) { o.setString(o.asString().exceptPrefix(1)); }, "\"b\"", "vma"},
        {"1", [](J& o) { o.setString(view("long enough for\0the pool"s)); },
         R"("long enough for\u0000the pool")", "ma"},
        {"1", [](J& o) { o.setArray(floats); }, "[0.10000000149011612,3.0]", "mAAA"},
        {"1", [](J& o) { o.setArray(ints); }, "[-1,7]", "mAAA"},
        {"1", [](J& o) { o.setArray(bytes); }, "[0,255]", "mAAA"},
        {"1", [](J& o) { o.setArray(Containers::arrayView(strings)); },
         R"(["short","","long enough for the pool"])", "mAAAA"},
        {"1", [](J& o) { o.setQuaternion({{1, 2, 3}, 4}); }, "[1.0,2.0,3.0,4.0]", "mAAAAA"},
        {"1", [](J& o) { o.setMatrix({{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 1, 2, 3}, {4, 5, 6, 7}}); },
         "[1.0,2.0,3.0,4.0,5.0,6.0,7.0,8.0,9.0,1.0,2.0,3.0,4.0,5.0,6.0,7.0]", "mAAAAAAAAAAAAAAAAA"},
        {R"(["b","a"])", setOwnStrings, R"(["b","a"])", "vvmAAA"},
        {"[2]", [](J& o) { o.setIntArray({}); }, "[]", "mA", "3"},
        {R"({"a":1})", push, R"(["a"])", "vmAA"},
        {R"([{"x":["y"]}])", push, R"([{"x":["y"]},"a"])", "vmaAA", "2"},
        {R"(["A","ab",["a"],1])", pushUnique, R"(["A","ab",["a"],1,"a"])", "vmAA"},
        {R"(["b","a\u0000b"])", pushUnique, R"(["b","a\u0000b"])", "vm"},
        {R"(["a"])", pushUnique, R"(["a"])", "vma", "2"},
        {R"(["b"])", pushUnique, R"(["b","a"])", "vmAAA", R"(["a"])"},
        {"[1,2,4]", [](J& o) { o.eraseElement(1); }, "[3,[5]]", "vm", "[3,4,[5]]"},
        // clang-format on
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.before << " to " << row.expected);
        RecordingObject json{row.before, row.writable};
        row.write(json);
        EXPECT_EQ(json.calls, row.calls);
        EXPECT_EQ(compact(json.writable), row.expected);
        EXPECT_EQ(compact(json.readable), row.writable ? row.before : row.expected);
    }
}

TEST(JsonObjectWriteTest, ArraysHaveNoSpareRoomAndCopiesShareConstantStrings) {
    RecordingObject json{"[]", "null"};
    json.setArray(floats);
    EXPECT_EQ(json.writable.Capacity(), 2);
    const char constant[]{"too long for the value itself"};
    json.readable.PushBack(constant, json.readable.GetAllocator());
    json.pushBackString("a");
    EXPECT_EQ(json.writable[0].GetString(), constant);
}

TEST(JsonObjectWriteDeathTest, EraseElement) {
    const std::string notAnArray = "^JsonObject::eraseElement\\(\\): Not an array\n$";
    const std::string outOfBounds = "^JsonObject::eraseElement\\(\\): Index is out of bounds\n$";
    EXPECT_DEATH((RecordingObject{"1", "[1]"}.eraseElement(0)), notAnArray);
    EXPECT_DEATH((RecordingObject{"[1]", "1"}.eraseElement(0)), notAnArray);
    EXPECT_DEATH((RecordingObject{"[1]", "[1,2]"}.eraseElement(1)), outOfBounds);
    EXPECT_DEATH((RecordingObject{"[1,2]", "[1]"}.eraseElement(1)), outOfBounds);
}

} // namespace
} // namespace VespermoorEngine::Test
