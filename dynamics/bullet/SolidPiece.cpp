#include <dynamics/bullet/SolidPiece.h>

#include <dynamics/bullet/RoundMesh.h>

#include <logging/Logger.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace tessarin::dynamics::bullet {

namespace {

using logging::Logger;

/// How far a surface that stays where it is may reach. The square of a distance has to fit single precision.
constexpr double farthestReach = 1e15;

/// What stands in for no thickness at all, against how far the shape reaches: no more than a person would overlook, and
/// enough to tell one side from the other.
constexpr double plateThickness = 1e-5;

/// What single precision can hold of a body, its inertia included.
bool isUsableSize(double size) {
    return size > 1e-7 && size < 1e9;
}

/// The shell of a primitive under a map, from a fine mesh: in closed form there is none for what a stretch makes.
struct ShellMaker {
    Affine map;

    MassDistribution operator()(const collada::Box& box) const {
        const Vector3& h = box.halfExtents;
        // A prism of four corners has them on its axes, so it is turned and widened to the box.
        const Affine prism = {Matrix3{{{h[0], 0, h[0]}, {0, 1, 0}, {-h[2], 0, h[2]}}}, {0, 0, 0}};
        return shellOf({{-h[1], 1, 1}, {h[1], 1, 1}}, 4, map * prism);
    }

    MassDistribution operator()(const collada::Sphere& sphere) const {
        const double radius = sphere.radius;
        return shellOf(makeCapsuleRings({radius, radius}, {radius, radius}, 0, 24), 96, map);
    }

    MassDistribution operator()(const collada::Cylinder& cylinder) const {
        const double radius = cylinder.radius[0];
        return shellOf({{-cylinder.height / 2, radius, radius}, {cylinder.height / 2, radius, radius}}, 96, map);
    }

    MassDistribution operator()(const collada::Capsule& capsule) const {
        const double radius = capsule.radius[0];
        return shellOf(makeCapsuleRings({radius, radius}, {radius, radius}, capsule.height, 24), 96, map);
    }

    static MassDistribution shellOf(const std::vector<Ring>& rings, unsigned corners, const Affine& map) {
        const collada::Mesh mesh = makeRoundMesh(rings, corners);
        ShellMass shell;
        for (const auto& triangle : mesh.triangles) {
            shell.addTriangle(transformPoint(map, mesh.vertices[triangle[0]]),
                              transformPoint(map, mesh.vertices[triangle[1]]),
                              transformPoint(map, mesh.vertices[triangle[2]]));
        }
        return shell.get();
    }
};

class PieceMaker {
public:
    PieceMaker(const Affine& mapToBody, bool bodyIsDynamic, const Report& reporter)
        : map(mapToBody), dynamic(bodyIsDynamic), report(reporter) {}

    std::optional<SolidPiece> operator()(const collada::Box& box) const {
        Vector3 half = box.halfExtents;
        const auto [least, most] = std::minmax({half[0], half[1], half[2]});
        if (least == 0 && !canBeFlat()) {
            return std::nullopt;
        }
        for (double& each : half) {
            each = each == 0 ? plateThickness * most : each;
        }
        return makeAnalytic(collada::Box{half}, boxMass(half), map, false);
    }

    std::optional<SolidPiece> operator()(const collada::Sphere& sphere) const {
        return makeAnalytic(sphere, sphereMass(sphere.radius), map, true);
    }

    std::optional<SolidPiece> operator()(const collada::Cylinder& cylinder) const {
        const double radius = cylinder.radius[0];
        if (cylinder.height == 0 && !canBeFlat()) {
            return std::nullopt;
        }
        const double height = cylinder.height == 0 ? 2 * plateThickness * radius : cylinder.height;
        return makeAnalytic(collada::Cylinder{{radius, radius}, height}, cylinderMass(radius, height),
                            roundedMap(cylinder.radius), true);
    }

    std::optional<SolidPiece> operator()(const collada::Capsule& capsule) const {
        const double radius = capsule.radius[0];
        return makeAnalytic(collada::Capsule{{radius, radius}, capsule.height}, capsuleMass(radius, capsule.height),
                            roundedMap(capsule.radius), true);
    }

    std::optional<SolidPiece> operator()(const collada::Plane& plane) const {
        if (dynamic) {
            report(Logger::errorLevel, "a <plane> can't move, the shape is left out");
            return std::nullopt;
        }
        // Normals go by the inverse transposed map, which the cofactors are but for a factor.
        const Matrix3& m = map.linear;
        const Matrix3 cofactors = {cross(m[1], m[2]), cross(m[2], m[0]), cross(m[0], m[1])};
        const Vector3 normal = normalized(cofactors * plane.normal) * (determinant(m) < 0 ? -1 : 1);
        const Vector3 point = transformPoint(map, plane.normal * -plane.offset);
        if (!(length(normal) > 0.5) || !(length(point) < farthestReach)) {
            report(Logger::errorLevel, "a <plane> is out of range or scaled to nothing, the shape is left out");
            return std::nullopt;
        }
        return SolidPiece{collada::Plane{normal, -dot(normal, point)}, {}, {}, 0, false};
    }

