#include <viewer/Upward.h>

#include <agent/AgentNode.h>
#include <dynamics/bullet/BulletDynamicsWorld.h>

namespace tessarin::viewer {

osg::Vec3d findUp() {
    const auto* const world = dynamic_cast<dynamics::bullet::BulletDynamicsWorld*>(agent::AgentNode::dynamicsWorld);
    const gmtl::Vec<double, 3> gravity = world ? world->getGravity() : gmtl::Vec<double, 3>(0, 0, 0);
    osg::Vec3d up(-gravity[0], -gravity[1], -gravity[2]);
    return up.normalize() > 0 ? up : osg::Vec3d(0, 0, 1);
}

} // namespace tessarin::viewer
