#include <tests/viewer/ViewerTest.h>

#include <viewer/Framing.h>
#include <viewer/Standpoint.h>
#include <viewer/Upward.h>

#include <dynamics/bullet/BulletDynamicsWorld.h>

#include <gtest/gtest.h>
#include <osg/Group>
#include <osg/MatrixTransform>
#include <osg/ShapeDrawable>
#include <osg/Switch>
#include <osgUtil/IntersectionVisitor>
#include <osgUtil/LineSegmentIntersector>

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
    const osg::Vec3d eye = box.center() + direction * findDistance(box, direction, {0, 0, 1}, halfWidth, halfHeight);
    const osg::Matrixd view = osg::Matrixd::lookAt(eye, box.center(), osg::Vec3d(0, 0, 1));
    double widest = 0;
    for (unsigned i = 0; i < 8; ++i) {
        const osg::Vec3d corner = box.corner(i) * view;
        widest = std::max(
            {widest, std::abs(corner.x() / corner.z()) / halfWidth, std::abs(corner.y() / corner.z()) / halfHeight});
    }
    EXPECT_NEAR(widest, 1, 1e-9);
}

/// Whether a ray from the eye meets the node first, within the picture.
bool isSeen(osg::MatrixTransform& scene, osg::Node& node, const Standpoint& stand, const Lens& lens) {
    const osg::Vec3d middle = node.getBound().center() * scene.getMatrix();
    const osg::ref_ptr<osgUtil::LineSegmentIntersector> ray = new osgUtil::LineSegmentIntersector(stand.eye, middle);
    osgUtil::IntersectionVisitor visitor(ray);
    scene.accept(visitor);
    const osg::Vec3d inView = middle * osg::Matrixd::lookAt(stand.eye, stand.centre, stand.up);
    const auto& path = ray->containsIntersections() ? ray->getFirstIntersection().nodePath : osg::NodePath{&node};
    return std::find(path.begin(), path.end(), &node) != path.end() && inView.z() < 0 &&
           std::abs(inView.x() / inView.z()) < lens.halfWidth && std::abs(inView.y() / inView.z()) < lens.halfHeight;
}

TEST(FramingTest, TheFirstViewIsUprightAndShowsWhatMoves) {
    // Turned so that +Z comes to be each of the axes, and one askew.
    const osg::Vec3d ups[] = {{0, 0, 1}, {0, 0, -1}, {0, 1, 0}, {0, -1, 0}, {1, 0, 0}, {-1, 0, 0}, {1, -2, 3}};
    // Centres and sizes; the last of all is far too large for a subject, and the third set is closed all around.
    const std::vector<std::pair<osg::Vec3, osg::Vec3>> walls[] = {
        {},
        {{{-4, 0, 2}, {0.5f, 8, 10}}, {{0, -4, 2}, {8, 0.5f, 10}}},
        {{{-4, 0, 2}, {0.5f, 8, 10}},
         {{0, -4, 2}, {8, 0.5f, 10}},
         {{4, 0, 2}, {0.5f, 8, 10}},
         {{0, 4, 2}, {8, 0.5f, 10}},
         {{0, 0, 7}, {8, 8, 0.5f}}},
        {{{0, 0, 5}, {8, 8, 0.5f}}},
        {{{0, 0, -2}, {500, 500, 1}}},
    };
    for (osg::Vec3d up : ups)
        for (const auto& set : walls)
            for (const double size : {0.01, 1.0, 1000.0}) {
                SCOPED_TRACE(testing::Message() << "up " << up.x() << ' ' << up.y() << ' ' << up.z() << ", "
                                                << &set - walls << " of " << size);
                up.normalize();
                const osg::ref_ptr<osg::MatrixTransform> scene = new osg::MatrixTransform(
                    osg::Matrixd::scale(size, size, size) * osg::Matrixd::rotate(osg::Vec3d(0, 0, 1), up));
                scene->addChild(makeBox({0, 0, -1}, {8, 8, 1}));
                for (const auto& [centre, extent] : set)
                    scene->addChild(makeBox(centre, extent));
                std::vector<osg::Transform*> movers;
                for (int i = 0; i < 4; ++i) {
                    const osg::ref_ptr<osg::MatrixTransform> mover =
                        new osg::MatrixTransform(osg::Matrixd::translate(i % 2 * 2 - 1, i / 2 * 2 - 1, 0.3 + 0.2 * i));
                    mover->addChild(makeBox({}, {1, 1, 1}));
                    scene->addChild(mover);
                    movers.push_back(mover);
                }
                const Lens lens = {0.4, 0.25};
                const Standpoint stand = findStandpoint(*scene, movers, lens, up);
                EXPECT_EQ(stand.up, up);
                EXPECT_GT((stand.eye - stand.centre) * up, 0);
                std::ptrdiff_t seen = 0;
                for (osg::Transform* const mover : movers)
                    seen += isSeen(*scene, *mover, stand, lens) ? 1 : 0;
                EXPECT_GE(seen, 3);
            }
}

TEST_F(ViewerTest, UpIsAgainstGravityOfWhateverDirection) {
    Scene scene(write("a.xml", "<AgentNode name='a'/>"));
    EXPECT_EQ(findUp(), osg::Vec3d(0, 0, 1));
    scene.getWorld().setGravity({0, -9.81, 0});
    EXPECT_EQ(findUp(), osg::Vec3d(0, 1, 0));
}

} // namespace
} // namespace tessarin::viewer
