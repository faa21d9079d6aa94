#include <algorithm>
#include <cmath>

#include <Magnum/Magnum.h>
#include <Magnum/Math/Matrix4.h>
#include <Magnum/Math/Quaternion.h>
#include <Magnum/Math/Vector2.h>
#include <Magnum/Math/Vector3.h>
#include <Magnum/Math/Vector4.h>
#include <gtest/gtest.h>

using namespace Magnum;

namespace {

struct FuzzyRow {
    const char* name;
    float a, b;
    bool equal;
};

const FuzzyRow fuzzyRows[]{
    {"close to one", 1.0f, 1.000015f, true},        {"not as close", 1.0f, 1.00003f, false},
    {"close and large", 1.0e9f, 1.000015e9f, true}, {"far and large", 1.0e9f, 1.00003e9f, false},
    {"close to zero", 0.0f, 0.9e-5f, true},         {"far from zero", 0.0f, 1.1e-5f, false},
    {"both tiny", 1.0e-7f, 3.0e-7f, true},          {"opposite", -1.0f, 1.0f, false},
    {"infinite", HUGE_VALF, HUGE_VALF, true},
};

TEST(Math, ComparesRoughly) {
    for (const FuzzyRow& row : fuzzyRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Vector2(0.0f, row.a) == Vector2(0.0f, row.b), row.equal);
        EXPECT_EQ(Vector3(row.a, 1.0f, 1.0f) != Vector3(row.b, 1.0f, 1.0f), !row.equal);
        EXPECT_EQ(Quaternion({}, row.a) == Quaternion({}, row.b), row.equal);
        const Vector4 a{0.0f, 0.0f, 0.0f, row.a}, b{0.0f, 0.0f, 0.0f, row.b};
        EXPECT_EQ(Matrix4({}, {}, {}, a) == Matrix4({}, {}, {}, b), row.equal);
    }
    EXPECT_NE(Vector2i(1000000, 0), Vector2i(1000001, 0));
}

TEST(Math, LiesInMemoryInOrder) {
    const float numbers[]{1.0f, 2.0f, 3.0f, 4.0f};
    const Quaternion quaternion{{1.0f, 2.0f, 3.0f}, 4.0f};
    EXPECT_TRUE(std::equal(numbers, numbers + 4, quaternion.data()));
    EXPECT_EQ(quaternion.vector(), Vector3(1.0f, 2.0f, 3.0f));
    const Matrix4 matrix{{}, {}, {1.0f, 2.0f, 3.0f, 4.0f}, {}};
    EXPECT_TRUE(std::equal(numbers, numbers + 4, matrix.data() + 8));
    EXPECT_EQ(matrix[2][1], 2.0f);
    EXPECT_EQ(Matrix4{}, Matrix4({1.0f, 0.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f, 0.0f},
                                 {0.0f, 0.0f, 1.0f, 0.0f}, {0.0f, 0.0f, 0.0f, 1.0f}));
    EXPECT_EQ(Quaternion{}, Quaternion({0.0f, 0.0f, 0.0f}, 1.0f));
}

} // namespace
