#pragma once

#include <gmtl/Vec.h>

#include <cmath>
#include <functional>

namespace gmtl {

/// The same number at each index.
template <class DATA_TYPE>
struct Same {
    DATA_TYPE operator[](unsigned) const { return value; }
    DATA_TYPE value;
};

template <class LEFT, class RIGHT, class OPERATION>
struct Computed {
    auto operator[](const unsigned i) const { return OPERATION()(left[i], right[i]); }
    LEFT left;
    RIGHT right;
};

template <class OPERATION, class DATA_TYPE, unsigned SIZE, class LEFT, class RIGHT>
auto compute(const LEFT& left, const RIGHT& right) {
    using Rep = Computed<LEFT, RIGHT, OPERATION>;
    return VecBase<DATA_TYPE, SIZE, Rep>(Rep{left, right});
}

template <class DATA_TYPE, unsigned SIZE, class REP1, class REP2>
auto operator+(const VecBase<DATA_TYPE, SIZE, REP1>& v1, const VecBase<DATA_TYPE, SIZE, REP2>& v2) {
    return compute<std::plus<>, DATA_TYPE, SIZE>(v1, v2);
}

template <class DATA_TYPE, unsigned SIZE, class REP1, class REP2>
auto operator-(const VecBase<DATA_TYPE, SIZE, REP1>& v1, const VecBase<DATA_TYPE, SIZE, REP2>& v2) {
    return compute<std::minus<>, DATA_TYPE, SIZE>(v1, v2);
}

template <class DATA_TYPE, unsigned SIZE, class REP>
auto operator*(const VecBase<DATA_TYPE, SIZE, REP>& v1, const DATA_TYPE scalar) {
    return compute<std::multiplies<>, DATA_TYPE, SIZE>(v1, Same<DATA_TYPE>{scalar});
}

template <class DATA_TYPE, unsigned SIZE, class REP>
auto operator*(const DATA_TYPE scalar, const VecBase<DATA_TYPE, SIZE, REP>& v1) {
    return v1 * scalar;
}

template <class DATA_TYPE, unsigned SIZE, class REP>
auto operator/(const VecBase<DATA_TYPE, SIZE, REP>& v1, const DATA_TYPE scalar) {
    return compute<std::divides<>, DATA_TYPE, SIZE>(v1, Same<DATA_TYPE>{scalar});
}

template <class DATA_TYPE, unsigned SIZE, class REP>
auto operator-(const VecBase<DATA_TYPE, SIZE, REP>& v1) {
    return v1 * DATA_TYPE(-1);
}

template <class DATA_TYPE, unsigned SIZE, class REP>
VecBase<DATA_TYPE, SIZE>& operator+=(VecBase<DATA_TYPE, SIZE>& v1, const VecBase<DATA_TYPE, SIZE, REP>& v2) {
    return v1 = Vec<DATA_TYPE, SIZE>(v1 + v2);
}

template <class DATA_TYPE, unsigned SIZE, class REP>
VecBase<DATA_TYPE, SIZE>& operator-=(VecBase<DATA_TYPE, SIZE>& v1, const VecBase<DATA_TYPE, SIZE, REP>& v2) {
    return v1 = Vec<DATA_TYPE, SIZE>(v1 - v2);
}

template <class DATA_TYPE, unsigned SIZE, class SCALAR_TYPE>
VecBase<DATA_TYPE, SIZE>& operator*=(VecBase<DATA_TYPE, SIZE>& v1, const SCALAR_TYPE& scalar) {
    return v1 = Vec<DATA_TYPE, SIZE>(v1 * static_cast<DATA_TYPE>(scalar));
}

template <class DATA_TYPE, unsigned SIZE, class SCALAR_TYPE>
VecBase<DATA_TYPE, SIZE>& operator/=(VecBase<DATA_TYPE, SIZE>& v1, const SCALAR_TYPE& scalar) {
    return v1 = Vec<DATA_TYPE, SIZE>(v1 / static_cast<DATA_TYPE>(scalar));
}

// What follows takes vectors and no expressions.

template <class DATA_TYPE, unsigned SIZE>
DATA_TYPE dot(const Vec<DATA_TYPE, SIZE>& v1, const Vec<DATA_TYPE, SIZE>& v2) {
    DATA_TYPE sum(0);
    for (unsigned i = 0; i < SIZE; ++i)
        sum += v1[i] * v2[i];
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

template <class DATA_TYPE, unsigned SIZE>
DATA_TYPE normalize(Vec<DATA_TYPE, SIZE>& v1) {
    const DATA_TYPE len = length(v1);
    v1 /= len;
    return len;
}

template <class DATA_TYPE>
Vec<DATA_TYPE, 3>& cross(Vec<DATA_TYPE, 3>& result, const Vec<DATA_TYPE, 3>& v1, const Vec<DATA_TYPE, 3>& v2) {
    result.set(v1[1] * v2[2] - v1[2] * v2[1], v1[2] * v2[0] - v1[0] * v2[2], v1[0] * v2[1] - v1[1] * v2[0]);
    return result;
}

template <class DATA_TYPE, unsigned SIZE>
bool operator==(const VecBase<DATA_TYPE, SIZE>& v1, const VecBase<DATA_TYPE, SIZE>& v2) {
    for (unsigned i = 0; i < SIZE; ++i)
        if (v1[i] != v2[i])
            return false;
    return true;
}

template <class DATA_TYPE, unsigned SIZE>
bool operator!=(const VecBase<DATA_TYPE, SIZE>& v1, const VecBase<DATA_TYPE, SIZE>& v2) {
    return !(v1 == v2);
}

template <class DATA_TYPE, unsigned SIZE>
bool isEqual(const VecBase<DATA_TYPE, SIZE>& v1, const VecBase<DATA_TYPE, SIZE>& v2, const DATA_TYPE eps) {
    for (unsigned i = 0; i < SIZE; ++i)
        if (!(std::abs(v1[i] - v2[i]) <= eps))
            return false;
    return true;
}

} // namespace gmtl
