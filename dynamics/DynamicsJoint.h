#pragma once

#include <dynamics/Export.h>

#include <string>

namespace tessarin::dynamics {

/// A joint between two bodies, or between a body and the world. It belongs to whoever got it from
/// DynamicsBodyFunctor::visitJoint, usually a component, and may be deleted at any time outside a simulation step,
/// before or after its bodies and its world.
///
/// What a joint can do beyond that is its engine's: a caller finds out the kind of a joint by a run-time cast to one of
/// the three classes below, or to a class of the engine.
class TESSARIN_DYNAMICS_EXPORT DynamicsJoint {
public:
    virtual ~DynamicsJoint() = default;

    /// The name of the joint, and of the component that comes to hold it.
    std::string name;

protected:
    DynamicsJoint() = default;
    DynamicsJoint(const DynamicsJoint&) = default;
    DynamicsJoint& operator=(const DynamicsJoint&) = default;
};

/// A joint with up to six degrees of freedom, each free, limited or locked.
class TESSARIN_DYNAMICS_EXPORT DynamicsD6Joint : public DynamicsJoint {};

/// A hinge: one rotation is left.
class TESSARIN_DYNAMICS_EXPORT DynamicsRevoluteJoint : public DynamicsJoint {};

/// A slider: one translation is left.
class TESSARIN_DYNAMICS_EXPORT DynamicsPrismaticJoint : public DynamicsJoint {};

} // namespace tessarin::dynamics
