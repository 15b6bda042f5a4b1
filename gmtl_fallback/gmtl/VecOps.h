#pragma once

#include <gmtl/Vec.h>

#include <cmath>

namespace gmtl {

template <class DATA_TYPE, unsigned SIZE>
VecBase<DATA_TYPE, SIZE> operator-(const VecBase<DATA_TYPE, SIZE>& v1) {
    VecBase<DATA_TYPE, SIZE> result(v1);
    for (unsigned i = 0; i < SIZE; ++i) {
        result[i] = -v1[i];
    }
    return result;
}

template <class DATA_TYPE, unsigned SIZE>
VecBase<DATA_TYPE, SIZE>& operator+=(VecBase<DATA_TYPE, SIZE>& v1, const VecBase<DATA_TYPE, SIZE>& v2) {
    for (unsigned i = 0; i < SIZE; ++i) {
        v1[i] += v2[i];
    }
    return v1;
}

template <class DATA_TYPE, unsigned SIZE>
VecBase<DATA_TYPE, SIZE>& operator-=(VecBase<DATA_TYPE, SIZE>& v1, const VecBase<DATA_TYPE, SIZE>& v2) {
    for (unsigned i = 0; i < SIZE; ++i) {
        v1[i] -= v2[i];
    }
    return v1;
}

template <class DATA_TYPE, unsigned SIZE, class SCALAR_TYPE>
VecBase<DATA_TYPE, SIZE>& operator*=(VecBase<DATA_TYPE, SIZE>& v1, const SCALAR_TYPE& scalar) {
    for (unsigned i = 0; i < SIZE; ++i) {
        v1[i] *= static_cast<DATA_TYPE>(scalar);
    }
    return v1;
}

template <class DATA_TYPE, unsigned SIZE, class SCALAR_TYPE>
VecBase<DATA_TYPE, SIZE>& operator/=(VecBase<DATA_TYPE, SIZE>& v1, const SCALAR_TYPE& scalar) {
    for (unsigned i = 0; i < SIZE; ++i) {
        v1[i] /= static_cast<DATA_TYPE>(scalar);
    }
    return v1;
}

template <class DATA_TYPE, unsigned SIZE>
VecBase<DATA_TYPE, SIZE> operator+(const VecBase<DATA_TYPE, SIZE>& v1, const VecBase<DATA_TYPE, SIZE>& v2) {
    VecBase<DATA_TYPE, SIZE> result(v1);
    result += v2;
    return result;
}

template <class DATA_TYPE, unsigned SIZE>
VecBase<DATA_TYPE, SIZE> operator-(const VecBase<DATA_TYPE, SIZE>& v1, const VecBase<DATA_TYPE, SIZE>& v2) {
    VecBase<DATA_TYPE, SIZE> result(v1);
    result -= v2;
    return result;
}

template <class DATA_TYPE, unsigned SIZE>
VecBase<DATA_TYPE, SIZE> operator*(const VecBase<DATA_TYPE, SIZE>& v1, const DATA_TYPE scalar) {
    VecBase<DATA_TYPE, SIZE> result(v1);
    result *= scalar;
    return result;
}

template <class DATA_TYPE, unsigned SIZE>
VecBase<DATA_TYPE, SIZE> operator*(const DATA_TYPE scalar, const VecBase<DATA_TYPE, SIZE>& v1) {
    return v1 * scalar;
}

template <class DATA_TYPE, unsigned SIZE>
VecBase<DATA_TYPE, SIZE> operator/(const VecBase<DATA_TYPE, SIZE>& v1, const DATA_TYPE scalar) {
    VecBase<DATA_TYPE, SIZE> result(v1);
    result /= scalar;
    return result;
}

template <class DATA_TYPE, unsigned SIZE>
DATA_TYPE dot(const Vec<DATA_TYPE, SIZE>& v1, const Vec<DATA_TYPE, SIZE>& v2) {
    DATA_TYPE sum(0);
    for (unsigned i = 0; i < SIZE; ++i) {
        sum += v1[i] * v2[i];
    }
    return sum;
}

template <class DATA_TYPE, unsigned SIZE>
DATA_TYPE lengthSquared(const Vec<DATA_TYPE, SIZE>& v1) {
    return dot(v1, v1);
}

template <class DATA_TYPE, unsigned SIZE>
DATA_TYPE length(const Vec<DATA_TYPE, SIZE>& v1) {
    return std::sqrt(lengthSquared(v1));
}

/// The result is the length that the vector had. A vector of length zero stays as it is.
template <class DATA_TYPE, unsigned SIZE>
DATA_TYPE normalize(Vec<DATA_TYPE, SIZE>& v1) {
    const DATA_TYPE len = length(v1);
    if (len != DATA_TYPE(0)) {
        v1 /= len;
    }
    return len;
}

/// The result must be neither v1 nor v2.
template <class DATA_TYPE>
Vec<DATA_TYPE, 3>& cross(Vec<DATA_TYPE, 3>& result, const Vec<DATA_TYPE, 3>& v1, const Vec<DATA_TYPE, 3>& v2) {
    result.set(v1[1] * v2[2] - v1[2] * v2[1], v1[2] * v2[0] - v1[0] * v2[2], v1[0] * v2[1] - v1[1] * v2[0]);
    return result;
}

template <class DATA_TYPE, unsigned SIZE>
bool operator==(const VecBase<DATA_TYPE, SIZE>& v1, const VecBase<DATA_TYPE, SIZE>& v2) {
    for (unsigned i = 0; i < SIZE; ++i) {
        if (v1[i] != v2[i]) {
            return false;
        }
    }
    return true;
}

template <class DATA_TYPE, unsigned SIZE>
bool operator!=(const VecBase<DATA_TYPE, SIZE>& v1, const VecBase<DATA_TYPE, SIZE>& v2) {
    return !(v1 == v2);
}

template <class DATA_TYPE, unsigned SIZE>
bool isEqual(const VecBase<DATA_TYPE, SIZE>& v1, const VecBase<DATA_TYPE, SIZE>& v2, const DATA_TYPE eps) {
    for (unsigned i = 0; i < SIZE; ++i) {
        if (!(std::abs(v1[i] - v2[i]) <= eps)) {
            return false;
        }
    }
    return true;
}

} // namespace gmtl
