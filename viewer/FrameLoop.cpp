#include <viewer/FrameLoop.h>

#include <viewer/Contacts.h>
#include <viewer/Scene.h>
#include <viewer/SimulationTime.h>

#include <agent/AgentNode.h>
#include <dynamics/bullet/BulletDynamicsWorld.h>

#include <algorithm>
#include <cmath>

namespace tessarin::viewer {

using agent::AgentEvent;

namespace {

constexpr int mostSteps = 8;

} // namespace

FrameLoop::FrameLoop(Scene& sceneToDrive) : scene(sceneToDrive) {}

void FrameLoop::frame(double seconds) {
    agent::AgentNode& root = scene.getRoot();
    dynamics::bullet::BulletDynamicsWorld& world = scene.getWorld();
    const double step = world.getFixedStep();

    SimulationTime::sinceFrame = std::min(seconds, mostSteps * step);
    root.sendEvent(AgentEvent::PRE_PHYSICS_UPDATE);
    for (int due = takeDueSteps(seconds); due > 0; --due) {
        SimulationTime::tick = step;
        root.sendEvent(AgentEvent::PRE_PHYSICS_TICK);
        world.step(step);
        sendCollisions(world);
        root.sendEvent(AgentEvent::POST_PHYSICS_TICK);
    }
    root.sendEvent(AgentEvent::POST_PHYSICS_UPDATE);
    root.sendEvent(AgentEvent::UPDATE);
    root.sendEvent(AgentEvent::POST_UPDATE);
}

int FrameLoop::takeDueSteps(double seconds) {
    const double step = scene.getWorld().getFixedStep();
    time += seconds;
    backlog = std::min(backlog + seconds, mostSteps * step);
    // A frame of one step's length is to run one step, however the sums are rounded.
    const int due = static_cast<int>(std::floor(backlog / step + 1e-6));
    backlog -= due * step;
    const double steps = std::round(seconds / step);
    const bool isWhole = steps >= 1 && std::abs(seconds - steps * step) < 1e-9 * step;
    partDrawn = isWhole ? 1 : backlog / step;
    return due;
}

FrameLoop::Picture::Picture(FrameLoop& loop) : poses(loop.drawnPoses) {
    if (loop.partDrawn < 1)
        poses.apply(loop.scene.getRoot(), loop.partDrawn);
}

} // namespace tessarin::viewer
