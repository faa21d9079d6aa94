#include "VespermoorEngine/Function.h"

#include <memory>

#include "Support.h"

namespace VespermoorEngine::Test {
namespace {

using Corrade::DefaultInit;

using Sum = Function<int(int, int)>;

static_assert(!std::is_copy_constructible_v<Sum> && !std::is_copy_assignable_v<Sum>);
static_assert(std::is_nothrow_move_constructible_v<Sum>);
static_assert(sizeof(Sum) == 2 * sizeof(void*) + 64);

/* Counts the ends of its copies that were not moved from, and survives a move of its bytes. */
struct Counted {
    explicit Counted(int& ended) : ended{&ended} {}
    Counted(Counted&& other) noexcept : ended{std::exchange(other.ended, nullptr)} {}
    ~Counted() {
        if (ended) {
            ++*ended;
        }
    }
    int operator()(const int a, const int b) const { return a + b; }

    int* ended;
};

int add(const int a, const int b) {
    return a + b;
}

TEST(FunctionTest, CallsWhatIsStoredWithoutCopies) {
    char bytes[64]{};
    bytes[63] = 7;
    EXPECT_EQ((Sum{DefaultInit, add}(2, 3)), 5);
    Sum large{DefaultInit, [bytes](int x, int y) { return bytes[63] + x + y; }};
    EXPECT_EQ(Sum{std::move(large)}(1, 1), 9);
    const Function<std::unique_ptr<int>(std::unique_ptr<int>, int&)> swap{
        DefaultInit, [](std::unique_ptr<int> value, int& other) {
            std::swap(*value, other);
            return value;
        }};
    int other = 1;
    EXPECT_EQ(*swap(std::make_unique<int>(2), other), 1);
    EXPECT_EQ(other, 2);
}

TEST(FunctionTest, MovesAndExchanges) {
    int firstEnded = 0, secondEnded = 0;
    Sum last{DefaultInit, add};
    {
        Sum source{DefaultInit, Counted{firstEnded}};
        Sum first{std::move(source)};
        EXPECT_FALSE(source); // NOLINT(bugprone-use-after-move)
        Sum second{DefaultInit, Counted{secondEnded}};
        first = std::move(second);
        EXPECT_EQ(firstEnded + secondEnded, 0);
        last = std::move(first);
        EXPECT_EQ(first(1, 2), 3); // NOLINT(bugprone-use-after-move)
    }
    EXPECT_EQ(firstEnded, 1);
    EXPECT_EQ(secondEnded, 0);
    EXPECT_EQ(last(2, 2), 4);
}

} // namespace
} // namespace VespermoorEngine::Test
