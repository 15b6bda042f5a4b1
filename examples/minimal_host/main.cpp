#include <agent/AgentNode.h>
#include <agent/BehaviourComponent.h>
#include <agent/SimObjectDB.h>
#include <agent/SimObjectFactory.h>

#include <iostream>

using namespace tessarin::agent;

// A behaviour of the host's own: moves its agent along x, a little in each frame.
class Drift : public BehaviourComponent {
    const char* getClassName() override { return "Drift"; }

    void update() override {
        gmtl::Vec<double, 3> position = getAgentNode()->getPosition();
        position[0] += 0.5;
        getAgentNode()->setPosition(position);
    }
};

int main() {
    static SimObjectFactoryFor<Drift> driftFactory;
    SimObjectDB::instance()->registerFactory(&driftFactory, "Drift"); // from here on, documents can name it too

    AgentNode world("world");
    world.addChild("tree");
    world.addChild("cloud")->addComponent("Drift");

    for (int frame = 0; frame < 10; ++frame)
        world.sendEvent(AgentEvent::UPDATE);

    world.createXml(std::cout);
}
