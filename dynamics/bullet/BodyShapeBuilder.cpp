#include <dynamics/bullet/BodyShapeBuilder.h>

#include <dynamics/bullet/BulletConversions.h>
#include <dynamics/bullet/CollisionShapes.h>

#include <logging/Logger.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace tessarin::dynamics::bullet {

namespace {

using logging::Logger;
using Analytic = SolidPiece::Analytic;

/// What single precision can hold of masses.
bool isUsableMass(double mass) {
    return mass > 1e-12 && mass < 1e12;
}

std::vector<SolidPiece> makePieces(const collada::RigidBody& description, const Matrix3& scale, const Report& report) {
    std::vector<SolidPiece> pieces;
    for (const collada::Shape& shape : description.shapes) {
        if (std::optional<SolidPiece> piece = makeSolidPiece(shape, scale, description.dynamic, report)) {
            pieces.push_back(std::move(*piece));
        }
    }
    return pieces;
}

double chooseMass(const collada::RigidBody& description, double massOfShapes, const Report& report) {
    if (description.mass && isUsableMass(*description.mass)) {
        return *description.mass;
    }
    const double mass = std::clamp(massOfShapes, 1e-12, 1e12);
    if (description.mass) {
        report(Logger::errorLevel, "a moving body needs a mass above zero, that of its shapes is taken");
    }
    return mass;
}

/// The frame of a body that is one analytic shape only, so that this needs no place of its own.
Affine frameOfOnly(const std::vector<SolidPiece>& pieces) {
    const auto* analytic = pieces.size() == 1 ? std::get_if<Analytic>(&pieces[0].geometry) : nullptr;
    return analytic ? analytic->frame : Affine();
}

/// A frame that is there already is kept if it will do: turning a box into its own axes again costs digits.
Matrix3 principalAxes(const Matrix3& inertia, const Matrix3& known) {
    return isDiagonal(transposed(known) * inertia * known) ? known : eigenOf(inertia).vectors;
}

void setMass(const collada::RigidBody& description, const Matrix3& scale, const std::vector<SolidPiece>& pieces,
             const Report& report, BodyShape& body) {
    MassDistribution sum;
    for (const SolidPiece& piece : pieces) {
        sum = sum.mass > 0 ? sum + piece.mass : piece.mass;
    }
    body.mass = chooseMass(description, sum.mass, report);
    const MassDistribution whole = withMass(sum, body.mass);
    const auto momentsAlong = [](const Matrix3& moments, const Matrix3& axes) {
        const Matrix3 turned = transposed(axes) * moments * axes;
        return Vector3{turned[0][0], turned[1][1], turned[2][2]};
    };
    Matrix3 axes = identityMatrix3;
    const Affine frame = Affine{scale, {0, 0, 0}} * description.massFrame.value_or(Affine());
    const bool isFrameUsable = isFinite(frame) && length(frame.translation) < farthestOffset;
    if (description.massFrame && !isFrameUsable) {
        report(Logger::errorLevel, "the <mass_frame> is out of range, that of its shapes is taken");
    }
    if (description.massFrame && isFrameUsable) {
        axes = polarPartsOf(frame.linear).rotation;
        body.massFrame = {axes, frame.translation};
    } else {
        // Given moments are about the axes of the node where no frame says otherwise.
        axes = description.inertia ? axes : principalAxes(whole.inertia(), frameOfOnly(pieces).linear);
        body.massFrame = {axes, whole.centre};
    }
    const Vector3& given = description.inertia.value_or(Vector3{0, 0, 0});
    if (given[0] > 0 && given[1] > 0 && given[2] > 0) {
        body.inertia = given;
    } else {
        if (description.inertia) {
            report(Logger::errorLevel, "a moving body needs an <inertia> above zero, that of its shapes is taken");
        }
        body.inertia = momentsAlong(whole.inertia(), axes);
    }
    for (double& moment : body.inertia) {
        // No solid is easier to turn about one axis than this; it also keeps needles from spinning out of range.
        moment = std::max(moment, 1e-4 * *std::max_element(body.inertia.begin(), body.inertia.end()));
    }
}

bool isIdentity(const Affine& place, double size) {
    const Matrix3& m = place.linear;
    return isDiagonal(m) && m[0][0] > 0.5 && m[1][1] > 0.5 && m[2][2] > 0.5 && length(place.translation) <= 1e-7 * size;
}

void joinParts(const std::vector<Affine>& places, bool hasTree, BodyShape& body) {
    if (places.size() == 1 && isIdentity(places[0], body.size)) {
        return;
    }
    auto compound = std::make_unique<btCompoundShape>(hasTree, static_cast<int>(places.size()));
    for (std::size_t i = 0; i < places.size(); ++i) {
        compound->addChildShape(toBullet(places[i]), body.parts[i].get());
    }
    body.parts.push_back(std::move(compound));
}

} // namespace

BodyShape buildBodyShape(const collada::RigidBody& description, const Matrix3& scale, const Report& report) {
    BodyShape body;
    const std::vector<SolidPiece> pieces = makePieces(description, scale, report);
    if (pieces.empty()) {
        return body;
    }
    if (description.dynamic) {
        setMass(description, scale, pieces, report, body);
    } else {
        body.massFrame = frameOfOnly(pieces);
    }
    std::vector<Affine> places;
    bool hasPlane = false;
    for (const SolidPiece& piece : pieces) {
        PlacedShape placed = makeCollisionShape(piece, rigidInverse(body.massFrame), body);
        places.push_back(placed.place);
        body.parts.push_back(std::move(placed.shape));
        body.size = body.size > 0 ? std::min(body.size, piece.size) : piece.size;
        body.isRound = body.isRound || piece.isRound;
        hasPlane = hasPlane || std::holds_alternative<collada::Plane>(piece.geometry);
    }
    // A plane has no bounds that a tree could sort by.
    joinParts(places, !hasPlane, body);
    return body;
}

} // namespace tessarin::dynamics::bullet
