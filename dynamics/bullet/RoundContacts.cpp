#include <dynamics/bullet/RoundContacts.h>

namespace tessarin::dynamics::bullet {

namespace {

/// Against the radius: what stands out less is flat.
constexpr btScalar flatness = 1e-3F;

/// As a slope: what rises less is flat. The engine takes points that lie close together for one, so that what is left
/// of them may have the normal of an edge beside the nearest point.
constexpr btScalar flatSlope = 0.04F;

/// Normals that differ by less, in radians, are the same.
constexpr btScalar sameNormal = 1e-3F;

int typeOf(const btCollisionObject& object) {
    return object.getCollisionShape()->getShapeType();
}

/// 0 if the shape isn't round.
btScalar radiusOf(const btCollisionShape& shape) {
    switch (shape.getShapeType()) {
    case SPHERE_SHAPE_PROXYTYPE:
        return static_cast<const btSphereShape&>(shape).getRadius();
    case CAPSULE_SHAPE_PROXYTYPE:
        return static_cast<const btCapsuleShape&>(shape).getRadius();
    case CYLINDER_SHAPE_PROXYTYPE:
        return static_cast<const btCylinderShape&>(shape).getRadius();
    default:
        return 0;
    }
}

/// In the frame of the mesh, of unit length; zero if there is no such triangle.
btVector3 normalOfTriangle(const btStridingMeshInterface& mesh, int part, int index) {
    const unsigned char* vertices = nullptr;
    const unsigned char* indices = nullptr;
    int vertexCount = 0;
    int vertexStride = 0;
    int indexStride = 0;
    int triangleCount = 0;
    PHY_ScalarType vertexType = PHY_FLOAT;
    PHY_ScalarType indexType = PHY_INTEGER;
    mesh.getLockedReadOnlyVertexIndexBase(&vertices, vertexCount, vertexType, vertexStride, &indices, indexStride,
                                          triangleCount, indexType, part);
    if (index < 0 || index >= triangleCount) {
        return btVector3(0, 0, 0);
    }
    const auto* corners = reinterpret_cast<const int*>(indices + index * indexStride);
    const auto cornerAt = [&](int i) {
        const auto* at = reinterpret_cast<const float*>(vertices + corners[i] * vertexStride);
        return btVector3(at[0], at[1], at[2]);
    };
    const btVector3 normal = (cornerAt(1) - cornerAt(0)).cross(cornerAt(2) - cornerAt(0));
    const btScalar size = normal.length();
    return size > 0 ? normal / size : btVector3(0, 0, 0);
}

/// The contacts of a manifold as one of its bodies sees them, which is round.
class RoundSide {
public:
    RoundSide(btPersistentManifold& manifoldOfIt, bool isFirstOfTwo)
        : manifold(manifoldOfIt), isFirst(isFirstOfTwo), body(isFirst ? *manifold.getBody0() : *manifold.getBody1()),
          other(isFirst ? *manifold.getBody1() : *manifold.getBody0()), radius(radiusOf(*body.getCollisionShape())) {}

    void mend() {
        const bool isOnMesh = typeOf(other) == TRIANGLE_MESH_SHAPE_PROXYTYPE;
        if (typeOf(body) == SPHERE_SHAPE_PROXYTYPE) {
            keepNearest(0, flatSlope);
            putBelowCentre();
            if (isOnMesh) {
                straighten();
                putBelowCentre();
            }
        } else if (isOnMesh) {
            straighten();
            keepNearest(sameNormal, 0);
        }
    }

private:
    const btVector3& onOther(const btManifoldPoint& point) const {
        return isFirst ? point.m_positionWorldOnB : point.m_positionWorldOnA;
    }

    const btVector3& onBody(const btManifoldPoint& point) const {
        return isFirst ? point.m_positionWorldOnA : point.m_positionWorldOnB;
    }

    btVector3 inward(const btManifoldPoint& point) const {
        return isFirst ? -point.m_normalWorldOnB : point.m_normalWorldOnB;
    }

