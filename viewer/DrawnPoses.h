#pragma once

#include <osg/MatrixTransform>
#include <osg/Matrixd>
#include <osg/ref_ptr>

#include <vector>

namespace tessarin::agent {
class AgentNode;
}

namespace tessarin::viewer {

/// Puts the agents of bodies that move between where the last fixed step found them and where it left them, for as long
/// as a picture is drawn. Steps and pictures seldom come equally often; without this, motion would stutter.
class DrawnPoses {
public:
    /// Agents that don't stand where their bodies are stay where they are.
    /// @param part how much of the last step is over for the picture: 0 is its begin, 1 its end.
    void apply(agent::AgentNode& root, double part);

    /// Everything stands where it stood, to the last bit.
    void undo();

private:
    struct Pose {
        osg::ref_ptr<osg::MatrixTransform> transform;
        osg::Matrixd matrix;
    };

    std::vector<Pose> truePoses;
};

} // namespace tessarin::viewer
