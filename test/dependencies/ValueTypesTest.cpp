#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <type_traits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <Corrade/Containers/EnumSet.h>
#include <Corrade/Containers/EnumSet.hpp>
#include <Corrade/Containers/Optional.h>
#include <Corrade/Containers/Pair.h>
#include <Corrade/Containers/Pointer.h>
#include <Corrade/Containers/Reference.h>
#include <Corrade/Containers/String.h>
#include <Corrade/Containers/Triple.h>
#include <Corrade/Utility/Debug.h>

using namespace Corrade;
using Containers::NullOpt;
using Containers::Optional;
using Containers::Pair;
using Containers::Pointer;
using Containers::Reference;
using Containers::String;
using Containers::Triple;
using Utility::Debug;

/* Not in the anonymous namespace, where operators that the tests leave out are unused functions */
namespace Sets {

enum class Letter : unsigned char { A = 1, B = 2, C = 4 };
using Letters = Containers::EnumSet<Letter, 7>;
CORRADE_ENUMSET_OPERATORS(Letters)

Debug& operator<<(Debug& debug, Letter value) {
    return debug << "Letter(" << Debug::nospace << int(value) << Debug::nospace << ")";
}
Debug& operator<<(Debug& debug, Letters value) {
    return Containers::enumSetDebugOutput(debug, value, "none", {Letter::A, Letter::B});
}

class Flagged {
public:
    enum class Flag : int { One = 1, Two = 2 };
    using Flags = Containers::EnumSet<Flag>;
    CORRADE_ENUMSET_FRIEND_OPERATORS(Flags)
};

} // namespace Sets

