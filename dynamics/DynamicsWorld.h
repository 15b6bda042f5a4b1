#pragma once

#include <dynamics/Export.h>
#include <dynamics/Forward.h>

#include <gmtl/Matrix.h>

#include <string>

namespace tessarin::dynamics {

/// A dynamics world, as far as agents need it: a place that reads the physics of a model file. How and when the world
/// is stepped is between the host and the engine.
///
/// The host owns the world and keeps it alive as long as it is stored in AgentNode::dynamicsWorld. Bodies and joints
/// that the world has reported don't belong to it and may outlive it.
class TESSARIN_DYNAMICS_EXPORT DynamicsWorld {
public:
    virtual ~DynamicsWorld() = default;

    /// Reads the physics of a file into the world and reports every new body and joint to the functor.
    ///
    /// A file that can't be read, or that holds no physics, reports nothing and harms nothing.
    ///
    /// @param filePath the file, as the agent's document names it.
    /// @param placement where the file's origin goes in the world.
    /// @param functor called once per body and joint before this returns.
    virtual void loadScene(const std::string& filePath, const gmtl::Matrix<double, 4, 4>& placement,
                           DynamicsBodyFunctor& functor) = 0;

protected:
    DynamicsWorld() = default;
    DynamicsWorld(const DynamicsWorld&) = default;
    DynamicsWorld& operator=(const DynamicsWorld&) = default;
};

} // namespace tessarin::dynamics
