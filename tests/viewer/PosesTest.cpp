// Whatever a host does with bodies, components and agents in between, an UPDATE leaves every agent of the tree where
// its body is, and costs nothing where body and agent have come to rest.

#include <tests/bullet/ColladaScene.h>

#include <agent/AgentNode.h>
#include <agent/RigidBodyComponent.h>

#include <gmtl/MatrixOps.h>
#include <osg/MatrixTransform>

#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace tessarin::viewer {
namespace {

using agent::AgentEvent;
using agent::AgentNode;
using agent::RigidBodyComponent;
using dynamics::DynamicsBody;
using dynamics::bullet::LoadedWorld;

/// Falling boxes and a ground, each with an agent, and agents that only see what others have.
class Bodies {
public:
    explicit Bodies(unsigned seed) : generator(seed) {
        dynamics::bullet::ColladaScene scene;
        scene.add("ground", "", dynamics::bullet::ground);
        scene.add("wall", "<translate>0 9 1</translate>", dynamics::bullet::fixed + dynamics::bullet::box("1 1 1"));
        for (int i = 0; i < 4; ++i)
            scene.add("box" + std::to_string(i), dynamics::bullet::translate(0, 0, 1.2 * i + 1),
                      dynamics::bullet::box("0.5 0.5 0.5"));
        loaded.load(scene.text());
        for (auto& body : loaded.bodies) {
            agents.push_back(std::make_unique<AgentNode>(body->getName()));
            holders.push_back(new RigidBodyComponent);
            holders.back()->setName("RigidBodyComponent");
            if (below(2) == 0)
                holders.back()->setBody(body.release());
            agents.back()->addComponent(holders.back());
            if (body)
                holders.back()->setBody(body.release());
            root.addChild(agents.back().get());
        }
        loaded.bodies.clear();
    }

    ~Bodies() {
        for (const auto& agent : agents)
            root.removeChild(agent.get());
    }

    void act() {
        const std::function<void()> actions[] = {
            [&] {
                loaded.run(std::vector<int>{1, 4, 30, 600}[below(4)]);
            },
            [&] {
                for (DynamicsBody* const body : root.getDynamicsBodies())
                    for (unsigned i = below(3); body && i > 0 && body->isActive(); --i)
                        LoadedWorld::poseOf(*body);
            },
            [&] { (below(2) == 0 ? agentAt() : root).magicMove(place(0.5)); },
            [&] { bodyAt().setPosition(place(2)); },
            [&] { bodyAt().setRotation(gmtl::Quat<double>(below(3), below(3), below(3), 1)); },
            [&] { bodyAt().setMatrix(LoadedWorld::poseOf(bodyAt())); },
            [&] {
                agentAt().modifyWithXml("<AgentNode><Transform><Translate>1 2 3</Translate><Rotate>0 0 0 1</Rotate>"
                                        "</Transform><Component class='RigidBodyComponent' name='RigidBodyComponent'/>"
                                        "</AgentNode>");
            },
            [&] { root.removeChild(&agentAt()); },
            [&] { replaceTransform(agentAt()); },
            [&] { moveComponent(); },
            [&] { moveBody(); },
            [&] { agentAt().sendEvent(AgentEvent::UPDATE); },
            [&] { view(); },
        };
        actions[below(std::size(actions))]();
        for (const auto& agent : agents)
            if (!isInTree(*agent) && below(4) == 0)
                root.addChild(agent.get());
    }

    /// Sends an UPDATE and looks where the agents are.
    void expectFollowed() {
        root.sendEvent(AgentEvent::UPDATE);
        for (const AgentNode* const child : root.getChildren()) {
            AgentNode& agent = const_cast<AgentNode&>(*child);
            if (agent.getRigidBody() && agent.getRigidBody()->getBody()) {
                EXPECT_TRUE(agent.getMatrix() == LoadedWorld::poseOf(*agent.getRigidBody()->getBody()))
                    << agent.getName();
            }
        }
    }

