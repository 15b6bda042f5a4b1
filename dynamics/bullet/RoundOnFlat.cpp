#include <dynamics/bullet/RoundOnFlat.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <new>

namespace tessarin::dynamics::bullet {

namespace {

/// The lines along the axis of a round body that may touch a plane first: those of a core, moved towards the plane by
/// its margin. Where it stands they are as long as it is high, and their lower ends count.
class Lines {
public:
    struct Line {
        btVector3 start;
        btVector3 end;
    };

    /// @param place of the shape.
    /// @param normal of the plane, in the frame that the place is in.
    Lines(const btCollisionShape& shape, const btTransform& place, const btVector3& normal) {
        if (shape.getShapeType() == CAPSULE_SHAPE_PROXYTYPE) {
            const auto& capsule = static_cast<const btCapsuleShape&>(shape);
            const btVector3 half(0, capsule.getHalfHeight(), 0);
            add(place, half, btVector3(0, 0, 0), normal * capsule.getRadius());
            return;
        }
        const auto& cylinder = static_cast<const btCylinderShape&>(shape);
        const btVector3 extents = cylinder.getHalfExtentsWithoutMargin();
        const btVector3 inBody = normal * place.getBasis();
        const btVector3 down(-inBody.x(), 0, -inBody.z());
        const btScalar slope = down.length();
        // Where it stands, any points of the rim will do, as long as they are the same in each step.
        const btVector3 out = (slope > upright ? down / slope : btVector3(1, 0, 0)) * extents.x();
        const btVector3 aside(-out.z(), 0, out.x());
        for (const btVector3& rim : {out, -out, aside, -aside}) {
            add(place, btVector3(0, extents.y(), 0), rim, normal * cylinder.getMargin());
        }
    }

    const Line* begin() const { return lines.data(); }
    const Line* end() const { return lines.data() + count; }

private:
    static constexpr btScalar upright = 1e-3F;

    void add(const btTransform& place, const btVector3& half, const btVector3& rim, const btVector3& margin) {
        lines[count++] = {place(rim - half) - margin, place(rim + half) - margin};
    }

    std::array<Line, 4> lines;
    std::size_t count = 0;
};

/// A plane with what bounds it: the half-spaces that a point of the face is in.
struct Face {
    struct Bound {
        btVector3 outward;
        btScalar offset = 0;
    };

    btVector3 normal;
    btScalar offset = 0;
    std::array<Bound, 4> bounds = {};
    std::size_t boundCount = 0;

    void addBound(const btVector3& outward, btScalar boundOffset) { bounds[boundCount++] = {outward, boundOffset}; }

    btScalar distanceTo(const btVector3& point) const { return normal.dot(point) - offset; }

