#include "VespermoorEditor/Utils/StringWriter.h"

#include <vector>

#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using Utils::StringWriter;

TEST(StringWriterTest, GrowsAndKeepsTextAndTerminator) {
    struct Row {
        const char* name;
        std::size_t capacity;
        std::vector<std::size_t> appended;
        std::size_t expectedCapacity;
    };
    const Row rows[]{
        {"last byte is for the terminator", 10, {9}, 10},
        {"half as large again", 10, {10}, 15},
        {"cut to an integer", 5, {5}, 7},
        {"what the text needs", 10, {3, 20}, 24},
        {"one more", 3, {3}, 4},
        {"nothing into nothing", 0, {0}, 1},
        {"nothing into one byte", 1, {0}, 1},
        {"several steps", 4, {3, 1, 3, 5}, 13},
        {"single precision", 33554435, {33554435}, 50331656},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        StringWriter writer{row.capacity};
        std::string expected;
        for (const std::size_t bytes : row.appended) {
            const std::string added(bytes, char('a' + bytes % 26));
            writer.append({added.data(), added.size()});
            expected += added;
            EXPECT_EQ(writer.buffer[writer.size], '\0');
        }
        EXPECT_EQ(writer.buffer.size(), row.expectedCapacity);
        EXPECT_EQ(writer.available(), row.expectedCapacity - expected.size());
        EXPECT_TRUE(text({writer.buffer.data(), writer.size}) == expected);
    }
}

TEST(StringWriterTest, ReserveOnlyGrows) {
    StringWriter writer{8};
    writer.append("text");
    const char* const data = writer.buffer.data();
    writer.reserve(8);
    EXPECT_EQ(writer.buffer.data(), data);
    writer.reserve(100);
    EXPECT_EQ(writer.buffer.size(), 100);
    EXPECT_EQ(writer.size, 4);
    EXPECT_STREQ(writer.buffer.data(), "text");
}

TEST(StringWriterTest, ReleaseHandsOverBufferAndDeleter) {
    static int deleted;
    deleted = 0;
    StringWriter writer{0};
    const auto deleter = [](char* const data, std::size_t) {
        ++deleted;
        delete[] data;
    };
    writer.buffer = Containers::Array<char>{new char[8], 8, deleter};
    writer.append("text");
    const char* const data = writer.buffer.data();
    EXPECT_EQ(writer.release().data(), data);
    EXPECT_EQ(deleted, 1);
    EXPECT_EQ(writer.size, 0);
    EXPECT_EQ(writer.release(), "");
    EXPECT_EQ(StringWriter{16}.release(), "");
}

TEST(StringWriterDeathTest, AppendIntoWithoutRoom) {
    StringWriter writer{4};
    writer.appendInto("abc");
    EXPECT_DEATH(writer.appendInto("d"), "^Assertion available\\(\\) > bytes failed at "
                                         "../src/VespermoorEngine/Utils/StringWriter:83\n$");
}

} // namespace
} // namespace VespermoorEngine::Test
