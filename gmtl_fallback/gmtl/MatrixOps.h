#pragma once

#include <gmtl/Matrix.h>

#include <cmath>
#include <utility>

namespace gmtl {

template <typename DATA_TYPE, unsigned ROWS, unsigned COLS>
Matrix<DATA_TYPE, ROWS, COLS>& identity(Matrix<DATA_TYPE, ROWS, COLS>& result) {
    result = Matrix<DATA_TYPE, ROWS, COLS>();
    return result;
}

/// In place. The state stays as it was.
template <typename DATA_TYPE, unsigned SIZE>
Matrix<DATA_TYPE, SIZE, SIZE>& transpose(Matrix<DATA_TYPE, SIZE, SIZE>& result) {
    for (unsigned row = 1; row < SIZE; ++row) {
        for (unsigned column = 0; column < row; ++column) {
            std::swap(result(row, column), result(column, row));
        }
    }
    return result;
}

template <typename DATA_TYPE, unsigned ROWS, unsigned COLS>
bool operator==(const Matrix<DATA_TYPE, ROWS, COLS>& lhs, const Matrix<DATA_TYPE, ROWS, COLS>& rhs) {
    for (unsigned i = 0; i < ROWS * COLS; ++i) {
        if (lhs.mData[i] != rhs.mData[i]) {
            return false;
        }
    }
    return true;
}

template <typename DATA_TYPE, unsigned ROWS, unsigned COLS>
bool operator!=(const Matrix<DATA_TYPE, ROWS, COLS>& lhs, const Matrix<DATA_TYPE, ROWS, COLS>& rhs) {
    return !(lhs == rhs);
}

template <typename DATA_TYPE, unsigned ROWS, unsigned COLS>
bool isEqual(const Matrix<DATA_TYPE, ROWS, COLS>& lhs, const Matrix<DATA_TYPE, ROWS, COLS>& rhs, const DATA_TYPE eps) {
    for (unsigned i = 0; i < ROWS * COLS; ++i) {
        if (!(std::abs(lhs.mData[i] - rhs.mData[i]) <= eps)) {
            return false;
        }
    }
    return true;
}

} // namespace gmtl
