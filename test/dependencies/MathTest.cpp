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

TEST(Math, ComparesRoughly) {
    const struct {
        float a, b;
        bool equal;
    } rows[]{
        {1.0f, 1.000015f, true}, {1.0f, 1.00003f, false},      {1.0e9f, 1.000015e9f, true},
        {0.0f, 0.9e-5f, true},   {0.0f, 1.1e-5f, false},       {1.0e9f, 1.00003e9f, false},
        {-1.0f, 1.0f, false},    {HUGE_VALF, HUGE_VALF, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.b);
        EXPECT_EQ(Vector2(0.0f, row.a) == Vector2(0.0f, row.b), row.equal);
        EXPECT_EQ(Vector3(row.a, 1.0f, 1.0f) != Vector3(row.b, 1.0f, 1.0f), !row.equal);
        EXPECT_EQ(Quaternion({}, row.a) == Quaternion({}, row.b), row.equal);
        const Vector4 a{0.0f, 0.0f, 0.0f, row.a}, b{0.0f, 0.0f, 0.0f, row.b};
        EXPECT_EQ(Matrix4({}, {}, {}, a) == Matrix4({}, {}, {}, b), row.equal);
    }
    EXPECT_NE(Vector2i(1000000, 0), Vector2i(1000001, 0));
}

} // namespace