    /// Where a body lies asleep and its agents know, an UPDATE writes no transform.
    void expectIdleAtRest() {
        loaded.run(1200);
        for (const auto& agent : agents) {
            root.removeChild(agent.get());
            root.addChild(agent.get());
        }
        const std::vector<double> before = poses();
        loaded.run(1);
        const std::vector<double> after = poses();
        expectFollowed();
        for (std::size_t i = 0; i < holders.size(); ++i) {
            if (!std::equal(&before[16 * i], &before[16 * i] + 16, &after[16 * i]))
                continue; // it falls past the ground that was tilted
            EXPECT_FALSE(holders[i]->getBody()->isActive()) << holders[i]->getBody()->getName();
            holders[i]->getAgentNode()->setPosition({42, 0, 0});
            root.sendEvent(AgentEvent::UPDATE);
            EXPECT_EQ(holders[i]->getAgentNode()->getPosition()[0], 42);
        }
    }

private:
    unsigned below(std::size_t limit) { return static_cast<unsigned>(generator() % limit); }

    std::vector<double> poses() const {
        std::vector<double> numbers;
        for (RigidBodyComponent* const holder : holders) {
            const gmtl::Matrix<double, 4, 4> pose = LoadedWorld::poseOf(*holder->getBody());
            numbers.insert(numbers.end(), pose.getData(), pose.getData() + 16);
        }
        return numbers;
    }

    gmtl::Vec<double, 3> place(double scale) { return {scale * below(5), scale * below(5), 0.5 + scale * below(5)}; }
    AgentNode& agentAt() { return *agents[below(agents.size())]; }
    RigidBodyComponent& holderAt() { return *holders[below(holders.size())]; }

    DynamicsBody& bodyAt() {
        for (;;)
            if (DynamicsBody* const body = holderAt().getBody())
                return *body;
    }

    bool isInTree(const AgentNode& agent) const {
        const auto& children = root.getChildren();
        return std::find(children.begin(), children.end(), &agent) != children.end();
    }

    static void replaceTransform(AgentNode& agent) {
        agent.setOsgTransform(nullptr);
        if (agent.getRigidBody())
            agent.getRigidBody()->update();
        agent.setOsgTransform(new osg::MatrixTransform);
    }

    /// To an agent that has none; to its own one once more, sometimes.
    void moveComponent() {
        RigidBodyComponent& holder = holderAt();
        AgentNode* const before = holder.getAgentNode();
        before->removeComponent(&holder);
        AgentNode* to = before;
        for (const auto& agent : agents)
            if (!agent->getRigidBody())
                to = agent.get();
        to->addComponent(&holder);
        if (below(3) == 0)
            to->addComponent(&holder);
    }

    /// Two components exchange their bodies.
    void moveBody() {
        RigidBodyComponent &first = holderAt(), &second = holderAt();
        if (&first == &second)
            return;
        DynamicsBody *const ofFirst = first.getBody(), *const ofSecond = second.getBody();
        const RigidBodyComponent nothing;
        first = nothing;
        second = nothing;
        first.setName("RigidBodyComponent");
        second.setName("RigidBodyComponent");
        first.setBody(ofSecond);
        second.setBody(ofFirst);
    }

    /// A copy of a component carries the same poses to another agent, and one that is on no agent waits for none.
    void view() {
        const RigidBodyComponent nowhere(holderAt());
        if (agents.size() > 9)
            return;
        agents.push_back(std::make_unique<AgentNode>("view"));
        agents.back()->addComponent(new RigidBodyComponent(nowhere));
        if (below(2) == 0)
            *agents.back()->getRigidBody() = holderAt();
        if (below(2) == 0)
            root.addChild(agents.back().get());
    }

    std::mt19937 generator;
    LoadedWorld loaded;
    AgentNode root;
    std::vector<std::unique_ptr<AgentNode>> agents;
    std::vector<RigidBodyComponent*> holders;
};

TEST(Poses, ReachEveryAgentWithTheNextUpdateAndThenNothingIsAskedTwice) {
    for (unsigned seed = 0; seed < 25; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Bodies bodies(seed);
        for (int round = 0; round < 60 && !testing::Test::HasFailure(); ++round) {
            bodies.act();
            if (round % 3 == 0 || round % 5 == 0)
                bodies.expectFollowed();
        }
        bodies.expectIdleAtRest();
    }
}

} // namespace
} // namespace tessarin::viewer
