#pragma once

#include <dynamics/bullet/ColladaPhysics.h>

#include <btBulletCollisionCommon.h>

#include <variant>

namespace tessarin::dynamics::bullet {

/// A box, ball, cylinder or capsule under a stretch that makes something else of it, an ellipsoid for one. Its surface
/// is exact along the axes of its own frame; elsewhere it is off by parts of the collision margin.
class StretchedShape : public btConvexInternalShape {
public:
    using Primitive = std::variant<collada::Box, collada::Sphere, collada::Cylinder, collada::Capsule>;

    /// @param primitive a cylinder or capsule must be round.
    StretchedShape(const Primitive& primitive, const Matrix3& stretch);

    /// Half of what the shape measures along each axis of its frame.
    const Vector3& getHalfExtents() const { return halfExtents; }

    /// The margin is taken from the inside, so that the shape keeps its size.
    void setMargin(btScalar margin) override;

    btVector3 localGetSupportingVertexWithoutMargin(const btVector3& direction) const override;
    void batchedUnitVectorGetSupportingVertexWithoutMargin(const btVector3* directions, btVector3* vertices,
                                                           int count) const override;
    void calculateLocalInertia(btScalar mass, btVector3& inertia) const override;
    const char* getName() const override { return "Stretched"; }

private:
    Primitive primitive;
    Matrix3 stretch;
    Matrix3 core;
    Vector3 halfExtents;
};

} // namespace tessarin::dynamics::bullet
