// Holds for the real library and for the fallback alike: layout and conventions that the project relies on.

#include <gmtl/gmtl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
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

TEST(Gmtl, LayoutIsColumnsAndThenTheState) {
    static_assert(sizeof(Matrix) == 136 && sizeof(gmtl::Matrix<float, 4, 4>) == 68);
    static_assert(sizeof(Vec) == 24 && sizeof(gmtl::Vec<float, 3>) == 12 && sizeof(Quat) == 32);
    Matrix identity;
    EXPECT_EQ(identity.mState, Matrix::IDENTITY);
    EXPECT_TRUE(static_cast<const void*>(identity.getData()) == &identity);
    identity[3][0] = -1; // single elements leave the state as it is
    EXPECT_TRUE(identity.mData[3] == -1 && identity.mState == Matrix::IDENTITY);
    EXPECT_TRUE(Quat() == Quat(0, 0, 0, 1) && Quat(1, 2, 3, 4).getData()[3] == 4 && Vec() == Vec(0, 0, 0));

    const Matrix byRow = countingMatrix();
    EXPECT_TRUE(byRow(1, 2) == 6 && byRow[1][2] == 6 && byRow.getData()[2 * 4 + 1] == 6);
    Matrix byColumn;
    byColumn.set(byRow.getData());
    EXPECT_TRUE(byColumn == byRow && !(byColumn == identity));
    EXPECT_TRUE(byRow.mState == Matrix::FULL && byColumn.mState == Matrix::FULL);
}

TEST(Gmtl, SettingAPartLeavesTheRestAndTracksTheState) {
    const double h = std::sqrt(0.5);
    Matrix translated, rotated;
    translated.set(0, 1, 2, 100, 4, 5, 6, 200, 8, 9, 10, 300, 12, 13, 14, 15);
    rotated.set(0, -1, 0, 3, 1, 0, 0, 7, 0, 0, 1, 11, 12, 13, 14, 15);
    const int states[][3] = {{Matrix::IDENTITY, Matrix::TRANS, Matrix::ORTHOGONAL},
                             {Matrix::ORTHOGONAL, Matrix::AFFINE, Matrix::ORTHOGONAL},
                             {Matrix::TRANS, Matrix::TRANS, Matrix::AFFINE},
                             {Matrix::AFFINE, Matrix::AFFINE, Matrix::AFFINE},
                             {Matrix::FULL, Matrix::FULL, Matrix::FULL}};
    for (const auto& [before, afterTrans, afterRot] : states) {
        Matrix matrix = countingMatrix();
        matrix.mState = before;
        gmtl::setTrans(matrix, Vec(100, 200, 300));
        EXPECT_TRUE(matrix == translated && matrix.mState == afterTrans) << before;
        matrix = countingMatrix();
        matrix.mState = before;
        gmtl::setRot(matrix, Quat(0, 0, h, h));
        EXPECT_TRUE(gmtl::isEqual(matrix, rotated, 1e-12) && matrix.mState == afterRot) << before;
    }
}

TEST(Gmtl, QuaternionsComeBackFromMatricesByEveryBranch) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> number(-1, 1);
    int branches[4] = {};
    Matrix matrix;
    Quat back;
    for (int i = 0; i < 2000; ++i) {
        Quat quat(number(random), number(random), number(random), number(random) * (i % 2 == 0 ? 1 : 0.1));
        gmtl::normalize(quat);
        gmtl::setRot(matrix, quat);
        gmtl::set(back, matrix);
        ASSERT_TRUE(gmtl::isEquiv(quat, back, 1e-12));
        unsigned branch = matrix(1, 1) > matrix(0, 0) ? 1 : 0;
        branch = matrix(2, 2) > matrix(branch, branch) ? 2 : branch;
        branch = matrix(0, 0) + matrix(1, 1) + matrix(2, 2) > 0 ? 3 : branch;
        ++branches[branch];
        EXPECT_GE(back[static_cast<int>(branch)], 0) << "the element that the branch starts from is a root";
    }
    EXPECT_GT(*std::min_element(branches, branches + 4), 50);

    // What is no rotation goes through as it is, both ways.
    matrix.set(2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1);
    EXPECT_TRUE(gmtl::isEqual(gmtl::set(back, matrix), Quat(0, 0, 0, std::sqrt(7.0) / 2), 1e-12));
    matrix.set(-1, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1);
    EXPECT_TRUE(gmtl::set(back, matrix) == Quat(0.5 * std::sqrt(2.0), 0, 0, 0)) << "ties keep the lower index";
    gmtl::setRot(matrix, Quat(2, 0, 0, 0));
    EXPECT_TRUE(matrix(0, 0) == 1 && matrix(1, 1) == -7);
}

TEST(Gmtl, Arithmetic) {
    const Vec a(1, 2, 3), b(-2, 0.5, 4);
    const Vec sum = a + b * 2.0 - a / 2.0;
    EXPECT_TRUE(sum == Vec(-3.5, 2, 9.5));
    EXPECT_EQ(gmtl::dot(a, b), 11);
    Vec c, d(3, 0, 4);
    EXPECT_TRUE(gmtl::cross(c, a, b) == Vec(6.5, -10, 4.5));
    EXPECT_EQ(gmtl::normalize(d), 5);
    EXPECT_TRUE(gmtl::isEqual(d, Vec(0.6, 0, 0.8), 1e-15));
    const Quat x(1, 0, 0, 0), y(0, 1, 0, 0);
    EXPECT_TRUE(x * y == Quat(0, 0, 1, 0) && y * x == Quat(0, 0, -1, 0));
}

} // namespace
