#include <viewer/Framing.h>

#include <gtest/gtest.h>
#include <osg/Group>
#include <osg/ShapeDrawable>
#include <osg/Switch>

#include <cmath>

namespace tessarin::viewer {
namespace {

osg::ref_ptr<osg::Node> makeBox(const osg::Vec3& centre, const osg::Vec3& size) {
    return new osg::ShapeDrawable(new osg::Box(centre, size.x(), size.y(), size.z()));
}

TEST(FramingTest, LeavesOutGroundsAndStraysButNothingElse) {
    const osg::ref_ptr<osg::Group> scene = new osg::Group;
    EXPECT_FALSE(findSubject(*scene).valid());

    scene->addChild(makeBox({0, 0, -1}, {100, 100, 2}));
    EXPECT_NEAR(findSubject(*scene).xMax(), 50, 1e-6) << "a ground alone is the subject";

    scene->addChild(makeBox({0, 0, 4}, {8, 8, 8})); // a house
    scene->addChild(makeBox({7, 0, 0.5}, {1, 1, 1}));
    const osg::BoundingBoxd near = findSubject(*scene);
    EXPECT_NEAR(near.xMin(), -4, 1e-6);
    EXPECT_NEAR(near.xMax(), 7.5, 1e-6);
    EXPECT_NEAR(near.zMin(), 0, 1e-6);

    scene->addChild(makeBox({2000, 0, 0.5}, {1, 1, 1})); // fell off the edge of the world
    const osg::ref_ptr<osg::Switch> hidden = new osg::Switch;
    hidden->addChild(makeBox({30, 0, 0}, {1, 1, 1}), false);
    scene->addChild(hidden);
    EXPECT_NEAR(findSubject(*scene).xMax(), 7.5, 1e-6);
}

TEST(FramingTest, DistanceShowsEveryCornerAndTouchesOneEdge) {
    const osg::BoundingBoxd box(-3, -1, 0, 3, 1, 2);
    osg::Vec3d direction(-0.4, -1, 0.5);
    direction.normalize();
    const double halfWidth = 0.5, halfHeight = 0.3;
    const osg::Vec3d eye = box.center() + direction * findDistance(box, direction, halfWidth, halfHeight);
    const osg::Matrixd view = osg::Matrixd::lookAt(eye, box.center(), osg::Vec3d(0, 0, 1));
    double widest = 0;
    for (unsigned i = 0; i < 8; ++i) {
        const osg::Vec3d corner = box.corner(i) * view;
        widest = std::max(
            {widest, std::abs(corner.x() / corner.z()) / halfWidth, std::abs(corner.y() / corner.z()) / halfHeight});
    }
    EXPECT_NEAR(widest, 1, 1e-9);
}

} // namespace
} // namespace tessarin::viewer
