#include <tests/viewer/ViewerTest.h>

#include <viewer/Glow.h>

#include <agent/CollisionData.h>
#include <dynamics/bullet/BulletDynamicsWorld.h>

#include <gmtl/VecOps.h>
#include <osg/Transform>

#include <functional>

namespace tessarin::viewer {
namespace {

using agent::CollisionData;

/// Calls the function at each touch.
struct CollisionListener : agent::Component {
    explicit CollisionListener(std::function<void(AgentNode& self, const CollisionData&)> functionToCall)
        : function(std::move(functionToCall)) {}
    const char* getClassName() override { return "CollisionListener"; }
    bool getSupportedEvents(std::list<agent::AgentEvent::_AgentEventEnum>&) override { return true; }
    void onCollision(CollisionData& data) override { function(*getAgentNode(), data); }

    const std::function<void(AgentNode&, const CollisionData&)> function;
};

bool isBrick(const AgentNode* agent) {
    return agent && agent->getName().compare(0, 6, "brick_") == 0;
}

class ContactsTest : public ViewerTest {
protected:
    osg::Vec4 flashOf(AgentNode* agent) { return getGlow(*agent->getOsgTransform(), Glow::FLASH); }

    std::ptrdiff_t countFlashing() {
        const std::list<AgentNode*>& children = scene.getRoot().getChildren();
        return std::count_if(children.begin(), children.end(),
                             [&](AgentNode* child) { return flashOf(child).a() > 0; });
    }

    Scene scene{scenes / "tower.xml"};
    AgentNode& root = scene.getRoot();
};

TEST_F(ContactsTest, BothAgentsHearOfATouchFromTheirOwnSides) {
    AgentNode* const ball = root.getChild("ball");
    std::vector<CollisionData> ofBall, ofBricks;
    std::vector<AgentNode*> bricks;
    const auto hear = [&](AgentNode& self, const CollisionData& data) {
        if (&self == ball && isBrick(data.other))
            ofBall.push_back(data);
        if (data.other == ball) {
            ofBricks.push_back(data);
            bricks.push_back(&self);
        }
    };
    for (AgentNode* child : root.getChildren())
        if (child == ball || isBrick(child))
            child->addComponent(new CollisionListener(hear));
    for (int frame = 0; frame < 60 && ofBall.empty(); ++frame)
        runFrames(scene, 1);
    ASSERT_FALSE(ofBall.empty());
    ASSERT_EQ(ofBall.size(), ofBricks.size());
    double hardest = 0;
    for (std::size_t i = 0; i < ofBall.size(); ++i) {
        const CollisionData &mine = ofBall[i], &theirs = ofBricks[i];
        EXPECT_TRUE(mine.other == bricks[i] && mine.impulse == theirs.impulse && mine.point == theirs.point);
        EXPECT_EQ(mine.normal, (gmtl::Vec<double, 3>(theirs.normal * -1.0)));
        EXPECT_NEAR(gmtl::length(mine.normal), 1, 1e-6);
        EXPECT_LT(mine.normal[0], -0.5) << "the ball comes along +X and is pushed back";
        EXPECT_NEAR(mine.point[0], -1.3, 0.2);
        hardest = std::max(hardest, mine.impulse);
    }
    EXPECT_GT(hardest, 4 * 5) << "a brick of 4 kg that a ball at 10 m/s takes along";
}

TEST_F(ContactsTest, HooksMayEndBodiesAgentsAndComponents) {
    const std::size_t agents = root.getChildren().size();
    const auto end = [&](AgentNode* agent) {
        root.removeChild(agent);
        delete agent;
    };
    int ended = 0;
    root.getChild("ball")->addComponent(new CollisionListener([&](AgentNode& self, const CollisionData& data) {
        if (!isBrick(data.other))
            return;
        ++ended;
        if (ended % 3 == 0)
            data.other->getRigidBody()->setBody(nullptr);
        else if (ended % 3 == 1)
            end(data.other);
        else if (ended < 9)
            data.other->getRigidBody()->getBody()->setUserData(nullptr);
        else
            end(&self);
    }));
    runFrames(scene, 200);
    EXPECT_EQ(root.getChild("ball"), nullptr);
    EXPECT_GE(ended, 9);
    EXPECT_LT(root.getChildren().size(), agents - 3);
}

TEST_F(ContactsTest, WhatIsHitFlashesAndFadesAndWhatRestsDoesNot) {
    runFrames(scene, 20);
    EXPECT_GT(countFlashing(), 2);
    EXPECT_EQ(flashOf(root.getChild("ball")).a(), 0) << "it has no such component";
    runFrames(scene, 580);
    EXPECT_EQ(countFlashing(), 0);

    scene.reload();
    AgentNode* const brick = scene.getRoot().getChild("brick_1_1"); // one of the lowest, which bears nine courses
    scene.getRoot().getChild("ball")->getRigidBody()->setBody(nullptr);
    std::ptrdiff_t flashes = 0;
    for (int frame = 0; frame < 300; ++frame) {
        runFrames(scene, 1);
        flashes += countFlashing();
    }
    EXPECT_EQ(flashes, 0) << "the tower stands";
    scene.getWorld().setGravity(scene.getWorld().getGravity());
    runFrames(scene, 10);
    EXPECT_EQ(flashOf(brick).a(), 0) << "it wakes under the same load";

    agent::Component* const flash = brick->getComponent("FlashComponent");
    ASSERT_NE(flash, nullptr);
    flash->setAsString("seconds", "1");
    flash->setAsString("colour", "0 0.5 1");
    const auto hitWith = [&](double impulse) {
        CollisionData blow;
        blow.impulse = impulse;
        flash->onCollision(blow);
        runFrames(scene, 2);
        return flashOf(brick).a();
    };
    EXPECT_EQ(hitWith(4 * 1.7), 0) << "a fall of a fifth of a second gives 1.96 m/s";
    const float full = hitWith(4 * 20);
    runFrames(scene, 30);
    EXPECT_NEAR(flashOf(brick).a(), full / 2, 0.02);
    EXPECT_EQ(flashOf(brick).b(), 1);
    runFrames(scene, 31);
    EXPECT_EQ(flashOf(brick).a(), 0);
}

} // namespace
} // namespace tessarin::viewer
