#pragma once

/// @file
/// Names of the agent library, for headers that only pass pointers and references on.

namespace tessarin::agent {

class AbstractAccessor;
class AgentFactory;
class AgentNode;
class AgentNodeHandle;
class AgentNodeEventHandler;
class BehaviourComponent;
struct CollisionData;
class Component;
class GeometryComponent;
class Input;
struct InputStatus;
class JointComponent;
class KeepsLookUps;
class PlainModelLoader;
class RigidBodyComponent;
class SceneGraphModifierComponent;
class SimObject;
class SimObjectDB;
class SimObjectFactory;
class VirtualInput;
class VisualModelComponent;
class VisualModelComponentModelLoader;

} // namespace tessarin::agent
