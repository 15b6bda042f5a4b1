#pragma once

#include <dynamics/bullet/Affine.h>

#include <LinearMath/btTransform.h>

namespace tessarin::dynamics::bullet {

inline btVector3 toBullet(const Vector3& a) {
    return {static_cast<btScalar>(a[0]), static_cast<btScalar>(a[1]), static_cast<btScalar>(a[2])};
}

inline Vector3 fromBullet(const btVector3& a) {
    return {a.x(), a.y(), a.z()};
}

inline btMatrix3x3 toBullet(const Matrix3& a) {
    btMatrix3x3 result;
    for (int row = 0; row < 3; ++row) {
        result[row] = toBullet(a[static_cast<std::size_t>(row)]);
    }
    return result;
}

/// The placement must be rigid.
inline btTransform toBullet(const Affine& a) {
    return btTransform(toBullet(a.linear), toBullet(a.translation));
}

inline Affine fromBullet(const btTransform& a) {
    return {{fromBullet(a.getBasis()[0]), fromBullet(a.getBasis()[1]), fromBullet(a.getBasis()[2])},
            fromBullet(a.getOrigin())};
}

} // namespace tessarin::dynamics::bullet
