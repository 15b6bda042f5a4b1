#pragma once

#include <gmtl/Vec.h>

namespace gmtl {

/// A matrix for column vectors: the numbers column after column, then a word that tells what kind of transform they
/// are.
///
/// The identity after construction. Writing single elements leaves the word as it is; filling the matrix as a whole
/// makes it FULL.
template <typename DATA_TYPE, unsigned ROWS, unsigned COLS>
class Matrix {
public:
    using DataType = DATA_TYPE;

    enum Params { Rows = ROWS, Cols = COLS };

    enum XformState {
        IDENTITY = 1,
        TRANS = 2,
        ORTHOGONAL = 4,
        AFFINE = 16,
        NON_UNISCALE = 32,
        FULL = 64,
        XFORM_ERROR = 128
    };

    class RowAccessor {
    public:
        RowAccessor(Matrix* matrix, const unsigned row) : mMat(matrix), mRow(row) {}
        DATA_TYPE& operator[](const unsigned column) { return (*mMat)(mRow, column); }

        Matrix* mMat;
        unsigned mRow;
    };

    class ConstRowAccessor {
    public:
        ConstRowAccessor(const Matrix* matrix, const unsigned row) : mMat(matrix), mRow(row) {}
        const DATA_TYPE& operator[](const unsigned column) const { return (*mMat)(mRow, column); }

        const Matrix* mMat;
        unsigned mRow;
    };

    Matrix() : mState(IDENTITY) {
        for (unsigned row = 0; row < ROWS; ++row) {
            for (unsigned column = 0; column < COLS; ++column) {
                (*this)(row, column) = DATA_TYPE(row == column ? 1 : 0);
            }
        }
    }

    /// Nine values in row order.
    void set(DATA_TYPE v00, DATA_TYPE v01, DATA_TYPE v02, DATA_TYPE v10, DATA_TYPE v11, DATA_TYPE v12, DATA_TYPE v20,
             DATA_TYPE v21, DATA_TYPE v22) {
        static_assert(ROWS == 3 && COLS == 3, "nine values fill a matrix of three by three");
        const DATA_TYPE rows[] = {v00, v01, v02, v10, v11, v12, v20, v21, v22};
        setTranspose(rows);
    }

    /// Sixteen values in row order.
    void set(DATA_TYPE v00, DATA_TYPE v01, DATA_TYPE v02, DATA_TYPE v03, DATA_TYPE v10, DATA_TYPE v11, DATA_TYPE v12,
             DATA_TYPE v13, DATA_TYPE v20, DATA_TYPE v21, DATA_TYPE v22, DATA_TYPE v23, DATA_TYPE v30, DATA_TYPE v31,
             DATA_TYPE v32, DATA_TYPE v33) {
        static_assert(ROWS == 4 && COLS == 4, "sixteen values fill a matrix of four by four");
        const DATA_TYPE rows[] = {v00, v01, v02, v03, v10, v11, v12, v13, v20, v21, v22, v23, v30, v31, v32, v33};
        setTranspose(rows);
    }

    /// ROWS * COLS values in the order in which the matrix holds them: column after column.
    void set(const DATA_TYPE* data) {
        for (unsigned i = 0; i < ROWS * COLS; ++i) {
            mData[i] = data[i];
        }
        mState = FULL;
    }

    /// ROWS * COLS values row after row.
    void setTranspose(const DATA_TYPE* data) {
        for (unsigned row = 0; row < ROWS; ++row) {
            for (unsigned column = 0; column < COLS; ++column) {
                (*this)(row, column) = data[row * COLS + column];
            }
        }
        mState = FULL;
    }

    DATA_TYPE& operator()(const unsigned row, const unsigned column) { return mData[column * ROWS + row]; }
    const DATA_TYPE& operator()(const unsigned row, const unsigned column) const { return mData[column * ROWS + row]; }

    RowAccessor operator[](const unsigned row) { return RowAccessor(this, row); }
    ConstRowAccessor operator[](const unsigned row) const { return ConstRowAccessor(this, row); }

    const DATA_TYPE* getData() const { return mData; }

    void setState(int state) { mState = state; }

    DATA_TYPE mData[COLS * ROWS];
    int mState;
};

using Matrix33f = Matrix<float, 3, 3>;
using Matrix33d = Matrix<double, 3, 3>;
using Matrix44f = Matrix<float, 4, 4>;
using Matrix44d = Matrix<double, 4, 4>;

} // namespace gmtl