    std::optional<SolidPiece> operator()(const collada::MeshShape& shape) const {
        collada::Mesh mesh = *shape.mesh;
        double reach = 0;
        for (Vector3& vertex : mesh.vertices) {
            vertex = transformPoint(map, vertex);
            reach = std::max(reach, length(vertex));
        }
        if (!(reach < farthestReach)) {
            report(Logger::errorLevel, "a mesh is too large for a body, the shape is left out");
            return std::nullopt;
        }
        if (!dynamic && !shape.convex && !mesh.triangles.empty()) {
            return SolidPiece{std::move(mesh), {}, {}, 0, false};
        }
        ConvexHull hull(mesh.vertices);
        if (!isUsableSize(hull.getLargestHalfExtent())) {
            report(Logger::errorLevel, "a mesh is too small or too large for a body, the shape is left out");
            return std::nullopt;
        }
        if (hull.isFlat()) {
            report(Logger::errorLevel, "the hull of a mesh is flat, it is taken for a thin plate");
        }
        if (dynamic && !shape.convex && isConcave(mesh, hull)) {
            report(Logger::infoLevel, "a concave mesh can't move as it is, its convex hull is taken");
        }
        const MassDistribution mass = hull.getMass();
        const MassDistribution shell = hull.getShell();
        const double size = std::max(hull.getSmallestHalfExtent(), 1e-3 * hull.getLargestHalfExtent());
        // A hull of that many corners is a tessellated round thing.
        const bool isRound = hull.getCornerCount() > 16;
        return SolidPiece{std::move(hull), mass, shell, size, isRound};
    }

private:
    /// Whether the body may have a shape without thickness, which is reported either way.
    bool canBeFlat() const {
        report(Logger::errorLevel, dynamic ? "a shape without thickness can't move, it is left out"
                                           : "a shape has no thickness, it is taken for a thin plate");
        return !dynamic;
    }

    /// With two radii, the round shape of the first one is stretched along Z.
    Affine roundedMap(const std::array<double, 2>& radius) const {
        return {map.linear * diagonal({1, 1, radius[1] / radius[0]}), map.translation};
    }

    std::optional<SolidPiece> makeAnalytic(const StretchedShape::Primitive& primitive, const MassDistribution& mass,
                                           const Affine& mapOfPrimitive, bool isRound) const {
        const PolarParts parts = polarPartsOf(mapOfPrimitive.linear);
        const Vector3 stretches = eigenOf(parts.stretch).values;
        const Vector3 half = StretchedShape(primitive, parts.stretch).getHalfExtents();
        const double smallest = *std::min_element(half.begin(), half.end());
        const double flattest = std::abs(*std::min_element(
            stretches.begin(), stretches.end(), [](double a, double b) { return std::abs(a) < std::abs(b); }));
        if (!isUsableSize(smallest) || !isUsableSize(*std::max_element(half.begin(), half.end())) ||
            !(flattest > 1e-7)) {
            report(Logger::errorLevel, "with the scale of its node a shape is too small or too large, it is left out");
            return std::nullopt;
        }
        return SolidPiece{SolidPiece::Analytic{primitive, {parts.rotation, mapOfPrimitive.translation}, parts.stretch},
                          transformed(mass, mapOfPrimitive), std::visit(ShellMaker{mapOfPrimitive}, primitive),
                          smallest, isRound};
    }

    /// A closed mesh that fills its hull is convex already.
    static bool isConcave(const collada::Mesh& mesh, const ConvexHull& hull) {
        SurfaceMass surface;
        for (const auto& triangle : mesh.triangles) {
            // From a place within, which keeps small solids far out from drowning in rounding.
            const Vector3& centre = hull.getMass().centre;
            surface.addTriangle(mesh.vertices[triangle[0]] - centre, mesh.vertices[triangle[1]] - centre,
                                mesh.vertices[triangle[2]] - centre);
        }
        return std::abs(surface.get().mass) < 0.98 * hull.getMass().mass;
    }

    Affine map;
    bool dynamic;
    const Report& report;
};

} // namespace

std::optional<SolidPiece> makeSolidPiece(const collada::Shape& shape, const Matrix3& scale, bool dynamic,
                                         const Report& report) {
    const Affine map = Affine{scale, {0, 0, 0}} * shape.placement;
    if (!isFinite(map) || !(length(map.translation) < farthestOffset)) {
        report(Logger::errorLevel, "the placement of a shape is out of range, it is left out");
        return std::nullopt;
    }
    std::optional<SolidPiece> piece = std::visit(PieceMaker(map, dynamic, report), shape.geometry);
    if (!piece || !dynamic) {
        return piece;
    }
    if (shape.mass && *shape.mass > 0) {
        piece->mass = withMass(piece->mass, *shape.mass);
    } else if (shape.mass) {
        report(Logger::errorLevel, "the mass of a shape isn't above zero, its volume is taken instead");
    } else if (shape.density && *shape.density > 0) {
        piece->mass = withMass(piece->mass, piece->mass.mass * *shape.density);
    } else if (shape.density) {
        report(Logger::errorLevel, "the density of a shape isn't above zero, 1 is taken instead");
    }
    if (shape.hollow && piece->shell.mass > 0) {
        piece->mass = withMass(piece->shell, piece->mass.mass);
    }
    return piece;
}

} // namespace tessarin::dynamics::bullet
