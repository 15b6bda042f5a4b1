#pragma once

#include <dynamics/bullet/Affine.h>

namespace tessarin::dynamics::bullet {

/// How the mass of a solid is spread: enough to move, scale and add solids before anything is asked about inertia.
struct MassDistribution {
    double mass = 0;
    Vector3 centre = {0, 0, 0};

    /// The integral of x * transposed(x) over the mass, taken about the centre.
    Matrix3 covariance = {};

    Matrix3 inertia() const;
};

/// Each solid is centred at the origin as COLLADA has it and has the density 1; cylinders and capsules lie along Y.
MassDistribution boxMass(const Vector3& halfExtents);
MassDistribution sphereMass(double radius);
MassDistribution cylinderMass(double radius, double height);

/// @param height the distance between the centres of the two hemispheres.
MassDistribution capsuleMass(double radius, double height);

/// What becomes of a solid under a linear map: its mass grows with its volume.
MassDistribution transformed(const MassDistribution& solid, const Affine& map);

/// The same solid with another mass.
MassDistribution withMass(const MassDistribution& solid, double mass);

MassDistribution operator+(const MassDistribution& a, const MassDistribution& b);

/// Adds up a surface, triangle after triangle, into a thin shell of density 1 for each area.
class ShellMass {
public:
    void addTriangle(const Vector3& a, const Vector3& b, const Vector3& c);
    MassDistribution get() const;

private:
    double area = 0;
    Vector3 firstMoment = {0, 0, 0};
    Matrix3 secondMoment = {};
};

/// Adds up a closed surface, triangle after triangle, into the solid of density 1 within it.
class SurfaceMass {
public:
    /// The corners run counter-clockwise as seen from outside.
    void addTriangle(const Vector3& a, const Vector3& b, const Vector3& c);

    /// The mass of a surface that is inside out is negative.
    MassDistribution get() const;

private:
    double volume = 0;
    Vector3 firstMoment = {0, 0, 0};
    Matrix3 secondMoment = {};
};

} // namespace tessarin::dynamics::bullet
