#include <dynamics/bullet/MassDistribution.h>

#include <cmath>

namespace tessarin::dynamics::bullet {

namespace {

constexpr double pi = 3.14159265358979323846;

} // namespace

Matrix3 MassDistribution::inertia() const {
    const double trace = covariance[0][0] + covariance[1][1] + covariance[2][2];
    return identityMatrix3 * trace + covariance * -1;
}

MassDistribution boxMass(const Vector3& h) {
    const double mass = 8 * h[0] * h[1] * h[2];
    return {mass, {0, 0, 0}, diagonal(Vector3{h[0] * h[0], h[1] * h[1], h[2] * h[2]} * (mass / 3))};
}

MassDistribution sphereMass(double radius) {
    const double mass = 4.0 / 3 * pi * radius * radius * radius;
    return {mass, {0, 0, 0}, identityMatrix3 * (mass * radius * radius / 5)};
}

MassDistribution cylinderMass(double radius, double height) {
    const double mass = pi * radius * radius * height;
    const double across = mass * radius * radius / 4;
    return {mass, {0, 0, 0}, diagonal({across, mass * height * height / 12, across})};
}

MassDistribution capsuleMass(double radius, double height) {
    const MassDistribution middle = cylinderMass(radius, height);
    const MassDistribution ends = sphereMass(radius);
    // Each hemisphere sits half the height further out, and its centre 3/8 of the radius beyond that.
    const double outwards = ends.mass * height * (height / 4 + 3 * radius / 8);
    return {middle.mass + ends.mass, {0, 0, 0}, middle.covariance + ends.covariance + diagonal({0, outwards, 0})};
}

MassDistribution transformed(const MassDistribution& solid, const Affine& map) {
    const double growth = std::abs(determinant(map.linear));
    return {solid.mass * growth, transformPoint(map, solid.centre),
            map.linear * solid.covariance * transposed(map.linear) * growth};
}

MassDistribution withMass(const MassDistribution& solid, double mass) {
    return {mass, solid.centre, solid.mass > 0 ? solid.covariance * (mass / solid.mass) : Matrix3{}};
}

MassDistribution operator+(const MassDistribution& a, const MassDistribution& b) {
    const double mass = a.mass + b.mass;
    if (!(mass > 0)) {
        return a;
    }
    const Vector3 apart = b.centre - a.centre;
    return {mass, a.centre + apart * (b.mass / mass),
            a.covariance + b.covariance + outerProduct(apart, apart) * (a.mass * b.mass / mass)};
}

void ShellMass::addTriangle(const Vector3& a, const Vector3& b, const Vector3& c) {
    const double part = length(cross(b - a, c - a)) / 2;
    const Vector3 sum = a + b + c;
    area += part;
    firstMoment = firstMoment + sum * (part / 3);
    secondMoment =
        secondMoment +
        (outerProduct(a, a) + outerProduct(b, b) + outerProduct(c, c) + outerProduct(sum, sum)) * (part / 12);
}

MassDistribution ShellMass::get() const {
    if (!(area > 0)) {
        return {};
    }
    const Vector3 centre = firstMoment * (1 / area);
    return {area, centre, secondMoment + outerProduct(centre, centre) * -area};
}

void SurfaceMass::addTriangle(const Vector3& a, const Vector3& b, const Vector3& c) {
    // The tetrahedron of the triangle and the origin.
    const double part = dot(a, cross(b, c)) / 6;
    const Vector3 sum = a + b + c;
    volume += part;
    firstMoment = firstMoment + sum * (part / 4);
    secondMoment =
        secondMoment +
        (outerProduct(a, a) + outerProduct(b, b) + outerProduct(c, c) + outerProduct(sum, sum)) * (part / 20);
}

MassDistribution SurfaceMass::get() const {
    if (volume == 0) {
        return {};
    }
    const Vector3 centre = firstMoment * (1 / volume);
    return {volume, centre, secondMoment + outerProduct(centre, centre) * -volume};
}

} // namespace tessarin::dynamics::bullet