    /// Cuts off what isn't over the face.
    /// @return whether anything is left.
    bool clip(Lines::Line& line) const {
        const btVector3 start = line.start;
        const btVector3 way = line.end - start;
        btScalar from = 0;
        btScalar to = 1;
        for (std::size_t i = 0; i < boundCount; ++i) {
            const btScalar room = bounds[i].offset - bounds[i].outward.dot(start);
            const btScalar speed = bounds[i].outward.dot(way);
            if (std::abs(speed) <= SIMD_EPSILON * way.length()) {
                to = room < 0 ? btScalar(-1) : to;
            } else if (speed > 0) {
                to = std::min(to, room / speed);
            } else {
                from = std::max(from, room / speed);
            }
        }
        line = {start + way * from, start + way * to};
        return from <= to;
    }
};

Face faceOf(const btStaticPlaneShape& plane) {
    Face face;
    face.normal = plane.getPlaneNormal();
    face.offset = plane.getPlaneConstant();
    return face;
}

/// The side of a box that a convex body is farthest in front of.
Face faceOf(const btBoxShape& box, const btConvexShape& other, const btTransform& place) {
    const btVector3 half = box.getHalfExtentsWithMargin();
    Face face;
    btScalar farthest = -BT_LARGE_FLOAT;
    for (int i = 0; i < 6; ++i) {
        btVector3 normal(0, 0, 0);
        normal[i / 2] = i % 2 == 0 ? btScalar(1) : btScalar(-1);
        const btVector3 deepest = place(other.localGetSupportingVertex(-normal * place.getBasis()));
        const btScalar distance = normal.dot(deepest) - half[i / 2];
        if (distance > farthest) {
            farthest = distance;
            face.normal = normal;
            face.offset = half[i / 2];
        }
    }
    for (int axis = 0; axis < 3; ++axis) {
        btVector3 outward(0, 0, 0);
        outward[axis] = 1;
        if (face.normal[axis] == 0) {
            face.addBound(outward, half[axis]);
            face.addBound(-outward, half[axis]);
        }
    }
    return face;
}

Face faceOf(const btCollisionShape& flat, const btConvexShape& round, const btTransform& place) {
    if (flat.getShapeType() == STATIC_PLANE_PROXYTYPE) {
        return faceOf(static_cast<const btStaticPlaneShape&>(flat));
    }
    return faceOf(static_cast<const btBoxShape&>(flat), round, place);
}

} // namespace

RoundOnFlat::CreateFunc::CreateFunc(bool isFlatFirst, btCollisionAlgorithmCreateFunc& generalAlgorithm)
    : general(generalAlgorithm) {
    m_swapped = isFlatFirst;
}

btCollisionAlgorithm* RoundOnFlat::CreateFunc::CreateCollisionAlgorithm(btCollisionAlgorithmConstructionInfo& info,
                                                                        const btCollisionObjectWrapper* first,
                                                                        const btCollisionObjectWrapper* second) {
    void* memory = info.m_dispatcher1->allocateCollisionAlgorithm(sizeof(RoundOnFlat));
    return new (memory) RoundOnFlat(info, first, second, m_swapped, general);
}

RoundOnFlat::RoundOnFlat(const btCollisionAlgorithmConstructionInfo& info, const btCollisionObjectWrapper* first,
                         const btCollisionObjectWrapper* second, bool flatIsFirst,
                         btCollisionAlgorithmCreateFunc& generalAlgorithm)
    : btCollisionAlgorithm(info), manifold(info.m_manifold), ownsManifold(!info.m_manifold), isFlatFirst(flatIsFirst),
      general(generalAlgorithm) {
    if (ownsManifold) {
        manifold = m_dispatcher->getNewManifold(first->getCollisionObject(), second->getCollisionObject());
    }
}

RoundOnFlat::~RoundOnFlat() {
    if (search) {
        search->~btCollisionAlgorithm();
        m_dispatcher->freeCollisionAlgorithm(search);
    }
    if (ownsManifold) {
        m_dispatcher->releaseManifold(manifold);
    }
}

void RoundOnFlat::processCollision(const btCollisionObjectWrapper* first, const btCollisionObjectWrapper* second,
                                   const btDispatcherInfo& info, btManifoldResult* result) {
    const btCollisionObjectWrapper& flat = isFlatFirst ? *first : *second;
    const btCollisionObjectWrapper& round = isFlatFirst ? *second : *first;
    const btTransform roundInFlat = flat.getWorldTransform().inverseTimes(round.getWorldTransform());
    const auto& shape = static_cast<const btConvexShape&>(*round.getCollisionShape());
    const Face face = faceOf(*flat.getCollisionShape(), shape, roundInFlat);
    const btVector3 normal = flat.getWorldTransform().getBasis() * face.normal;
    const btScalar threshold = manifold->getContactBreakingThreshold();
    result->setPersistentManifold(manifold);
    std::array<btVector3, 8> points;
    std::size_t count = 0;
    bool isAnyNear = false;
    for (Lines::Line line : Lines(shape, roundInFlat, face.normal)) {
        isAnyNear = isAnyNear || face.distanceTo(line.start) < threshold || face.distanceTo(line.end) < threshold;
        if (!face.clip(line)) {
            continue;
        }
        for (const btVector3& point : {line.start, line.end}) {
            if (face.distanceTo(point) < threshold) {
                points[count++] = point;
            }
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        const btScalar distance = face.distanceTo(points[i]);
        const btVector3 onRound = flat.getWorldTransform()(points[i]);
        result->addContactPoint(isFlatFirst ? -normal : normal, isFlatFirst ? onRound : onRound - normal * distance,
                                distance);
    }
    if (isAnyNear && count == 0) {
        searchGenerally(first, second, info, result);
    }
    if (ownsManifold) {
        result->refreshContactPoints();
    }
}

void RoundOnFlat::searchGenerally(const btCollisionObjectWrapper* first, const btCollisionObjectWrapper* second,
                                  const btDispatcherInfo& info, btManifoldResult* result) {
    if (!search) {
        btCollisionAlgorithmConstructionInfo construction(m_dispatcher, 0);
        construction.m_manifold = manifold;
        search = general.CreateCollisionAlgorithm(construction, first, second);
    }
    search->processCollision(first, second, info, result);
}

btScalar RoundOnFlat::calculateTimeOfImpact(btCollisionObject* /*first*/, btCollisionObject* /*second*/,
                                            const btDispatcherInfo& /*info*/, btManifoldResult* /*result*/) {
    return 1; // the engine asks for none
}

void RoundOnFlat::getAllContactManifolds(btManifoldArray& manifolds) {
    if (ownsManifold) {
        manifolds.push_back(manifold);
    }
}

} // namespace tessarin::dynamics::bullet