    /// Whether the other body's point lies in the plane of another contact, or behind it.
    bool isBehind(const btManifoldPoint& point, const btManifoldPoint& plane, btScalar slope) const {
        const btVector3 way = onOther(plane) - onOther(point);
        return inward(plane).dot(way) < flatness * radius + slope * way.length();
    }

    /// Takes out points that can't be touched, as the body touches a nearer one.
    /// @param difference that their normals have to have.
    void keepNearest(btScalar difference, btScalar slope) {
        for (int i = manifold.getNumContacts() - 1; i >= 0; --i) {
            const btManifoldPoint& point = manifold.getContactPoint(i);
            for (int j = 0; j < manifold.getNumContacts(); ++j) {
                const btManifoldPoint& nearer = manifold.getContactPoint(j);
                const btScalar further = point.getDistance() - nearer.getDistance();
                if ((further > 0 || (further == 0 && j < i)) && isBehind(point, nearer, slope) &&
                    point.m_normalWorldOnB.distance2(nearer.m_normalWorldOnB) >= difference * difference) {
                    manifold.removeContactPoint(i);
                    break;
                }
            }
        }
    }

    /// That of the triangle.
    btVector3 normalAt(const btManifoldPoint& point) const {
        const auto& mesh = *static_cast<const btTriangleMeshShape*>(other.getCollisionShape())->getMeshInterface();
        return other.getWorldTransform().getBasis() * normalOfTriangle(mesh,
                                                                       isFirst ? point.m_partId1 : point.m_partId0,
                                                                       isFirst ? point.m_index1 : point.m_index0);
    }

    /// Puts the contacts of a ball where their normals say: the search for nearest points finds a distance more exactly
    /// than a place.
    void putBelowCentre() {
        for (int i = 0; i < manifold.getNumContacts(); ++i) {
            btManifoldPoint& point = manifold.getContactPoint(i);
            const btVector3 direction = inward(point);
            const btVector3 onBall = body.getWorldTransform().getOrigin() + direction * radius;
            const btVector3 onSurface = onBall + direction * point.getDistance();
            point.m_positionWorldOnA = isFirst ? onBall : onSurface;
            point.m_positionWorldOnB = isFirst ? onSurface : onBall;
        }
    }

    /// Gives contacts beside an edge within a mesh the normal of their triangle.
    void straighten() {
        for (int i = 0; i < manifold.getNumContacts(); ++i) {
            btManifoldPoint& point = manifold.getContactPoint(i);
            btVector3 face = normalAt(point);
            face = face.dot(point.m_normalWorldOnB) < 0 ? -face : face;
            if (face.distance2(point.m_normalWorldOnB) < flatSlope * flatSlope) {
                const btVector3 deepest = typeOf(body) == SPHERE_SHAPE_PROXYTYPE
                                              ? body.getWorldTransform().getOrigin() + (isFirst ? -face : face) * radius
                                              : onBody(point);
                point.m_normalWorldOnB = face;
                point.setDistance(inward(point).dot(onOther(point) - deepest));
            }
        }
    }

    btPersistentManifold& manifold;
    const bool isFirst;
    const btCollisionObject& body;
    const btCollisionObject& other;
    const btScalar radius;
};

} // namespace

void mendRoundContacts(btPersistentManifold& manifold) {
    if (manifold.getNumContacts() == 0) {
        return;
    }
    const bool isFirstRound = radiusOf(*manifold.getBody0()->getCollisionShape()) > 0;
    if (isFirstRound || radiusOf(*manifold.getBody1()->getCollisionShape()) > 0) {
        // Of a ball and another round body the ball counts.
        const bool isFirstBall = typeOf(*manifold.getBody0()) == SPHERE_SHAPE_PROXYTYPE;
        const bool isSecondBall = typeOf(*manifold.getBody1()) == SPHERE_SHAPE_PROXYTYPE;
        RoundSide(manifold, isFirstBall || (isFirstRound && !isSecondBall)).mend();
    }
}

} // namespace tessarin::dynamics::bullet
