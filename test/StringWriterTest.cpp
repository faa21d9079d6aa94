#include "VespermoorEditor/Utils/StringWriter.h"

#include <cstring>

#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using Utils::StringWriter;

TEST(StringWriterTest, AppendGrowsAndTerminates) {
    struct Row {
        const char* name;
        std::size_t capacity, bytes, expectedCapacity;
    };
    const Row rows[]{{"last byte is for the terminator", 10, 10, 15},
                     {"what the text needs", 10, 20, 21},
                     {"nothing into nothing", 0, 0, 1},
                     {"single precision", 16777217, 16777217, 25165824}};
    for (const auto& [name, capacity, bytes, expectedCapacity] : rows) {
        StringWriter writer{capacity};
        writer.append(view(std::string(bytes, 'a')));
        EXPECT_EQ(writer.buffer.size(), expectedCapacity) << name;
        EXPECT_EQ(std::strlen(writer.buffer.data()), bytes) << name;
        EXPECT_EQ(writer.size, bytes) << name;
    }
}

TEST(StringWriterTest, KeepsTheTextAndHandsOverTheBuffer) {
    char buffer[8];
    StringWriter writer{0};
    writer.buffer = Containers::Array<char>{buffer, sizeof(buffer),
                                            [](char* const data, std::size_t) { data[0] = 'd'; }};
    writer.append("te");
    writer.append("xt");
    writer.reserve(8);
    EXPECT_EQ(writer.release().data(), buffer);
    EXPECT_STREQ(buffer, "dext");
    EXPECT_EQ(writer.size, 0);
    EXPECT_EQ(writer.release(), "");

    writer.append("text");
    writer.reserve(100);
    EXPECT_EQ(writer.available(), 96);
    EXPECT_EQ(writer.release(), "text");
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