namespace {

using namespace Sets;

struct Base {
    virtual ~Base() = default;
    int base = 1;
};
struct Derived : Base {
    explicit Derived(bool& destroyed) : destroyed(destroyed) {}
    ~Derived() override { destroyed = true; }
    bool& destroyed;
};

struct Aggregate {
    int number;
    String text;
};

struct PrintRow {
    void (*print)(Debug&);
    const char* expected;
};

const PrintRow PrintRows[]{
    {[](Debug& out) { out << NullOpt << Optional<int>{} << Optional<int>{3}; },
     "Containers::NullOpt Containers::NullOpt 3\n"},
    {[](Debug& out) { out << Containers::pair(1, "two") << Containers::triple(1, 2.5, true); },
     "{1, two} {1, 2.5, true}\n"},
    {[](Debug& out) { out << Letters{} << (Letter::A | Letter::C) << (Letter::B | Letter::A); },
     "none Letter(1)|Letter(4) Letter(1)|Letter(2)\n"},
    {[](Debug& out) {
         const int number = 7;
         out << Containers::reference(number) << Pointer<int>{};
     },
     "7 0x0\n"},
};

TEST(ValueTypes, printed) {
    for (const PrintRow& row : PrintRows) {
        std::ostringstream stream;
        {
            Debug out{&stream};
            row.print(out);
        }
        EXPECT_EQ(stream.str(), row.expected);
    }
}

struct SetRow {
    const char* name;
    Letters set;
    unsigned char expected;
};

TEST(EnumSet, operations) {
    const Letters ab = Letter::A | Letter::B;
    const SetRow rows[]{
        {"empty", {}, 0},
        {"union", ab | Letter::C, 7},
        {"intersection", Letter::B & ab, 2},
        {"difference", ab & ~Letters{Letter::A}, 2},
        {"exclusive", ab ^ (Letter::B | Letter::C), 5},
        {"complement stays among the flags", ~Letter::A, 6},
        {"complement of nothing", ~Letters{}, 7},
    };
    for (const SetRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ((unsigned char)(row.set), row.expected);
        EXPECT_EQ(Containers::enumCastUnderlyingType(row.set), row.expected);
        EXPECT_EQ(bool(row.set), row.expected != 0);
    }
    EXPECT_TRUE(ab >= Letter::A && Letter::A <= ab && ab >= Letters{} && ab != Letter::A);
    EXPECT_FALSE(ab >= Letter::C || Letter::C <= ab || ab <= Letter::A);

    Letters changed = ab;
    changed |= Letter::C;
    changed &= ~Letter::A;
    changed ^= Letter::B;
    EXPECT_EQ(changed, Letter::C);
    static_assert(!std::is_convertible<Letters, bool>::value, "");
    EXPECT_EQ(int(Flagged::Flag::One | Flagged::Flag::Two), 3);
}

TEST(Optional, holdsAValueOrNone) {
    Optional<String> value;
    EXPECT_FALSE(value);
    EXPECT_TRUE(value == NullOpt && NullOpt == value && value == Optional<String>{});

    value = String{"text"};
    EXPECT_TRUE(value && value != NullOpt && value == String{"text"} && String{"text"} == value);
    EXPECT_EQ(value->size(), 4);
    EXPECT_EQ(*value, "text");
    EXPECT_TRUE(value != Optional<String>{} && value != Optional<String>{"other"});

    Optional<String> copy = value;
    EXPECT_EQ(*copy, "text");
    const char* const data = copy->data();
    const String moved = *std::move(copy);
    EXPECT_EQ(moved, "text");
    EXPECT_NE(value->data(), data);

    value = NullOpt;
    EXPECT_FALSE(value);
    EXPECT_EQ(value.emplace("again"), "again");
    value = {};
    EXPECT_FALSE(value);
}

TEST(Optional, valueIsMadeInPlaceAndDestroyedOnce) {
    const auto shared = std::make_shared<int>(3);
    {
        Optional<std::shared_ptr<int>> first{shared};
        Optional<std::shared_ptr<int>> second{InPlaceInit, shared};
        EXPECT_EQ(shared.use_count(), 3);
        second = NullOpt;
        EXPECT_EQ(shared.use_count(), 2);
        second = std::move(first);
        first.emplace(shared);
        EXPECT_EQ(shared.use_count(), 3);
    }
    EXPECT_EQ(shared.use_count(), 1);

    const auto aggregate = Containers::optional<Aggregate>(3, "text");
    EXPECT_EQ(aggregate->number, 3);
    EXPECT_EQ(aggregate->text, "text");
    const Optional<Pointer<int>> moveOnly = Containers::optional(Pointer<int>{InPlaceInit, 5});
    EXPECT_EQ(**moveOnly, 5);
}

TEST(PairAndTriple, values) {
    Pair<int, String> pair{1, "one"};
    EXPECT_EQ(pair.first(), 1);
    EXPECT_EQ(pair.second(), "one");
    EXPECT_TRUE((pair == Pair<int, String>{1, "one"} && pair != Pair<int, String>{1, "two"}));
    pair.first() = 2;
    pair = Containers::pair(pair.first(), String{"two"});
    const Pair<int, String> moved = std::move(pair);
    EXPECT_EQ(moved, Containers::pair(2, String{"two"}));
    EXPECT_EQ((Pair<int, float*>{}), (Pair<int, float*>{0, nullptr}));
    EXPECT_EQ((Pair<long, double>{Pair<int, float>{1, 2.5f}}), (Pair<long, double>{1, 2.5}));

    Triple<int, String, Pointer<int>> triple{1, "one", Pointer<int>{InPlaceInit, 5}};
    triple.second() = "changed";
    auto movedTriple = std::move(triple);
    EXPECT_EQ(movedTriple.first(), 1);
    EXPECT_EQ(movedTriple.second(), "changed");
    EXPECT_EQ(*std::move(movedTriple).third(), 5);
    EXPECT_EQ(Containers::triple(1, 2, 3), (Triple<int, int, int>{1, 2, 3}));
    EXPECT_NE(Containers::triple(1, 2, 3), (Triple<int, int, int>{1, 2, 4}));
    EXPECT_EQ((Triple<int, float*, bool>{}), (Triple<int, float*, bool>{0, nullptr, false}));
}

TEST(Pointer, ownsUntilReleased) {
    bool destroyed = false;
    Pointer<Base> pointer = Containers::pointer<Derived>(destroyed);
    EXPECT_TRUE(pointer && pointer != nullptr && nullptr != pointer);
    EXPECT_EQ(pointer->base, 1);
    Pointer<Base> moved = std::move(pointer);
    EXPECT_TRUE(!pointer && pointer == nullptr && pointer.get() == nullptr);
    EXPECT_FALSE(destroyed);
    moved.reset();
    EXPECT_TRUE(destroyed);

    destroyed = false;
    EXPECT_FALSE(moved.emplace<Derived>(destroyed).destroyed);
    Pointer<Derived> derived = Containers::pointerCast<Derived>(std::move(moved));
    Derived* const released = derived.release();
    EXPECT_TRUE(!derived && !moved && !destroyed);
    derived = Containers::pointer(released);
    derived = nullptr;
    EXPECT_TRUE(destroyed);

    EXPECT_EQ((Pointer<Aggregate> { InPlaceInit, 3, "text" } -> text), "text");
    static_assert(!std::is_copy_constructible<Pointer<int>>::value, "");
    static_assert(!std::is_convertible<Pointer<Base>, Pointer<Derived>>::value, "");
}

TEST(Reference, refersAndCanBeAssigned) {
    int a = 1, b = 2;
    Reference<int> reference = a;
    *reference = 3;
    reference = b;
    const Reference<const int> constant = reference;
    int& plain = reference;
    EXPECT_EQ(a, 3);
    EXPECT_EQ(&constant.get(), &b);
    EXPECT_EQ(&plain, &b);

    bool destroyed = false;
    Derived derived{destroyed};
    const Reference<Base> base = Reference<Derived>{derived};
    EXPECT_EQ(base->base, 1);
    static_assert(!std::is_constructible<Reference<int>, int>::value, "");
    static_assert(!std::is_default_constructible<Reference<int>>::value, "");
}

struct MisuseRow {
    void (*misuse)();
    const char* message;
};

const MisuseRow MisuseRows[]{
    {[] { *Optional<int>{}; }, "Containers::Optional: the optional is empty\n"},
    {[] {
         Optional<String> {
             } -> size();
     },
     "Containers::Optional: the optional is empty\n"},
    {[] { *Pointer<int>{}; }, "Containers::Pointer: the pointer is null\n"},
    {[] {
         Pointer<String> {
             } -> size();
     },
     "Containers::Pointer: the pointer is null\n"},
};

TEST(ValueTypesDeathTest, misuse) {
#ifdef NDEBUG
    GTEST_SKIP() << "only checked in debug builds";
#endif
    for (const MisuseRow& row : MisuseRows)
        EXPECT_DEATH(row.misuse(), testing::StrEq(row.message));
}

} // namespace
