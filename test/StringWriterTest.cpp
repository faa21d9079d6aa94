#include "VespermoorEditor/Utils/StringWriter.h"

#include <cstring>

#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using Utils::StringWriter;

TEST(StringWriterTest, AppendGrowsAndTerminates) {
    struct Row {
        std::size_t capacity, bytes, expectedCapacity;
    };
    /* The third is the first size that single precision does not hold. */
    for (const auto& [capacity, bytes, expectedCapacity] :
         {Row{10, 10, 15}, Row{10, 20, 21}, Row{16777217, 16777217, 25165824}, Row{0, 0, 1}}) {
        StringWriter writer{capacity};
        writer.append(view(std::string(bytes, 'a')));
        EXPECT_EQ(writer.buffer.size(), expectedCapacity);
        EXPECT_EQ(std::strlen(writer.buffer.data()), bytes);
    }
}

TEST(StringWriterTest, KeepsTheTextAndHandsOverTheBuffer) {
    char memory[8];
    StringWriter writer{0};
    const auto setFirst = [](char* const data, std::size_t) { *data = 'd'; };
    writer.buffer = Containers::Array<char>{memory, sizeof(memory), setFirst};
    writer.append("te");
    writer.append("xt");
    writer.reserve(8);
    EXPECT_EQ(writer.release().data(), memory);
    EXPECT_STREQ(memory, "dext");
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
