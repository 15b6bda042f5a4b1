#include <viewer/Standpoint.h>

#include <viewer/Framing.h>

#include <osg/ComputeBoundsVisitor>
#include <osg/Quat>
#include <osgUtil/IntersectionVisitor>
#include <osgUtil/LineSegmentIntersector>

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>

namespace tessarin::viewer {

namespace {

/// Who looks from the default side sees enough if it is this part of what moves.
constexpr double enough = 0.75;

/// Another side has to show so much more of it.
constexpr double gain = 0.1;

constexpr std::size_t mostSamples = 64;

osg::Vec3d normalized(osg::Vec3d vector) {
    vector.normalize();
    return vector;
}

Standpoint standAt(const osg::BoundingBoxd& box, const osg::Vec3d& direction, const osg::Vec3d& up, const Lens& lens) {
    const double distance = findDistance(box, direction, up, lens.halfWidth, lens.halfHeight);
    return {box.center() + direction * distance, box.center(), up, box.radius()};
}

/// The directions from which a scene may be looked at, the preferred ones first.
std::vector<osg::Vec3d> listDirections(const osg::Vec3d& up) {
    osg::Quat upright;
    upright.makeRotate(osg::Vec3d(0, 0, 1), up);
    std::vector<osg::Vec3d> directions;
    for (const double height : {0.383, 1.0, 2.5})
        for (const double turn : {0.0, 45.0, -45.0, 90.0, -90.0, 135.0, -135.0, 180.0}) {
            const osg::Vec3d level =
                osg::Quat(osg::DegreesToRadians(turn), osg::Vec3d(0, 0, 1)) * normalized(osg::Vec3d(-0.45, -1, 0));
            directions.push_back(upright * normalized(level + osg::Vec3d(0, 0, height)));
        }
    return directions;
}

/// Meets what doesn't move alone.
class FixedVisitor : public osgUtil::IntersectionVisitor {
public:
    FixedVisitor(osgUtil::Intersector& intersector, const std::set<const osg::Node*>& nodesToPass)
        : osgUtil::IntersectionVisitor(&intersector), passed(nodesToPass) {}

    void apply(osg::Transform& transform) override {
        if (passed.count(&transform) == 0)
            osgUtil::IntersectionVisitor::apply(transform);
    }

private:
    const std::set<const osg::Node*>& passed;
};

/// What moves in a scene, and what stands in the way of looking at it.
class Sight {
public:
    Sight(osg::Node& sceneToSee, const osg::BoundingBoxd& subjectToSee, const std::vector<osg::Transform*>& moversToSee)
        : scene(sceneToSee), subject(subjectToSee), movers(moversToSee.begin(), moversToSee.end()) {
        const std::size_t stride = moversToSee.size() / mostSamples + 1;
        for (std::size_t i = 0; i < moversToSee.size(); i += stride)
            addPlace(*moversToSee[i]);
    }

    bool hasPlaces() const { return !places.empty(); }
    const osg::BoundingBoxd& getBox() const { return box; }

    /// How much of what moves is in the picture and not hidden: all of it is 1.
    double partSeenFrom(const Standpoint& stand, const Lens& lens) {
        const osg::ref_ptr<osgUtil::IntersectorGroup> rays = new osgUtil::IntersectorGroup;
        for (const osg::Vec3d& place : places)
            if (isInPicture(place, stand, lens))
                rays->addIntersector(new osgUtil::LineSegmentIntersector(osgUtil::Intersector::MODEL, stand.eye, place,
                                                                         nullptr, osgUtil::Intersector::LIMIT_ONE));
        cast(*rays);
        const auto& all = rays->getIntersectors();
        const auto seen =
            std::count_if(all.begin(), all.end(), [](const auto& ray) { return !ray->containsIntersections(); });
        return static_cast<double>(seen) / static_cast<double>(places.size());
    }

