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

Quaternion operator*(const Quaternion& a, const Quaternion& b);
Quaternion conjugate(const Quaternion& a);
Quaternion normalized(const Quaternion& a);
Vector3 rotated(const Quaternion& rotation, const Vector3& vector);

/// Along the axis, as long as the angle in radians, which is at most pi in the result of toVector.
Quaternion fromVector(const Vector3& rotation);
Vector3 toVector(const Quaternion& rotation);

/// Of a body's moments about its principal axes.
Vector3 turningVelocity(const Vector3& momentum, const Vector3& moments);

/// How fast a body's velocities change against its axes, or its axes turn, at most; per second.
double rotationRate(const Vector3& velocity, const Vector3& moments);

/// The rotation that a body makes on which no torque acts, by Euler's equations. Everything is about the principal axes
/// where they are at the beginning: what was at a point x is at rotated(result, x) afterwards. The angular momentum
/// is kept exactly, the energy to a millionth in a turn.
/// @param moments more than zero.
Quaternion freeRotation(const Vector3& momentum, const Vector3& moments, double seconds);

} // namespace tessarin::dynamics::bullet
