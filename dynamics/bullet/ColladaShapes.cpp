#include <dynamics/bullet/ColladaShapes.h>

#include <dynamics/bullet/ColladaMaterials.h>
#include <dynamics/bullet/ColladaNodes.h>
#include <dynamics/bullet/ColladaNumbers.h>
#include <dynamics/bullet/RoundMesh.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

namespace tessarin::dynamics::bullet::collada {

namespace {

using Geometry = decltype(Shape::geometry);

/// Sizes that a body can have in single precision without its mass or inertia running out of range.
bool isSize(double size) {
    return size > 1e-7 && size < 1e9;
}

/// The numbers of a child element; false if there aren't as many or if one is no size.
template <std::size_t count>
bool readSizes(const Element& shape, const char* tag, std::array<double, count>& sizes) {
    const Element* child = childOf(&shape, tag);
    if (!child || !readNumbers(child->text, sizes)) {
        return false;
    }
    for (const double size : sizes) {
        if (!isSize(size)) {
            return false;
        }
    }
    return true;
}

/// One radius for all around, or one along X and one along Z.
bool readRadius(const Element& shape, std::array<double, 2>& radius, const char* tag = "radius") {
    std::array<double, 1> round{};
    if (readSizes(shape, tag, round)) {
        radius = {round[0], round[0]};
        return true;
    }
    return readSizes(shape, tag, radius);
}

std::optional<Geometry> readBox(const Element& element) {
    Box box{};
    const Element* child = childOf(&element, "half_extents");
    if (!child || !readNumbers(child->text, box.halfExtents)) {
        return std::nullopt;
    }
    bool hasSize = false;
    for (double& half : box.halfExtents) {
        // Without thickness it can still be a floor.
        half = half >= 0 && half <= 1e-7 ? 0 : half;
        if (half != 0 && !isSize(half)) {
            return std::nullopt;
        }
        hasSize = hasSize || half != 0;
    }
    return hasSize ? std::optional<Geometry>(box) : std::nullopt;
}

std::optional<Geometry> readSphere(const Element& element) {
    std::array<double, 1> radius{};
    return readSizes(element, "radius", radius) ? std::optional<Geometry>(Sphere{radius[0]}) : std::nullopt;
}

std::optional<Geometry> readCylinder(const Element& element) {
    Cylinder cylinder{};
    std::array<double, 1> height{};
    const Element* child = childOf(&element, "height");
    const bool isDisc = child && readNumbers(child->text, height) && height[0] == 0;
    if (!readRadius(element, cylinder.radius) || !(isDisc || readSizes(element, "height", height))) {
        return std::nullopt;
    }
    cylinder.height = height[0];
    return cylinder;
}

std::optional<Geometry> readCapsule(const Element& element) {
    Capsule capsule{};
    const std::optional<double> height = numberIn(childOf(&element, "height"));
    // Without height a capsule is a ball.
    if (!readRadius(element, capsule.radius) || !height || !(*height == 0 || isSize(*height))) {
        return std::nullopt;
    }
    capsule.height = *height;
    return capsule;
}

/// The points of a tapered shape span it, so that it is read as a hull.
MeshShape spannedBy(const std::vector<Ring>& rings, unsigned corners) {
    return {std::make_shared<Mesh>(makeRoundMesh(rings, corners)), true};
}

/// As readRadius, or zero, which is the tip of a cone.
bool readTaperedRadius(const Element& shape, std::array<double, 2>& radius, const char* tag) {
    const Element* child = childOf(&shape, tag);
    std::array<double, 1> round{};
    const bool isTip = child && ((readNumbers(child->text, round) && round[0] == 0) ||
                                 (readNumbers(child->text, radius) && radius[0] == 0 && radius[1] == 0));
    return isTip || readRadius(shape, radius, tag);
}

std::optional<Geometry> readTapered(const Element& element, bool isCapsule) {
    std::array<double, 2> upper{};
    std::array<double, 2> lower{};
    std::array<double, 1> height{};
    if (!readTaperedRadius(element, upper, "radius1") || !readTaperedRadius(element, lower, "radius2") ||
        upper[0] + lower[0] == 0 || !readSizes(element, "height", height)) {
        return std::nullopt;
    }
    if (isCapsule) {
        return spannedBy(makeCapsuleRings(lower, upper, height[0], 6), 20);
    }
    return spannedBy({{-height[0] / 2, lower[0], lower[1]}, {height[0] / 2, upper[0], upper[1]}}, 40);
}

std::optional<Geometry> readTaperedCylinder(const Element& element) {
    return readTapered(element, false);
}

std::optional<Geometry> readTaperedCapsule(const Element& element) {
    return readTapered(element, true);
}

std::optional<Geometry> readPlane(const Element& element) {
    std::array<double, 4> n{};
    const Element* equation = childOf(&element, "equation");
    if (!equation || !readNumbers(equation->text, n)) {
        return std::nullopt;
    }
    const Vector3 normal = {n[0], n[1], n[2]};
    const double norm = length(normal);
    if (!(norm > 0) || !std::isfinite(norm) || !std::isfinite(n[3] / norm)) {
        return std::nullopt;
    }
    return Plane{normal * (1 / norm), n[3] / norm};
}

/// What a child of a shape says about its geometry.
struct GeometryReader {
    std::string_view tag;
    std::optional<Geometry> (*read)(const Element& element);
    const char* requirement;
};

constexpr GeometryReader analyticReaders[] = {
    {"box", readBox, "needs <half_extents> of three numbers above zero"},
    {"sphere", readSphere, "needs a <radius> above zero"},
    {"cylinder", readCylinder, "needs a <radius> of one or two numbers and a <height> above zero"},
    {"capsule", readCapsule, "needs a <radius> of one or two numbers above zero and a <height>"},
    {"tapered_cylinder", readTaperedCylinder,
     "needs a <radius1> and a <radius2> of one or two numbers, one of them above zero, and a <height>"},
    {"tapered_capsule", readTaperedCapsule,
     "needs a <radius1> and a <radius2> of one or two numbers, one of them above zero, and a <height>"},
    {"plane", readPlane, "needs an <equation> of four numbers with a normal"},
};

/// True if the child is a geometry, whether it can be used or not.
bool readGeometry(const Document& document, const Element& child, Meshes& meshes, std::optional<Geometry>& geometry) {
    const std::string_view tag = localTag(child);
    if (tag == "instance_geometry" || tag == "convex_mesh" || tag == "mesh") {
        if (const std::optional<MeshShape> mesh = meshes.read(child)) {
            geometry = *mesh;
        }
        return true;
    }
    for (const GeometryReader& reader : analyticReaders) {
        if (reader.tag == tag) {
            geometry = reader.read(child);
            if (!geometry) {
                document.complain(child, std::string(reader.requirement) + ", the shape is left out");
            }
            return true;
        }
    }
    return false;
}

bool isProperty(std::string_view tag) {
    for (const std::string_view property : {"hollow", "mass", "density", "instance_physics_material",
                                            "physics_material", "translate", "rotate", "extra"}) {
        if (tag == property) {
            return true;
        }
    }
    return false;
}

} // namespace

std::optional<Shape> readShape(const Document& document, const Element& element, Meshes& meshes) {
    std::optional<Geometry> geometry;
    bool hasGeometry = false;
    std::string unknown;
    for (const Element* child : childrenOf(&element)) {
        if (!hasGeometry && readGeometry(document, *child, meshes, geometry)) {
            hasGeometry = true;
        } else if (!isProperty(localTag(*child))) {
            unknown = child->tag;
        }
    }
    if (!hasGeometry) {
        document.complain(element, unknown.empty() ? "has no geometry and is left out"
                                                   : "<" + unknown + "> is no known geometry, the shape is left out");
    }
    if (!geometry) {
        return std::nullopt;
    }
    const auto numberOf = [&](const char* tag) {
        const std::optional<double> number = numberIn(childOf(&element, tag));
        if (!number && childOf(&element, tag)) {
            document.complain(*childOf(&element, tag), "is no number and is left out");
        }
        return number;
    };
    bool isHollow = false;
    readFlag(document, &element, "hollow", isHollow);
    return Shape{*geometry, placementOf(document, element),  numberOf("mass"), numberOf("density"),
                 isHollow,  readMaterial(document, &element)};
}

} // namespace tessarin::dynamics::bullet::collada