    /// How far one can go from a place before meeting something that doesn't move.
    double findWay(const osg::Vec3d& from, const osg::Vec3d& direction, double farthest) {
        const osg::ref_ptr<osgUtil::LineSegmentIntersector> ray =
            new osgUtil::LineSegmentIntersector(osgUtil::Intersector::MODEL, from, from + direction * farthest, nullptr,
                                                osgUtil::Intersector::LIMIT_NEAREST);
        cast(*ray);
        return ray->containsIntersections() ? ray->getFirstIntersection().ratio * farthest : farthest;
    }

private:
    void addPlace(osg::Transform& mover) {
        osg::ComputeBoundsVisitor bounds(osg::NodeVisitor::TRAVERSE_ACTIVE_CHILDREN);
        mover.accept(bounds);
        const osg::MatrixList above =
            mover.getNumParents() > 0 ? mover.getParent(0)->getWorldMatrices(&scene) : osg::MatrixList{osg::Matrix()};
        if (!bounds.getBoundingBox().valid() || above.empty())
            return;
        osg::BoundingBoxd own;
        for (unsigned i = 0; i < 8; ++i)
            own.expandBy(osg::Vec3d(bounds.getBoundingBox().corner(i)) * above.front());
        if (!subject.contains(own.center()))
            return; // it has strayed far off
        places.push_back(own.center());
        box.expandBy(own);
    }

    void cast(osgUtil::Intersector& rays) {
        FixedVisitor visitor(rays, movers);
        scene.accept(visitor);
    }

    static bool isInPicture(const osg::Vec3d& place, const Standpoint& stand, const Lens& lens) {
        const osg::Vec3d inView = place * osg::Matrixd::lookAt(stand.eye, stand.centre, stand.up);
        return inView.z() < 0 && std::abs(inView.x()) <= -inView.z() * lens.halfWidth &&
               std::abs(inView.y()) <= -inView.z() * lens.halfHeight;
    }

    osg::Node& scene;
    const osg::BoundingBoxd subject;
    std::set<const osg::Node*> movers;
    std::vector<osg::Vec3d> places;
    osg::BoundingBoxd box;
};

/// The first of the standpoints, or the one that shows clearly more.
class Choice {
public:
    Choice(Sight& sightToUse, const Lens& lensToUse) : sight(sightToUse), lens(lensToUse) {}

    void consider(const Standpoint& stand) {
        const double part = sight.partSeenFrom(stand, lens);
        if (!best || part > bestPart + gain) {
            best = stand;
            bestPart = part;
        }
    }

    bool isGoodEnough() const { return bestPart >= enough; }
    const Standpoint& get() const { return *best; }

private:
    Sight& sight;
    const Lens& lens;
    std::optional<Standpoint> best;
    double bestPart = 0;
};

} // namespace

Standpoint standBefore(const osg::BoundingBoxd& subject, const Lens& lens, const osg::Vec3d& up) {
    const osg::BoundingBoxd box =
        subject.valid() && subject.radius() > 0 ? subject : osg::BoundingBoxd(-1, -1, -1, 1, 1, 1);
    return standAt(box, listDirections(up).front(), up, lens);
}

Standpoint findStandpoint(osg::Node& scene, const std::vector<osg::Transform*>& movers, const Lens& lens,
                          const osg::Vec3d& up) {
    const osg::BoundingBoxd subject = findSubject(scene);
    const Standpoint usual = standBefore(subject, lens, up);
    Sight sight(scene, subject, movers);
    if (!subject.valid() || !sight.hasPlaces())
        return usual;
    const std::vector<osg::Vec3d> directions = listDirections(up);
    Choice choice(sight, lens);
    choice.consider(usual);
    for (auto direction = std::next(directions.begin()); direction != directions.end() && !choice.isGoodEnough();
         ++direction)
        choice.consider(standAt(subject, *direction, up, lens));
    // Within walls, what moves is looked at from before the next wall.
    for (auto direction = directions.begin(); direction != directions.end() && !choice.isGoodEnough(); ++direction) {
        Standpoint within = standAt(sight.getBox(), *direction, up, lens);
        const double wanted = (within.eye - within.centre).length();
        within.eye =
            within.centre + *direction * std::min(wanted, 0.9 * sight.findWay(within.centre, *direction, wanted));
        choice.consider(within);
    }
    return choice.get();
}

} // namespace tessarin::viewer
