#include <dynamics/bullet/CollisionShapes.h>

#include <dynamics/bullet/BulletConversions.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessarin::dynamics::bullet {

namespace {

/// Meshes with more triangles don't fit the engine's compressed trees.
constexpr std::size_t maxCompressedTriangles = 1U << 20;

/// The engine's own shape where the stretch leaves the primitive one of its kind, else null.
struct AnalyticMaker {
    Vector3 factor;

    bool isUniform() const { return isEqual(factor[0], factor[1]) && isEqual(factor[0], factor[2]); }

    static bool isEqual(double a, double b) { return std::abs(a - b) <= 1e-6 * std::max(a, b); }

    std::unique_ptr<btConvexInternalShape> operator()(const collada::Box& box) const {
        return std::make_unique<btBoxShape>(toBullet(
            Vector3{box.halfExtents[0] * factor[0], box.halfExtents[1] * factor[1], box.halfExtents[2] * factor[2]}));
    }

    std::unique_ptr<btConvexInternalShape> operator()(const collada::Sphere& sphere) const {
        return isUniform() ? std::make_unique<btSphereShape>(static_cast<btScalar>(sphere.radius * factor[0]))
                           : nullptr;
    }

    std::unique_ptr<btConvexInternalShape> operator()(const collada::Cylinder& cylinder) const {
        const double radius = cylinder.radius[0] * factor[0];
        return isEqual(factor[0], factor[2]) ? std::make_unique<btCylinderShape>(
                                                   toBullet(Vector3{radius, cylinder.height / 2 * factor[1], radius}))
                                             : nullptr;
    }

    std::unique_ptr<btConvexInternalShape> operator()(const collada::Capsule& capsule) const {
        return isUniform() ? std::make_unique<btCapsuleShape>(static_cast<btScalar>(capsule.radius[0] * factor[0]),
                                                              static_cast<btScalar>(capsule.height * factor[1]))
                           : nullptr;
    }
};

class ShapeMaker {
public:
    ShapeMaker(const Affine& bodyToFrame, double pieceSize, BodyShape& ownerOfData)
        : toFrame(bodyToFrame), margin(marginFor(pieceSize)), body(ownerOfData) {}

    PlacedShape operator()(const SolidPiece::Analytic& analytic) const {
        const Affine place = toFrame * analytic.frame;
        std::unique_ptr<btConvexInternalShape> shape;
        if (isDiagonal(analytic.stretch)) {
            const Vector3 factor = {std::abs(analytic.stretch[0][0]), std::abs(analytic.stretch[1][1]),
                                    std::abs(analytic.stretch[2][2])};
            shape = std::visit(AnalyticMaker{factor}, analytic.primitive);
        }
        if (!shape) {
            shape = std::make_unique<StretchedShape>(analytic.primitive, analytic.stretch);
        }
        // Balls and capsules are margin all through.
        if (shape->getShapeType() != SPHERE_SHAPE_PROXYTYPE && shape->getShapeType() != CAPSULE_SHAPE_PROXYTYPE) {
            shape->setMargin(static_cast<btScalar>(margin));
        }
        return {std::move(shape), place};
    }

    PlacedShape operator()(const collada::Plane& plane) const {
        const Vector3 normal = toFrame.linear * plane.normal;
        const Vector3 point = transformPoint(toFrame, plane.normal * -plane.offset);
        return {std::make_unique<btStaticPlaneShape>(toBullet(normal), static_cast<btScalar>(dot(normal, point))), {}};
    }

    PlacedShape operator()(const ConvexHull& hull) const { return {hull.makeShape(toFrame, margin), {}}; }

    PlacedShape operator()(const collada::Mesh& mesh) const {
        auto data = std::make_unique<BodyShape::Triangles>();
        for (const Vector3& vertex : mesh.vertices) {
            for (const double coordinate : transformPoint(toFrame, vertex)) {
                data->vertices.push_back(static_cast<float>(coordinate));
            }
        }
        for (const auto& triangle : mesh.triangles) {
            for (const unsigned index : triangle) {
                data->indices.push_back(static_cast<int>(index));
            }
        }
        btIndexedMesh part;
        part.m_numTriangles = static_cast<int>(mesh.triangles.size());
        part.m_triangleIndexBase = reinterpret_cast<const unsigned char*>(data->indices.data());
        part.m_triangleIndexStride = 3 * sizeof(int);
        part.m_numVertices = static_cast<int>(mesh.vertices.size());
        part.m_vertexBase = reinterpret_cast<const unsigned char*>(data->vertices.data());
        part.m_vertexStride = 3 * sizeof(float);
        part.m_vertexType = PHY_FLOAT;
        data->interface.addIndexedMesh(part, PHY_INTEGER);
        auto shape =
            std::make_unique<btBvhTriangleMeshShape>(&data->interface, mesh.triangles.size() < maxCompressedTriangles);
        // A surface has no inside to hide a margin in, and bodies should lie on it.
        shape->setMargin(0);
        body.triangles.push_back(std::move(data));
        return {std::move(shape), {}};
    }

private:
    Affine toFrame;
    double margin;
    BodyShape& body;
};

} // namespace

double marginFor(double size) {
    return 0.04 * size;
}

PlacedShape makeCollisionShape(const SolidPiece& piece, const Affine& toFrame, BodyShape& body) {
    return std::visit(ShapeMaker(toFrame, piece.size, body), piece.geometry);
}

} // namespace tessarin::dynamics::bullet
