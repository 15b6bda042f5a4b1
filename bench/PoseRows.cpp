// Poses of bodies on their way to their agents, and poses in the world.

#include <bench/Listener.h>
#include <bench/Row.h>
#include <bench/Trees.h>

#include <agent/RigidBodyComponent.h>
#include <dynamics/DynamicsBody.h>

#include <osg/Matrixd>

namespace tessarin::bench {

using agent::AgentEvent;
using agent::AgentNode;

namespace {

using Matrix = gmtl::Matrix<double, 4, 4>;

/// A body that is always awake and stays where it is.
class AwakeBody : public dynamics::DynamicsBody {
public:
    const std::string& getName() override { return name; }
    void setUserData(dynamics::DynamicsUserData*) override {}
    void getMatrix(Matrix& matrix) override { matrix = pose; }
    void setMatrix(const Matrix& matrix) override { pose = matrix; }
    void setLinearVelocity(const gmtl::Vec<float, 3>&) override {}
    void setAngularVelocity(const gmtl::Vec<float, 3>&) override {}
    void setPosition(const gmtl::Vec<double, 3>&) override {}
    void setRotation(const gmtl::Quat<double>&) override {}
    bool isActive() override { return true; }
    void prepareMove() override {}

private:
    std::string name;
    Matrix pose;
};

void updatePoses(benchmark::State& state) {
    static AgentNode* const root = [] {
        const std::vector<AgentNode*> agents = makeAgents(treeSize);
        for (AgentNode* const agent : agents) {
            auto* const component = new agent::RigidBodyComponent;
            component->setBody(new AwakeBody);
            agent->addComponent(component);
        }
        return agents.front();
    }();
    for (auto _ : state) {
        root->sendEvent(AgentEvent::UPDATE);
    }
}

// A component that copies a matrix from an object of its own as a program would that knows both classes.
class Copier : public Listener {
public:
    explicit Copier(osg::MatrixTransform& target) : transform(target), matrix(new osg::Matrixd) {}
    ~Copier() override { delete matrix; }

    void update() override { transform.setMatrix(*matrix); }

private:
    osg::MatrixTransform& transform;
    osg::Matrixd* matrix;
};

void copyMatrices(benchmark::State& state) {
    static AgentNode* const root = [] {
        const std::vector<AgentNode*> agents = makeAgents(treeSize);
        for (AgentNode* const agent : agents) {
            agent->addComponent((new Copier(*agent->getOsgTransform()->asMatrixTransform()))->asComponent());
        }
        return agents.front();
    }();
    for (auto _ : state) {
        root->sendEvent(AgentEvent::UPDATE);
    }
}

constexpr int levels = 8;

/// The lowest of so many agents, one below another.
AgentNode& deepAgent() {
    static AgentNode* const lowest = [] {
        auto* agent = new AgentNode("top");
        for (int level = 1; level < levels; ++level) {
            agent->setPosition({1, 2, 3});
            agent = agent->addChild("below");
        }
        return agent;
    }();
    return *lowest;
}

void getWorldMatrix(benchmark::State& state) {
    AgentNode& agent = deepAgent();
    for (auto _ : state) {
        benchmark::DoNotOptimize(agent.getWorldMatrix());
    }
}

void getWorldMatrices(benchmark::State& state) {
    const osg::Transform& transform = *deepAgent().getOsgTransform();
    for (auto _ : state) {
        benchmark::DoNotOptimize(transform.getWorldMatrices());
    }
}

const RowRegistration rows[] = {
    RowRegistration({"pose_update", 1.3, updatePoses, copyMatrices, treeSize}),
    RowRegistration({"world_matrix", 1.05, getWorldMatrix, getWorldMatrices}),
};

} // namespace

} // namespace tessarin::bench
