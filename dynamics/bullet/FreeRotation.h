#pragma once

#include <dynamics/bullet/Affine.h>

#include <array>

namespace tessarin::dynamics::bullet {

/// A rotation in double precision.
struct Quaternion {
    /// Along the axis, by the sine of half the angle.
    Vector3 vector = {0, 0, 0};

    /// The cosine of half the angle.
    double scalar = 1;
};

inline Quaternion operator*(const Quaternion& a, const Quaternion& b) {
    return {cross(a.vector, b.vector) + b.vector * a.scalar + a.vector * b.scalar,
            a.scalar * b.scalar - dot(a.vector, b.vector)};
}

inline Quaternion conjugate(const Quaternion& a) {
    return {a.vector * -1, a.scalar};
}

inline Vector3 rotated(const Quaternion& rotation, const Vector3& vector) {
    const Vector3 twice = cross(rotation.vector, vector) * 2;
    return vector + twice * rotation.scalar + cross(rotation.vector, twice);
}

Quaternion normalized(const Quaternion& a);

/// Along the axis, as long as the angle in radians, which is at most pi in the result of toVector.
Quaternion fromVector(const Vector3& rotation);
Vector3 toVector(const Quaternion& rotation);

/// About the principal axes.
inline Vector3 turningVelocity(const Vector3& momentum, const Vector3& moments) {
    return {momentum[0] / moments[0], momentum[1] / moments[1], momentum[2] / moments[2]};
}

/// How fast a body's velocities change against its axes, or its axes turn, at most; per second.
double rotationRate(const Vector3& velocity, const Vector3& moments);

/// The rotation that a body makes on which no torque acts, by Euler's equations. Everything is about the principal axes
/// where they are at the beginning: what was at a point x is at rotated(result, x) afterwards. The angular momentum
/// is kept exactly, the energy to a millionth in a turn.
/// @param moments more than zero.
/// @param seconds so few that the rotation rate makes no more than some hundreds of radians of them.
Quaternion freeRotation(const Vector3& momentum, const Vector3& moments, double seconds);

} // namespace tessarin::dynamics::bullet
