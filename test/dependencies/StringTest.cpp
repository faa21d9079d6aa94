#include <string>

#include <Corrade/Containers/String.h>
#include <gtest/gtest.h>

using namespace Corrade;
using namespace Corrade::Containers::Literals;
using Containers::String;
using Containers::StringView;
using Containers::StringViewFlags;

namespace {

constexpr StringViewFlags none;
constexpr StringViewFlags global = Containers::StringViewFlag::Global;
constexpr StringViewFlags terminated = Containers::StringViewFlag::NullTerminated;

/* Who believes a wrong flag reads past the end of a text or keeps one that is gone. */
TEST(StringView, KeepsWhatIsKnownOfTheMemory) {
    const char* const data = "banana";
    const String owned = "owned";
    const StringView view{data, 6, global | terminated};
    const struct {
        const char* name;
        StringView view;
        const char* data;
        std::size_t size;
        StringViewFlags flags;
    } rows[]{
        {"C string", data, data, 6, terminated},
        {"data and size", {data, 3}, data, 3, none},
        {"string", owned, owned.data(), 5, terminated},
        {"slice to the end", view.slice(data + 2, data + 6), data + 2, 4, global | terminated},
        {"prefix to null", view.prefix(static_cast<const char*>(nullptr)), nullptr, 0, global},
        {"without prefix", view.exceptPrefix("ba"), data + 2, 4, global | terminated},
        {"without suffix", view.exceptSuffix("a"), data, 5, global},
        {"trimmed altogether", view.trimmedPrefix("abn"), data + 6, 0, global | terminated},
        {"last character", view.findLast('a'), data + 5, 1, global | terminated},
        {"partial match at the end", view.find("nas"), nullptr, 0, none},
        {"else the end", view.findOr('x', view.end()), view.end(), 0, none},
        {"in nothing", StringView{}.find(""), nullptr, 0, none},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.view.data(), row.data);
        EXPECT_EQ(row.view.size(), row.size);
        EXPECT_EQ(row.view.flags(), row.flags);
    }
}

} // namespace
