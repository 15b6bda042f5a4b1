#include <dynamics/bullet/StretchedShape.h>

#include <dynamics/bullet/BulletConversions.h>
#include <dynamics/bullet/MassDistribution.h>

#include <algorithm>
#include <cmath>

namespace tessarin::dynamics::bullet {

namespace {

/// The furthest point of the unstretched shape in a direction, which needn't have unit length.
struct Support {
    const Vector3& direction;

    Vector3 operator()(const collada::Box& box) const {
        return {std::copysign(box.halfExtents[0], direction[0]), std::copysign(box.halfExtents[1], direction[1]),
                std::copysign(box.halfExtents[2], direction[2])};
    }

    Vector3 operator()(const collada::Sphere& sphere) const { return normalized(direction) * sphere.radius; }

    Vector3 operator()(const collada::Cylinder& cylinder) const {
        const Vector3 rim = normalized(Vector3{direction[0], 0, direction[2]}) * cylinder.radius[0];
        return {rim[0], std::copysign(cylinder.height / 2, direction[1]), rim[2]};
    }

    Vector3 operator()(const collada::Capsule& capsule) const {
        return normalized(direction) * capsule.radius[0] +
               Vector3{0, std::copysign(capsule.height / 2, direction[1]), 0};
    }
};

Vector3 supportOf(const StretchedShape::Primitive& primitive, const Matrix3& map, const Vector3& direction) {
    const Vector3 mapped = transposed(map) * direction;
    return map * std::visit(Support{mapped}, primitive);
}

} // namespace

StretchedShape::StretchedShape(const Primitive& unstretched, const Matrix3& stretchOfIt)
    : primitive(unstretched), stretch(stretchOfIt), core(stretchOfIt) {
    m_shapeType = CUSTOM_CONVEX_SHAPE_TYPE;
    for (std::size_t i = 0; i < 3; ++i) {
        Vector3 axis = {0, 0, 0};
        axis[i] = 1;
        halfExtents[i] = supportOf(primitive, stretch, axis)[i];
    }
}

void StretchedShape::setMargin(btScalar margin) {
    const double smallest = *std::min_element(halfExtents.begin(), halfExtents.end());
    const double inside = std::min(static_cast<double>(margin), smallest / 2);
    btConvexInternalShape::setMargin(static_cast<btScalar>(inside));
    for (std::size_t i = 0; i < 3; ++i) {
        core[i] = stretch[i] * ((halfExtents[i] - inside) / halfExtents[i]);
    }
}

btVector3 StretchedShape::localGetSupportingVertexWithoutMargin(const btVector3& direction) const {
    return toBullet(supportOf(primitive, core, fromBullet(direction)));
}

void StretchedShape::batchedUnitVectorGetSupportingVertexWithoutMargin(const btVector3* directions, btVector3* vertices,
                                                                       int count) const {
    for (int i = 0; i < count; ++i) {
        vertices[i] = localGetSupportingVertexWithoutMargin(directions[i]);
    }
}

void StretchedShape::calculateLocalInertia(btScalar mass, btVector3& inertia) const {
    const Matrix3 exact = boxMass(halfExtents).inertia();
    const double perMass = static_cast<double>(mass) / boxMass(halfExtents).mass;
    inertia = toBullet(Vector3{exact[0][0], exact[1][1], exact[2][2]} * perMass);
}

} // namespace tessarin::dynamics::bullet
