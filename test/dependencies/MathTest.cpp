#include <algorithm>
#include <limits>
#include <ostream>
#include <sstream>
#include <type_traits>

#include <gtest/gtest.h>

#include <Corrade/Utility/Debug.h>
#include <Magnum/Magnum.h>
#include <Magnum/Math/Matrix4.h>
#include <Magnum/Math/Quaternion.h>
#include <Magnum/Math/Vector2.h>
#include <Magnum/Math/Vector3.h>
#include <Magnum/Math/Vector4.h>

using namespace Magnum;

namespace {

struct FuzzyRow {
    const char* name;
    float a, b;
    bool equal;
};

const FuzzyRow FuzzyRows[]{
    {"same", 1.5f, 1.5f, true},
    {"close to one", 1.0f, 1.000015f, true},
    {"not as close", 1.0f, 1.00003f, false},
    {"close and large", 1.0e9f, 1.000015e9f, true},
    {"far and large", 1.0e9f, 1.00003e9f, false},
    {"close to zero", 0.0f, 0.9e-5f, true},
    {"far from zero", 0.0f, 1.1e-5f, false},
    {"both tiny", 1.0e-7f, 3.0e-7f, true},
    {"opposite", -1.0f, 1.0f, false},
    {"infinite", std::numeric_limits<float>::infinity(), std::numeric_limits<float>::infinity(),
     true},
    {"not a number", std::numeric_limits<float>::quiet_NaN(),
     std::numeric_limits<float>::quiet_NaN(), false},
};

TEST(Math, comparisonIsFuzzy) {
    for (const FuzzyRow& row : FuzzyRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Vector2(0.0f, row.a) == Vector2(0.0f, row.b), row.equal);
        EXPECT_EQ(Vector3(row.a, 1.0f, 1.0f) != Vector3(row.b, 1.0f, 1.0f), !row.equal);
        EXPECT_EQ(Vector4(row.a) == Vector4(row.b), row.equal);
        EXPECT_EQ(Matrix4({}, {}, {}, Vector4(row.a)) == Matrix4({}, {}, {}, Vector4(row.b)),
                  row.equal);
        EXPECT_EQ(Quaternion({}, row.a) == Quaternion({}, row.b), row.equal);
    }
    EXPECT_NE(Math::Vector2<double>(0.0, 1.0), Math::Vector2<double>(0.0, 1.0 + 1.0e-13));
    EXPECT_NE(Vector2i(1000000, 0), Vector2i(1000001, 0));
}

TEST(Math, componentsAndStorage) {
    Vector4 vector{1.0f, 2.0f, 3.0f, 4.0f};
    vector.y() = 7.0f;
    vector[2] = 8.0f;
    vector.data()[3] = 9.0f;
    EXPECT_EQ(vector, Vector4(1.0f, 7.0f, 8.0f, 9.0f));
    EXPECT_EQ(vector.xyz(), Vector3({1.0f, 7.0f}, 8.0f));
    EXPECT_EQ(vector.w(), 9.0f);
    EXPECT_EQ(Vector2i{}, Vector2i(0, 0));
    EXPECT_EQ(Vector2(Vector2i(1, -2)), Vector2(1.0f, -2.0f));

    Matrix4 matrix{NoInit};
    for (int i = 0; i != 16; ++i)
        matrix.data()[i] = float(i + 1);
    EXPECT_EQ(matrix[0], Vector4(1.0f, 2.0f, 3.0f, 4.0f));
    EXPECT_EQ(matrix[2][1], 10.0f);
    EXPECT_EQ(matrix.translation(), Vector3(13.0f, 14.0f, 15.0f));
    matrix.translation() = {};
    EXPECT_EQ(matrix.data()[12] + matrix.data()[14], 0.0f);
    EXPECT_EQ(matrix.data()[15], 16.0f);
    EXPECT_EQ(Matrix4{}, Matrix4({1.0f, 0.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f, 0.0f},
                                 {0.0f, 0.0f, 1.0f, 0.0f}, {0.0f, 0.0f, 0.0f, 1.0f}));
    EXPECT_EQ(Matrix4{Math::ZeroInit}[3], Vector4{});
    EXPECT_EQ(Matrix4::translation({1.0f, 2.0f, 3.0f})[3], Vector4(1.0f, 2.0f, 3.0f, 1.0f));

    Quaternion quaternion{{1.0f, 2.0f, 3.0f}, 4.0f};
    const float order[]{1.0f, 2.0f, 3.0f, 4.0f};
    EXPECT_TRUE(std::equal(order, order + 4, quaternion.data()));
    quaternion.vector().z() = 5.0f;
    quaternion.scalar() = 6.0f;
    EXPECT_EQ(quaternion, Quaternion({1.0f, 2.0f, 5.0f}, 6.0f));
    EXPECT_EQ(Quaternion{}, Quaternion({0.0f, 0.0f, 0.0f}, 1.0f));

    static_assert(sizeof(Vector3) == 12 && sizeof(Matrix4) == 64 && sizeof(Quaternion) == 16, "");
    static_assert(std::is_same<Quaternion, Math::Quaternion<float>>::value, "");
}

TEST(Math, printed) {
    std::ostringstream out;
    Debug{&out} << Vector3(1.0f, 2.5f, -3.0f) << Quaternion({1.0f, 2.0f, 3.0f}, 4.0f)
                << Vector2i(1, 2);
    Debug{&out} << Matrix4::translation({1.0f, 2.0f, 3.0f});
    EXPECT_EQ(out.str(), "Vector(1, 2.5, -3) Quaternion({1, 2, 3}, 4) Vector(1, 2)\n"
                         "Matrix(1, 0, 0, 1,\n"
                         "       0, 1, 0, 2,\n"
                         "       0, 0, 1, 3,\n"
                         "       0, 0, 0, 1)\n");
}

} // namespace
