#include <Magnum/Magnum.h>
#include <Magnum/Math/Matrix4.h>
#include <Magnum/Math/Quaternion.h>
#include <Magnum/Math/Vector2.h>
#include <Magnum/Math/Vector4.h>
#include <gtest/gtest.h>

using namespace Magnum;

namespace {

TEST(Math, ComparesRoughly) {
    for (const float base : {1.0f, 1.0e9f, -1.0f}) {
        const float near = base * 1.000015f, far = base * 1.00003f;
        const Vector4 vector{0.0f, 0.0f, 0.0f, base}, farVector{0.0f, 0.0f, 0.0f, far};
        EXPECT_EQ(vector, Vector4(0.0f, 0.0f, 0.0f, near));
        EXPECT_NE(vector, farVector);
        EXPECT_NE(Matrix4({}, {}, {}, vector), Matrix4({}, {}, {}, farVector));
        EXPECT_EQ(Quaternion({}, base), Quaternion({}, near));
        EXPECT_NE(Quaternion({}, base), Quaternion({}, far));
    }
    EXPECT_EQ(Vector2(0.9e-5f, 0.0f), Vector2{});
    EXPECT_NE(Vector2(1.1e-5f, 0.0f), Vector2{});
    EXPECT_NE(Vector2i(1000000, 0), Vector2i(1000001, 0));
}

} // namespace
