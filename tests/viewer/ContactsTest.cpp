#include <tests/viewer/ViewerTest.h>

#include <viewer/FrameLoop.h>
#include <viewer/Glow.h>
#include <viewer/Scene.h>

#include <agent/AgentNode.h>
#include <agent/CollisionData.h>
#include <agent/RigidBodyComponent.h>
#include <dynamics/bullet/BulletDynamicsWorld.h>

#include <gmtl/VecOps.h>
#include <osg/Transform>

#include <cmath>
#include <functional>

namespace tessarin::viewer {

namespace {

using agent::AgentNode;

class CollisionListener : public agent::Component {
public:
    using Function = std::function<void(AgentNode& self, const agent::CollisionData&)>;

    explicit CollisionListener(Function functionToCall) : function(std::move(functionToCall)) {}
    const char* getClassName() override { return "CollisionListener"; }
    bool getSupportedEvents(std::list<agent::AgentEvent::_AgentEventEnum>&) override { return true; }
    void onCollision(agent::CollisionData& data) override { function(*getAgentNode(), data); }

private:
    Function function;
};

bool isBrick(AgentNode& agent) {
    return agent.getName().compare(0, 6, "brick_") == 0;
}

class ContactsTest : public ViewerTest {
protected:
    void run(int frames) {
        for (int frame = 0; frame < frames; ++frame)
            loop.frame(1.0 / 60);
    }

    int countFlashing() {
        int count = 0;
        for (AgentNode* child : root.getChildren())
            count += getGlow(*child->getOsgTransform(), Glow::FLASH).a() > 0 ? 1 : 0;
        return count;
    }

    void deleteAgent(const std::string& name) {
        AgentNode* const child = root.getChild(name);
        root.removeChild(child);
        delete child;
    }

    Scene scene{scenes / "tower.xml"};
    AgentNode& root = scene.getRoot();
    FrameLoop loop{scene};
};

TEST_F(ContactsTest, BothAgentsHearOfATouchFromTheirOwnSides) {
    AgentNode& ball = *root.getChild("ball");
    std::vector<agent::CollisionData> ofBall;
    std::vector<agent::CollisionData> ofBricks;
    std::vector<AgentNode*> bricks;
    ball.addComponent(new CollisionListener([&](AgentNode&, const agent::CollisionData& data) {
        if (isBrick(*data.other))
            ofBall.push_back(data);
    }));
    for (AgentNode* child : root.getChildren())
        if (isBrick(*child))
            child->addComponent(new CollisionListener([&](AgentNode& self, const agent::CollisionData& data) {
                if (data.other == &ball) {
                    ofBricks.push_back(data);
                    bricks.push_back(&self);
                }
            }));
    for (int frame = 0; frame < 60 && ofBall.empty(); ++frame)
        run(1);
    ASSERT_FALSE(ofBall.empty());
    ASSERT_EQ(ofBall.size(), ofBricks.size());
    double hardest = 0;
    for (std::size_t i = 0; i < ofBall.size(); ++i) {
        EXPECT_EQ(ofBall[i].other, bricks[i]);
        EXPECT_EQ(ofBall[i].impulse, ofBricks[i].impulse);
        EXPECT_EQ(ofBall[i].point, ofBricks[i].point);
        EXPECT_EQ(ofBall[i].normal, ofBricks[i].normal * -1.0);
        EXPECT_NEAR(gmtl::length(ofBall[i].normal), 1, 1e-6);
        EXPECT_LT(ofBall[i].normal[0], -0.5) << "the ball comes along +X and is pushed back";
        EXPECT_NEAR(ofBall[i].point[0], -1.3, 0.2);
        hardest = std::max(hardest, ofBall[i].impulse);
    }
    EXPECT_GT(hardest, 4 * 5) << "a brick of 4 kg that a ball at 10 m/s takes along";
}

TEST_F(ContactsTest, HooksMayEndBodiesAgentsAndComponents) {
    const std::size_t agents = root.getChildren().size();
    int ended = 0;
    root.getChild("ball")->addComponent(new CollisionListener([&](AgentNode& self, const agent::CollisionData& data) {
        if (!data.other)
            return;
        if (!isBrick(*data.other)) {
            return;
        }
        ++ended;
        if (ended % 3 == 0) {
            data.other->getRigidBody()->setBody(nullptr);
        } else if (ended % 3 == 1) {
            deleteAgent(data.other->getName());
        } else if (ended < 9) {
            data.other->getRigidBody()->getBody()->setUserData(nullptr);
        } else {
            AgentNode* const parent = self.getParent();
            parent->removeChild(&self);
            delete &self;
        }
    }));
    run(200);
    EXPECT_EQ(root.getChild("ball"), nullptr);
    EXPECT_GE(ended, 9);
    EXPECT_LT(root.getChildren().size(), agents - 3);
}

TEST_F(ContactsTest, WhatIsHitFlashesAndFadesAndWhatRestsDoesNot) {
    run(20);
    EXPECT_GT(countFlashing(), 2);
    EXPECT_EQ(getGlow(*root.getChild("ball")->getOsgTransform(), Glow::FLASH).a(), 0) << "it has no such component";
    run(580);
    EXPECT_EQ(countFlashing(), 0);

    scene.reload();
    AgentNode& fresh = scene.getRoot();
    fresh.getChild("ball")->getRigidBody()->setBody(nullptr);
    int flashes = 0;
    for (int frame = 0; frame < 300; ++frame) {
        run(1);
        for (AgentNode* child : fresh.getChildren())
            flashes += getGlow(*child->getOsgTransform(), Glow::FLASH).a() > 0 ? 1 : 0;
    }
    EXPECT_EQ(flashes, 0) << "the tower stands";
    scene.getWorld().setGravity(scene.getWorld().getGravity());
    agent::Component* const flash = fresh.getChild("brick_1_1")->getComponent("FlashComponent");
    ASSERT_NE(flash, nullptr);
    // One of the lowest, which bears nine courses.
    const auto strength = [&] { return getGlow(*fresh.getChild("brick_1_1")->getOsgTransform(), Glow::FLASH).a(); };
    run(10);
    EXPECT_EQ(strength(), 0) << "it wakes under the same load";

    flash->setAsString("seconds", "1");
    flash->setAsString("colour", "0 0.5 1");
    agent::CollisionData blow;
    blow.impulse = 4 * 1.7;
    flash->onCollision(blow);
    run(3);
    EXPECT_EQ(strength(), 0) << "a fall of a fifth of a second gives 1.96 m/s";
    blow.impulse = 4 * 20;
    flash->onCollision(blow);
    run(2);
    const float full = strength();
    run(30);
    EXPECT_NEAR(strength(), full / 2, 0.02);
    EXPECT_EQ(getGlow(*fresh.getChild("brick_1_1")->getOsgTransform(), Glow::FLASH).b(), 1);
    run(31);
    EXPECT_EQ(strength(), 0);
}

} // namespace

} // namespace tessarin::viewer
