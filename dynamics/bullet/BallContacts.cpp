#include <dynamics/bullet/BallContacts.h>

namespace tessarin::dynamics::bullet {

namespace {

/// Against the radius: what stands out less is flat.
constexpr btScalar flatness = 1e-3F;

/// As a slope: what rises less is flat. The engine takes points that lie close together for one, so that what is left
/// of them may have the normal of an edge beside the nearest point.
constexpr btScalar flatSlope = 0.04F;

/// The contacts of a manifold as the ball in it sees them.
class BallSide {
public:
    explicit BallSide(btPersistentManifold& manifoldOfBall)
        : manifold(manifoldOfBall), isFirst(isBall(*manifold.getBody0())),
          ball(isFirst ? *manifold.getBody0() : *manifold.getBody1()),
          other(isFirst ? *manifold.getBody1() : *manifold.getBody0()), isThere(isBall(ball)) {}

    bool hasBall() const { return isThere; }

    void keepNearest() {
        for (int i = manifold.getNumContacts() - 1; i >= 0; --i) {
            for (int j = 0; j < manifold.getNumContacts(); ++j) {
                if (isNearer(j, i) && isBehind(manifold.getContactPoint(j), manifold.getContactPoint(i))) {
                    manifold.removeContactPoint(i);
                    break;
                }
            }
        }
    }

    /// Puts contacts where their normals say: the search for the nearest points finds a distance more exactly than a
    /// place.
    void centre() {
        for (int i = 0; i < manifold.getNumContacts(); ++i) {
            btManifoldPoint& point = manifold.getContactPoint(i);
            setNormal(point, point.m_normalWorldOnB, point.getDistance());
        }
    }

    /// Gives contacts beside an edge within a mesh the normal of their triangle.
    void straighten() {
        if (other.getCollisionShape()->getShapeType() != TRIANGLE_MESH_SHAPE_PROXYTYPE) {
            return;
        }
        for (int i = 0; i < manifold.getNumContacts(); ++i) {
            btManifoldPoint& point = manifold.getContactPoint(i);
            btVector3 face = normalOfTriangle(isFirst ? point.m_partId1 : point.m_partId0,
                                              isFirst ? point.m_index1 : point.m_index0);
            const btScalar cosine = face.dot(point.m_normalWorldOnB);
            face = cosine < 0 ? -face : face;
            if (face.distance2(point.m_normalWorldOnB) < flatSlope * flatSlope) {
                const btVector3 way = ball.getWorldTransform().getOrigin() -
                                      (isFirst ? point.m_positionWorldOnB : point.m_positionWorldOnA);
                setNormal(point, face, (isFirst ? face : -face).dot(way) - getRadius());
            }
        }
    }

private:
    static bool isBall(const btCollisionObject& object) {
        return object.getCollisionShape()->getShapeType() == SPHERE_SHAPE_PROXYTYPE;
    }

    btScalar getRadius() const { return static_cast<const btSphereShape*>(ball.getCollisionShape())->getRadius(); }

    bool isNearer(int a, int b) const {
        const btScalar nearer = manifold.getContactPoint(b).getDistance() - manifold.getContactPoint(a).getDistance();
        return nearer > 0 || (nearer == 0 && a < b);
    }

    /// Whether a point of the surface lies in the plane in which a nearer one touches the ball, or behind it.
    bool isBehind(const btManifoldPoint& nearer, const btManifoldPoint& point) const {
        const btVector3 way = isFirst ? point.m_positionWorldOnB - nearer.m_positionWorldOnB
                                      : nearer.m_positionWorldOnA - point.m_positionWorldOnA;
        return nearer.m_normalWorldOnB.dot(way) < flatness * getRadius() + flatSlope * way.length();
    }

    btVector3 normalOfTriangle(int part, int index) const {
        const auto& mesh = *static_cast<const btTriangleMeshShape*>(other.getCollisionShape())->getMeshInterface();
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
        return size > 0 ? other.getWorldTransform().getBasis() * (normal / size) : btVector3(0, 0, 0);
    }

    /// @param normal as the point has it, from the second body to the first.
    void setNormal(btManifoldPoint& point, const btVector3& normal, btScalar distance) {
        const btVector3 inward = isFirst ? -normal : normal;
        const btVector3 onBall = ball.getWorldTransform().getOrigin() + inward * getRadius();
        const btVector3 onSurface = onBall + inward * distance;
        point.m_positionWorldOnA = isFirst ? onBall : onSurface;
        point.m_positionWorldOnB = isFirst ? onSurface : onBall;
        point.m_normalWorldOnB = normal;
        point.setDistance(distance);
    }

    btPersistentManifold& manifold;
    const bool isFirst;
    const btCollisionObject& ball;
    const btCollisionObject& other;
    const bool isThere;
};

} // namespace

void mendBallContacts(btPersistentManifold& manifold) {
    BallSide side(manifold);
    if (side.hasBall() && manifold.getNumContacts() > 0) {
        side.keepNearest();
        side.centre();
        side.straighten();
    }
}

} // namespace tessarin::dynamics::bullet
