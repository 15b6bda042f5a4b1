// Loads a model with physics, steps the world, and prints how a ball falls.

#include <agent/AgentNode.h>
#include <agent/VisualModelComponent.h>
#include <agent/VisualModelComponentModelLoader.h>
#include <dynamics/bullet/BulletDynamicsWorld.h>

#include <cstdio>
#include <memory>

using namespace tessarin::agent;

namespace {

void run(const char* modelFile, tessarin::dynamics::bullet::BulletDynamicsWorld& world) {
    AgentNode scene("scene");
    Component* const model = scene.addComponent("VisualModelComponent");
    model->setValue("filePath", modelFile);
    model->initialize(); // a child agent for each body in the file, named after it

    AgentNode* const ball = scene.getChild("ball");
    if (!ball) {
        std::printf("%s holds no body named ball\n", modelFile);
        return;
    }

    constexpr int framesPerSecond = 60;
    scene.sendEvent(AgentEvent::UPDATE); // brings the bodies' first poses to their agents
    for (int frame = 0; frame <= 3 * framesPerSecond; ++frame) {
        if (frame % (framesPerSecond / 2) == 0)
            std::printf("%.1f s: %.1f m\n", double(frame) / framesPerSecond, ball->getWorldPosition()[2]);
        world.step(1.0 / framesPerSecond);
        scene.sendEvent(AgentEvent::UPDATE);
    }
}

} // namespace

int main(int argumentCount, char** arguments) {
    tessarin::dynamics::bullet::BulletDynamicsWorld world;
    AgentNode::dynamicsWorld = &world;
    VisualModelComponentModelLoader loader;
    VisualModelComponent::setModelLoader(&loader);

    run(argumentCount > 1 ? arguments[1] : "falling_ball.dae", world);

    VisualModelComponent::setModelLoader(nullptr);
    AgentNode::dynamicsWorld = nullptr;
}
