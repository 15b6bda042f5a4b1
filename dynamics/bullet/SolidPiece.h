#pragma once

#include <dynamics/bullet/ColladaPhysics.h>
#include <dynamics/bullet/ConvexHull.h>
#include <dynamics/bullet/MassDistribution.h>
#include <dynamics/bullet/StretchedShape.h>

#include <functional>
#include <optional>
#include <string>
#include <variant>

namespace tessarin::dynamics::bullet {

/// Takes what there is to say about a body and the log level of that.
using Report = std::function<void(int level, const std::string& text)>;

/// How far from its node a shape or a mass may be: what is farther out leaves no digits for where the body is.
constexpr double farthestOffset = 1e9;

/// One shape of a body with the scale of its node applied, in the node's unscaled frame, with its share of the mass.
struct SolidPiece {
    /// A shape with a frame of its own, and what the scale does to it in that frame.
    struct Analytic {
        StretchedShape::Primitive primitive;
        Affine frame;
        Matrix3 stretch;
    };

    std::variant<Analytic, collada::Plane, collada::Mesh, ConvexHull> geometry;

    MassDistribution mass;

    /// How the mass is spread where all of it is in the surface.
    MassDistribution shell;

    /// Half of what it measures where it is narrowest.
    double size = 0;

    /// Rolls, if nothing stops it.
    bool isRound = false;
};

/// Nothing, with one report, if the shape can't be used in such a body. A mesh becomes its hull where the body moves or
/// the file wants it, else it stays the surface that it is.
std::optional<SolidPiece> makeSolidPiece(const collada::Shape& shape, const Matrix3& scale, bool dynamic,
                                         const Report& report);

} // namespace tessarin::dynamics::bullet
