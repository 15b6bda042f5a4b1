#pragma once

#include <gmtl/Quat.h>

#include <cmath>

namespace gmtl {

template <typename DATA_TYPE>
DATA_TYPE dot(const Quat<DATA_TYPE>& q1, const Quat<DATA_TYPE>& q2) {
    return q1[0] * q2[0] + q1[1] * q2[1] + q1[2] * q2[2] + q1[3] * q2[3];
}

template <typename DATA_TYPE>
DATA_TYPE lengthSquared(const Quat<DATA_TYPE>& q) {
    return dot(q, q);
}

template <typename DATA_TYPE>
DATA_TYPE length(const Quat<DATA_TYPE>& q) {
    return std::sqrt(lengthSquared(q));
}

/// A quaternion shorter than 0.0001 has no direction worth keeping and stays as it is.
template <typename DATA_TYPE>
Quat<DATA_TYPE>& normalize(Quat<DATA_TYPE>& result) {
    const DATA_TYPE len = length(result);
    if (len < DATA_TYPE(0.0001)) {
        return result;
    }
    result.set(result[0] / len, result[1] / len, result[2] / len, result[3] / len);
    return result;
}

/// In place; of a unit quaternion this is the inverse.
template <typename DATA_TYPE>
Quat<DATA_TYPE>& conj(Quat<DATA_TYPE>& result) {
    result.set(-result[0], -result[1], -result[2], result[3]);
    return result;
}

template <typename DATA_TYPE>
Quat<DATA_TYPE> operator-(const Quat<DATA_TYPE>& q) {
    return Quat<DATA_TYPE>(-q[0], -q[1], -q[2], -q[3]);
}

/// The rotation q2 followed by the rotation q1.
template <typename DATA_TYPE>
Quat<DATA_TYPE> operator*(const Quat<DATA_TYPE>& q1, const Quat<DATA_TYPE>& q2) {
    return Quat<DATA_TYPE>(q1[3] * q2[0] + q1[0] * q2[3] + q1[1] * q2[2] - q1[2] * q2[1],
                           q1[3] * q2[1] + q1[1] * q2[3] + q1[2] * q2[0] - q1[0] * q2[2],
                           q1[3] * q2[2] + q1[2] * q2[3] + q1[0] * q2[1] - q1[1] * q2[0],
                           q1[3] * q2[3] - q1[0] * q2[0] - q1[1] * q2[1] - q1[2] * q2[2]);
}

template <typename DATA_TYPE>
bool operator==(const Quat<DATA_TYPE>& q1, const Quat<DATA_TYPE>& q2) {
    return q1[0] == q2[0] && q1[1] == q2[1] && q1[2] == q2[2] && q1[3] == q2[3];
}

template <typename DATA_TYPE>
bool operator!=(const Quat<DATA_TYPE>& q1, const Quat<DATA_TYPE>& q2) {
    return !(q1 == q2);
}

template <typename DATA_TYPE>
bool isEqual(const Quat<DATA_TYPE>& q1, const Quat<DATA_TYPE>& q2, DATA_TYPE tol) {
    return std::abs(q1[0] - q2[0]) <= tol && std::abs(q1[1] - q2[1]) <= tol && std::abs(q1[2] - q2[2]) <= tol &&
           std::abs(q1[3] - q2[3]) <= tol;
}

/// True for the same rotation: q and -q turn alike.
template <typename DATA_TYPE>
bool isEquiv(const Quat<DATA_TYPE>& q1, const Quat<DATA_TYPE>& q2, DATA_TYPE tol) {
    return isEqual(q1, q2, tol) || isEqual(q1, -q2, tol);
}

} // namespace gmtl
