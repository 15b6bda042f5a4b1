#pragma once

/// @file
/// Names of the dynamics interface, for headers that only pass pointers on.

namespace tessarin::dynamics {

class DynamicsBody;
struct DynamicsBodyFunctor;
class DynamicsD6Joint;
class DynamicsJoint;
class DynamicsPrismaticJoint;
class DynamicsRevoluteJoint;
class DynamicsUserData;
class DynamicsWorld;

} // namespace tessarin::dynamics
