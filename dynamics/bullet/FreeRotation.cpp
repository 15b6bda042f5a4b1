#include <dynamics/bullet/FreeRotation.h>

#include <algorithm>
#include <cmath>

namespace tessarin::dynamics::bullet {

namespace {

/// Radians in one step of the integration.
constexpr double longestStep = 0.05;

/// Not of unit length.
Quaternion sum(const Quaternion& a, const Quaternion& b, double factor) {
    return {a.vector + b.vector * factor, a.scalar + b.scalar * factor};
}

/// Seen from the turning axes the momentum turns back, so that it stays what it is in the world.
/// @param half of the inverse moments.
Quaternion rateOf(const Quaternion& turned, const Vector3& momentum, const Vector3& half) {
    const Vector3 seen = rotated(conjugate(turned), momentum);
    return turned * Quaternion{{seen[0] * half[0], seen[1] * half[1], seen[2] * half[2]}, 0};
}

} // namespace

Quaternion normalized(const Quaternion& a) {
    const double size = std::sqrt(dot(a.vector, a.vector) + a.scalar * a.scalar);
    return {a.vector * (1 / size), a.scalar / size};
}

Quaternion fromVector(const Vector3& rotation) {
    const double half = std::sqrt(dot(rotation, rotation)) / 2;
    return {rotation * (half > 0 ? std::sin(half) / (2 * half) : 0.5), std::cos(half)};
}

Vector3 toVector(const Quaternion& rotation) {
    const double sine = std::sqrt(dot(rotation.vector, rotation.vector));
    const double half = std::atan2(sine, std::abs(rotation.scalar));
    return rotation.vector * std::copysign(sine > 0 ? 2 * half / sine : 2, rotation.scalar);
}

double rotationRate(const Vector3& velocity, const Vector3& moments) {
    Vector3 coupling;
    for (std::size_t i = 0; i < 3; ++i) {
        coupling[i] = std::abs(moments[(i + 1) % 3] - moments[(i + 2) % 3]) / moments[i];
    }
    const double fastest =
        std::max({coupling[0] * coupling[1], coupling[1] * coupling[2], coupling[2] * coupling[0], 1.0});
    return std::sqrt(dot(velocity, velocity) * fastest);
}

Quaternion freeRotation(const Vector3& momentum, const Vector3& moments, double seconds) {
    const double angle = seconds * rotationRate(turningVelocity(momentum, moments), moments);
    const int count = std::max(static_cast<int>(std::ceil(angle / longestStep)), 1);
    const double step = seconds / count;
    const Vector3 half = {0.5 / moments[0], 0.5 / moments[1], 0.5 / moments[2]};
    Quaternion turned;
    // The classic method of Runge and Kutta, of the fourth order. With stages off the unit sphere it is less precise.
    for (int i = 0; i < count; ++i) {
        const Quaternion a = rateOf(turned, momentum, half);
        const Quaternion b = rateOf(normalized(sum(turned, a, step / 2)), momentum, half);
        const Quaternion c = rateOf(normalized(sum(turned, b, step / 2)), momentum, half);
        const Quaternion d = rateOf(normalized(sum(turned, c, step)), momentum, half);
        turned = normalized(sum(turned, sum(sum(a, d, 1), sum(b, c, 1), 2), step / 6));
    }
    return turned;
}

} // namespace tessarin::dynamics::bullet
