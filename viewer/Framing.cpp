#include <viewer/Framing.h>

#include <osg/BoundingBox>
#include <osg/Drawable>
#include <osg/Transform>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tessarin::viewer {

namespace {

/// The boxes of all that is drawn, along the axes of the scene.
class BoxVisitor : public osg::NodeVisitor {
public:
    BoxVisitor() : osg::NodeVisitor(TRAVERSE_ACTIVE_CHILDREN) {}

    void apply(osg::Drawable& drawable) override {
        const osg::BoundingBox& own = drawable.getBoundingBox();
        if (!own.valid())
            return;
        const osg::Matrixd world = osg::computeLocalToWorld(getNodePath());
        osg::BoundingBoxd box;
        for (unsigned i = 0; i < 8; ++i)
            box.expandBy(osg::Vec3d(own.corner(i)) * world);
        if (box.valid())
            boxes.push_back(box);
    }

    std::vector<osg::BoundingBoxd> boxes;
};

bool isFlat(const osg::BoundingBoxd& box) {
    const osg::Vec3d size = box._max - box._min;
    const auto [least, most] = std::minmax({size.x(), size.y(), size.z()});
    return least < 0.25 * most;
}

/// Drops the flat boxes that leave something less than half as large when they go, the largest first.
void dropGrounds(std::vector<osg::BoundingBoxd>& boxes) {
    std::sort(boxes.begin(), boxes.end(), [](const auto& a, const auto& b) { return a.radius2() < b.radius2(); });
    std::vector<osg::BoundingBoxd> unions;
    osg::BoundingBoxd all;
    for (const osg::BoundingBoxd& box : boxes) {
        all.expandBy(box);
        unions.push_back(all);
    }
    while (boxes.size() > 1 && isFlat(boxes.back()) &&
           unions[boxes.size() - 2].radius() < 0.5 * unions[boxes.size() - 1].radius())
        boxes.pop_back();
}

/// Drops the boxes that are many times farther from the middle than half of all boxes are.
void dropStrays(std::vector<osg::BoundingBoxd>& boxes) {
    const auto median = [&](int axis) {
        std::vector<double> values;
        values.reserve(boxes.size());
        for (const osg::BoundingBoxd& box : boxes)
            values.push_back(box.center()[axis]);
        std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
        return values[values.size() / 2];
    };
    const osg::Vec3d middle(median(0), median(1), median(2));
    const auto reach = [&](const osg::BoundingBoxd& box) { return (box.center() - middle).length() + box.radius(); };
    std::sort(boxes.begin(), boxes.end(), [&](const auto& a, const auto& b) { return reach(a) < reach(b); });
    const double usual = reach(boxes[boxes.size() / 2]);
    while (reach(boxes.back()) > 10 * usual)
        boxes.pop_back();
}

} // namespace

osg::BoundingBoxd findSubject(osg::Node& scene) {
    BoxVisitor visitor;
    scene.accept(visitor);
    osg::BoundingBoxd subject;
    if (visitor.boxes.empty())
        return subject;
    dropStrays(visitor.boxes); // what has strayed far off would make a ground look small
    dropGrounds(visitor.boxes);
    dropStrays(visitor.boxes);
    for (const osg::BoundingBoxd& box : visitor.boxes)
        subject.expandBy(box);
    return subject;
}

double findDistance(const osg::BoundingBoxd& box, const osg::Vec3d& direction, const osg::Vec3d& up, double halfWidth,
                    double halfHeight) {
    osg::Vec3d right = up ^ direction;
    right.normalize();
    const osg::Vec3d above = direction ^ right;
    double distance = 0;
    for (unsigned i = 0; i < 8; ++i) {
        const osg::Vec3d corner = box.corner(i) - box.center();
        const double aside = std::max(std::abs(corner * right) / halfWidth, std::abs(corner * above) / halfHeight);
        distance = std::max(distance, corner * direction + aside);
    }
    return distance;
}

} // namespace tessarin::viewer
