#include <viewer/DrawnPoses.h>

#include <agent/AgentNode.h>
#include <agent/RigidBodyComponent.h>
#include <dynamics/bullet/BulletBodyControl.h>

#include <gmtl/MatrixOps.h>

namespace tessarin::viewer {

void DrawnPoses::apply(agent::AgentNode& agent, double part) {
    agent::RigidBodyComponent* const holder = agent.getRigidBody();
    dynamics::DynamicsBody* const body = holder ? holder->getBody() : nullptr;
    const osg::ref_ptr<osg::Transform> transform = body && body->isActive() ? agent.getOsgTransform() : nullptr;
    osg::MatrixTransform* const pose = transform ? transform->asMatrixTransform() : nullptr;
    auto* const control = pose ? dynamic_cast<dynamics::bullet::BulletBodyControl*>(body) : nullptr;
    gmtl::Matrix<double, 4, 4> now;
    if (control)
        body->getMatrix(now);
    if (control && pose->getMatrix() == osg::Matrixd(now.getData())) {
        truePoses.push_back({pose, pose->getMatrix()});
        pose->setMatrix(osg::Matrixd(control->getPoseBetween(part).getData()));
    }
    for (agent::AgentNode* const child : agent.getChildren())
        apply(*child, part);
}

void DrawnPoses::undo() {
    for (const Pose& pose : truePoses)
        pose.transform->setMatrix(pose.matrix);
    truePoses.clear();
}

} // namespace tessarin::viewer
