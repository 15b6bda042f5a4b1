#include <agent/AgentNode.h>

#include <agent/JointComponent.h>
#include <agent/RigidBodyComponent.h>
#include <dynamics/DynamicsBody.h>

#include <cassert>

namespace tessarin::agent {

namespace {

/// Calls the operation for each component of that class in the list.
template <class ComponentClass, class Operation>
void forEachComponent(const std::list<Component*>& components, const Operation& operation) {
    for (Component* const component : components)
        if (auto* const wanted = dynamic_cast<ComponentClass*>(component))
            operation(*wanted);
}

} // namespace

void AgentNode::magicMove(const gmtl::Vec<double, 3>& offset) {
    magicMoveRecursive(this, offset);
}

void AgentNode::magicMoveRecursive(AgentNode* node, const gmtl::Vec<double, 3>& offset) {
    assert(node && "AgentNode::magicMoveRecursive begins at an agent.");
    if (!node)
        return;
    if (dynamics::DynamicsBody* const body = node->rigidBody ? node->rigidBody->getBody() : nullptr) {
        gmtl::Matrix<double, 4, 4> matrix;
        body->getMatrix(matrix);
        const gmtl::Vec<double, 3> position(matrix(0, 3) + offset[0], matrix(1, 3) + offset[1],
                                            matrix(2, 3) + offset[2]);
        const gmtl::Vec<float, 3> rest(0.0f, 0.0f, 0.0f);
        body->prepareMove();
        body->setPosition(position);
        body->setLinearVelocity(rest);
        body->setAngularVelocity(rest);
    }
    for (AgentNode* const child : node->children)
        magicMoveRecursive(child, offset);
}

/// The poses of this agent's bodies went with a transform that it no longer has.
void AgentNode::forgetPoses() {
    if (rigidBody)
        forEachComponent<RigidBodyComponent>(components, [](RigidBodyComponent& holder) { holder.poses.forget(); });
}

std::set<dynamics::DynamicsBody*> AgentNode::getDynamicsBodies() const {
    std::set<dynamics::DynamicsBody*> bodies;
    collectBodies(bodies);
    return bodies;
}

void AgentNode::collectBodies(std::set<dynamics::DynamicsBody*>& bodies) const {
    forEachComponent<RigidBodyComponent>(components,
                                         [&](RigidBodyComponent& component) { bodies.insert(component.getBody()); });
    for (const AgentNode* const child : children)
        child->collectBodies(bodies);
}

std::set<dynamics::DynamicsJoint*> AgentNode::getDynamicsJoints() const {
    std::set<dynamics::DynamicsJoint*> joints;
    collectJoints(joints);
    return joints;
}

void AgentNode::collectJoints(std::set<dynamics::DynamicsJoint*>& joints) const {
    forEachComponent<JointComponent>(components,
                                     [&](JointComponent& component) { joints.insert(component.getJoint()); });
    for (const AgentNode* const child : children)
        child->collectJoints(joints);
}

} // namespace tessarin::agent
