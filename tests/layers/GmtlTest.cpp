// Holds for the real library and for the fallback alike: layout and conventions that the project relies on.

#include <gmtl/gmtl.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <random>

namespace {

using Matrix = gmtl::Matrix<double, 4, 4>;
using Quat = gmtl::Quat<double>;
using Vec = gmtl::Vec<double, 3>;

Matrix countingMatrix() {
    Matrix matrix;
    matrix.set(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    return matrix;
}

TEST(Gmtl, LayoutIsNumbersAndThenTheState) {
    static_assert(sizeof(Matrix) == 136 && sizeof(gmtl::Matrix<float, 4, 4>) == 68);
    static_assert(sizeof(Vec) == 24 && sizeof(gmtl::Vec<float, 3>) == 12 && sizeof(Quat) == 32);
    Matrix matrix = countingMatrix();
    EXPECT_EQ(matrix.getData(), matrix.mData);
    const auto* bytes = reinterpret_cast<const char*>(&matrix);
    EXPECT_EQ(reinterpret_cast<const char*>(matrix.getData()), bytes);
    EXPECT_EQ(reinterpret_cast<const char*>(&matrix.mState), bytes + 128);
    const Quat quat(1, 2, 3, 4);
    EXPECT_EQ(quat.getData()[0], 1);
    EXPECT_EQ(quat.getData()[3], 4);
}

TEST(Gmtl, StartsAsIdentityAndZero) {
    const Matrix matrix;
    EXPECT_EQ(matrix.mState, Matrix::IDENTITY);
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            EXPECT_EQ(matrix(row, column), row == column ? 1 : 0);
        }
    }
    EXPECT_TRUE(Quat() == Quat(0, 0, 0, 1));
    EXPECT_TRUE(Vec() == Vec(0, 0, 0));
}

TEST(Gmtl, MatrixIsColumnMajorAndFilledByRowOrByColumnOrder) {
    const Matrix byRow = countingMatrix();
    EXPECT_EQ(byRow(1, 2), 6);
    EXPECT_EQ(byRow[1][2], 6);
    EXPECT_EQ(byRow.getData()[2 * 4 + 1], 6);
    Matrix byColumn;
    byColumn.set(byRow.getData());
    EXPECT_TRUE(byColumn == byRow);
    byColumn[3][0] = -1;
    EXPECT_FALSE(byColumn == byRow);
    EXPECT_EQ(byColumn.getData()[3], -1);
    EXPECT_EQ(byRow.mState, Matrix::FULL);
    EXPECT_EQ(byColumn.mState, Matrix::FULL);
    byColumn.mState = Matrix::AFFINE;
    EXPECT_EQ(Matrix(byColumn).mState, Matrix::AFFINE);
}

TEST(Gmtl, SetTransWritesTheLastColumnAndTracksTheState) {
    const int states[][2] = {{Matrix::IDENTITY, Matrix::TRANS},
                             {Matrix::ORTHOGONAL, Matrix::AFFINE},
                             {Matrix::TRANS, Matrix::TRANS},
                             {Matrix::AFFINE, Matrix::AFFINE},
                             {Matrix::FULL, Matrix::FULL}};
    for (const auto& [before, after] : states) {
        Matrix matrix = countingMatrix();
        matrix.mState = before;
        gmtl::setTrans(matrix, Vec(100, 200, 300));
        EXPECT_EQ(matrix.mState, after);
        Matrix expected = countingMatrix();
        expected.mData[12] = 100;
        expected.mData[13] = 200;
        expected.mData[14] = 300;
        EXPECT_TRUE(matrix == expected);
    }
}

TEST(Gmtl, SetRotWritesTheBlockAlone) {
    const double h = std::sqrt(0.5);
    Matrix matrix = countingMatrix();
    gmtl::setRot(matrix, Quat(0, 0, h, h));
    Matrix expected;
    expected.set(0, -1, 0, 3, 1, 0, 0, 7, 0, 0, 1, 11, 12, 13, 14, 15);
    EXPECT_TRUE(gmtl::isEqual(matrix, expected, 1e-12));
    EXPECT_EQ(matrix.mState, Matrix::FULL);
    // Not normalised: twice the length gives the formula's numbers, no rotation.
    gmtl::setRot(matrix, Quat(2, 0, 0, 0));
    EXPECT_EQ(matrix(0, 0), 1);
    EXPECT_EQ(matrix(1, 1), -7);
}

TEST(Gmtl, QuaternionsComeBackFromMatricesByEveryBranch) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> number(-1, 1);
    int branches[4] = {};
    for (int i = 0; i < 2000; ++i) {
        Quat quat(number(random), number(random), number(random), number(random) * (i % 2 == 0 ? 1 : 0.1));
        gmtl::normalize(quat);
        Matrix matrix;
        gmtl::setRot(matrix, quat);
        Quat back;
        gmtl::set(back, matrix);
        ASSERT_TRUE(gmtl::isEquiv(quat, back, 1e-12));
        const bool byTrace = matrix(0, 0) + matrix(1, 1) + matrix(2, 2) > 0;
        int largest = matrix(1, 1) > matrix(0, 0) ? 1 : 0;
        largest = matrix(2, 2) > matrix(static_cast<unsigned>(largest), static_cast<unsigned>(largest)) ? 2 : largest;
        const int branch = byTrace ? 3 : largest;
        ++branches[branch];
        EXPECT_GE(back[branch], 0) << "the element that the branch starts from is a root";
    }
    for (const int count : branches) {
        EXPECT_GT(count, 50);
    }
}

TEST(Gmtl, ScaleAndHalfTurnsAreConvertedAsTheyAre) {
    Quat quat;
    Matrix matrix;
    matrix.set(2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1);
    EXPECT_TRUE(gmtl::isEqual(gmtl::set(quat, matrix), Quat(0, 0, 0, std::sqrt(7.0) / 2), 1e-12));
    matrix.set(1, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1);
    EXPECT_TRUE(gmtl::set(quat, matrix) == Quat(1, 0, 0, 0));
    matrix.set(-1, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1);
    EXPECT_TRUE(gmtl::set(quat, matrix) == Quat(0.5 * std::sqrt(2.0), 0, 0, 0)) << "ties keep the lower index";
}

TEST(Gmtl, Arithmetic) {
    const Vec a(1, 2, 3), b(-2, 0.5, 4);
    const Vec sum = a + b * 2.0 - a / 2.0;
    EXPECT_TRUE(sum == Vec(-3.5, 2, 9.5));
    EXPECT_EQ(gmtl::dot(a, b), 11);
    Vec c;
    EXPECT_TRUE(gmtl::cross(c, a, b) == Vec(6.5, -10, 4.5));
    Vec d(3, 0, 4);
    EXPECT_EQ(gmtl::normalize(d), 5);
    EXPECT_TRUE(gmtl::isEqual(d, Vec(0.6, 0, 0.8), 1e-15));
    const Quat x(1, 0, 0, 0), y(0, 1, 0, 0);
    EXPECT_TRUE(x * y == Quat(0, 0, 1, 0));
    EXPECT_TRUE(y * x == Quat(0, 0, -1, 0));
}

} // namespace
