#include "VespermoorEditor/Utils/StringWriter.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using Utils::StringWriter;

struct GrowthRow {
    const char* name;
    std::size_t capacity;
    std::vector<std::size_t> appended;
    std::size_t expectedCapacity;
};

class StringWriterGrowth : public testing::TestWithParam<GrowthRow> {};

TEST_P(StringWriterGrowth, KeepsTextAndTerminator) {
    StringWriter writer{GetParam().capacity};
    std::string expected;
    for (const std::size_t bytes : GetParam().appended) {
        const std::string added(bytes, static_cast<char>('a' + bytes % 26));
        writer.append({added.data(), added.size()});
        expected += added;
        EXPECT_EQ(writer.buffer[writer.size], '\0');
    }
    EXPECT_EQ(writer.size, expected.size());
    EXPECT_EQ(writer.buffer.size(), GetParam().expectedCapacity);
    EXPECT_EQ(writer.available(), GetParam().expectedCapacity - expected.size());
    EXPECT_TRUE(text({writer.buffer.data(), writer.size}) == expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, StringWriterGrowth,
                         testing::Values(GrowthRow{"last byte is for the terminator", 10, {9}, 10},
                                         GrowthRow{"half as large again", 10, {10}, 15},
                                         GrowthRow{"cut to an integer", 5, {5}, 7},
                                         GrowthRow{"what the text needs", 10, {3, 20}, 24},
                                         GrowthRow{"equal sizes", 3, {3}, 4}, //
                                         GrowthRow{"nothing into nothing", 0, {0}, 1},
                                         GrowthRow{"nothing into one byte", 1, {0}, 1},
                                         GrowthRow{"several steps", 4, {3, 1, 3, 5}, 13},
                                         GrowthRow{
                                             "single precision", 33554435, {33554435}, 50331656}),
                         rowName<GrowthRow>);

TEST(StringWriter, ReserveOnlyGrows) {
    StringWriter writer{8};
    writer.append("text");
    const char* const data = writer.buffer.data();
    writer.reserve(8);
    EXPECT_EQ(writer.buffer.size(), 8);
    EXPECT_EQ(writer.buffer.data(), data);
    writer.reserve(100);
    EXPECT_EQ(writer.buffer.size(), 100);
    EXPECT_EQ(writer.size, 4);
    EXPECT_STREQ(writer.buffer.data(), "text");
}

TEST(StringWriter, ReleaseHandsOverBufferAndDeleter) {
    static std::size_t deleted;
    deleted = 0;
    StringWriter writer{0};
    writer.buffer = Containers::Array<char>{new char[8], 8, [](char* const data, std::size_t) {
                                                ++deleted;
                                                delete[] data;
                                            }};
    writer.append("text");
    const char* const data = writer.buffer.data();
    {
        const Containers::String released = writer.release();
        EXPECT_EQ(released, "text");
        EXPECT_EQ(released.data(), data);
        EXPECT_EQ(writer.size, 0);
        EXPECT_EQ(writer.buffer.data(), nullptr);
        EXPECT_EQ(deleted, 0);
    }
    EXPECT_EQ(deleted, 1);
}

TEST(StringWriter, ReleaseWithoutText) {
    EXPECT_EQ(StringWriter{0}.release(), "");
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
