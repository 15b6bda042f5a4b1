#pragma once

#include <gmtl/Matrix.h>
#include <gmtl/Quat.h>
#include <gmtl/Vec.h>

#include <cmath>

namespace gmtl {

/// Replaces the translation, the last column's first three elements. The rest of the matrix stays.
template <typename DATA_TYPE, unsigned ROWS, unsigned COLS, unsigned SIZE>
Matrix<DATA_TYPE, ROWS, COLS>& setTrans(Matrix<DATA_TYPE, ROWS, COLS>& result, const Vec<DATA_TYPE, SIZE>& trans) {
    static_assert(ROWS == COLS && SIZE == ROWS - 1, "a translation has one number less than the matrix has rows");
    using Target = Matrix<DATA_TYPE, ROWS, COLS>;
    for (unsigned i = 0; i < SIZE; ++i) {
        result(i, COLS - 1) = trans[i];
    }
    if (result.mState == Target::ORTHOGONAL) {
        result.mState = Target::AFFINE;
    } else if (result.mState == Target::IDENTITY) {
        result.mState = Target::TRANS;
    }
    return result;
}

/// Replaces the upper left three by three block by the quaternion's rotation, taking it for one of unit length. The
/// rest of the matrix stays.
template <typename DATA_TYPE, unsigned ROWS, unsigned COLS>
Matrix<DATA_TYPE, ROWS, COLS>& setRot(Matrix<DATA_TYPE, ROWS, COLS>& result, const Quat<DATA_TYPE>& q) {
    static_assert((ROWS == 3 || ROWS == 4) && ROWS == COLS, "a rotation needs a block of three by three");
    using Target = Matrix<DATA_TYPE, ROWS, COLS>;
    const DATA_TYPE xs = q[0] + q[0], ys = q[1] + q[1], zs = q[2] + q[2];
    const DATA_TYPE xx = q[0] * xs, xy = q[0] * ys, xz = q[0] * zs;
    const DATA_TYPE yy = q[1] * ys, yz = q[1] * zs, zz = q[2] * zs;
    const DATA_TYPE wx = q[3] * xs, wy = q[3] * ys, wz = q[3] * zs;
    const DATA_TYPE block[3][3] = {{DATA_TYPE(1) - (yy + zz), xy - wz, xz + wy},
                                   {xy + wz, DATA_TYPE(1) - (xx + zz), yz - wx},
                                   {xz - wy, yz + wx, DATA_TYPE(1) - (xx + yy)}};
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) {
            result(row, column) = block[row][column];
        }
    }
    if (result.mState == Target::IDENTITY) {
        result.mState = Target::ORTHOGONAL;
    } else if (result.mState == Target::TRANS) {
        result.mState = Target::AFFINE;
    }
    return result;
}

/// The quaternion of the upper left three by three block, by its trace or else by its largest diagonal element. Nothing
/// is normalised: a block with scale gives a quaternion that is not of unit length.
template <typename DATA_TYPE, unsigned ROWS, unsigned COLS>
Quat<DATA_TYPE>& set(Quat<DATA_TYPE>& quat, const Matrix<DATA_TYPE, ROWS, COLS>& mat) {
    static_assert(ROWS >= 3 && COLS >= 3, "a rotation needs a block of three by three");
    const DATA_TYPE half = DATA_TYPE(0.5);
    const DATA_TYPE trace = mat(0, 0) + mat(1, 1) + mat(2, 2);
    if (trace > DATA_TYPE(0)) {
        DATA_TYPE s = std::sqrt(trace + DATA_TYPE(1));
        quat[3] = s * half;
        s = half / s;
        quat[0] = (mat(2, 1) - mat(1, 2)) * s;
        quat[1] = (mat(0, 2) - mat(2, 0)) * s;
        quat[2] = (mat(1, 0) - mat(0, 1)) * s;
        return quat;
    }
    unsigned i = mat(1, 1) > mat(0, 0) ? 1 : 0;
    if (mat(2, 2) > mat(i, i)) {
        i = 2;
    }
    const unsigned j = (i + 1) % 3;
    const unsigned k = (j + 1) % 3;
    DATA_TYPE s = std::sqrt(mat(i, i) - (mat(j, j) + mat(k, k)) + DATA_TYPE(1));
    quat[static_cast<int>(i)] = s * half;
    if (s != DATA_TYPE(0)) {
        s = half / s;
    }
    quat[3] = (mat(k, j) - mat(j, k)) * s;
    quat[static_cast<int>(j)] = (mat(j, i) + mat(i, j)) * s;
    quat[static_cast<int>(k)] = (mat(k, i) + mat(i, k)) * s;
    return quat;
}

/// The whole matrix becomes the quaternion's rotation.
template <typename DATA_TYPE, unsigned ROWS, unsigned COLS>
Matrix<DATA_TYPE, ROWS, COLS>& set(Matrix<DATA_TYPE, ROWS, COLS>& mat, const Quat<DATA_TYPE>& q) {
    mat = Matrix<DATA_TYPE, ROWS, COLS>();
    return setRot(mat, q);
}

} // namespace gmtl
