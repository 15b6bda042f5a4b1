#pragma once

#include <agent/AgentNodeHandle.h>

#include <osg/Vec3d>

namespace osg {
class Camera;
}

namespace tessarin::agent {
class AgentNode;
}

namespace tessarin::viewer {

/// The person's hand in the scene: where the cursor is and what it is doing there. There is one window in the program,
/// which tells where the cursor is; the viewer's components ask.
///
/// All vectors are in the world.
class Hand {
public:
    static Hand& instance();

    /// @param x, y in the camera's window, in pixels from the lower left corner.
    void aim(const osg::Camera& camera, double x, double y);

    /// The ray through the cursor: from the eye or its plane, and a direction of length 1.
    /// @{
    const osg::Vec3d& getFrom() const { return from; }
    const osg::Vec3d& getDirection() const { return direction; }
    /// @}

    /// The place on that ray at a depth, that is how far before the eye along its line of sight.
    osg::Vec3d getPlace(double depth) const;
    double getDepth(const osg::Vec3d& place) const { return (place - eye) * look; }

    /// The person's right and away: level, of length 1.
    /// @{
    const osg::Vec3d& getRight() const { return right; }
    osg::Vec3d getAway() const { return up ^ right; }
    /// @}

    /// Against gravity, of length 1.
    const osg::Vec3d& getUp() const { return up; }

    /// The agent under the cursor, as AgentNodeEventHandler found it last: the one that its mouse events are sent to.
    /// Agents below it hear them too, and can tell by this that they are not meant. Null if there was none or it is
    /// gone.
    agent::AgentNode* getPointed() const;

    /// The agent that was clicked last; null if there was none or it is gone.
    /// @{
    agent::AgentNode* getSelected() const { return selected; }
    void select(agent::AgentNode* agent) { selected = agent; }
    /// @}

    /// Whoever lets the person drag something says so with a pointer to itself, and may go on until it is no longer
    /// held, which is when the button comes up. The camera keeps still meanwhile.
    /// @{
    void hold(const void* holder) { held = holder; }
    bool holds(const void* holder) const { return held == holder; }
    bool isHolding() const { return held != nullptr; }
    void letGo() { held = nullptr; }
    /// @}

private:
    Hand() = default;

    osg::Vec3d eye;
    osg::Vec3d from;
    osg::Vec3d direction = {0, 1, 0};
    osg::Vec3d look = {0, 1, 0};
    osg::Vec3d right = {1, 0, 0};
    osg::Vec3d up = {0, 0, 1};
    agent::AgentNodeHandle selected;
    const void* held = nullptr;
};

} // namespace tessarin::viewer
