#include <dynamics/bullet/BulletBody.h>

#include <dynamics/bullet/BulletConversions.h>
#include <dynamics/bullet/DynamicsLog.h>
#include <dynamics/bullet/JointCore.h>
#include <dynamics/bullet/WorldCore.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessarin::dynamics::bullet {

namespace {

btRigidBody::btRigidBodyConstructionInfo describe(const BodyShape& shape, const collada::Material& material,
                                                  const Affine& pose, MassUnit& unit) {
    unit.makeRoomFor(shape.mass, shape.inertia);
    btRigidBody::btRigidBodyConstructionInfo info(static_cast<btScalar>(shape.mass / unit.get()), nullptr,
                                                  shape.whole(), toBullet(shape.inertia * (1 / unit.get())));
    info.m_startWorldTransform = toBullet(pose * shape.massFrame);
    // The engine multiplies what two bodies have; two equal ones are to rub and bounce as each of them says.
    info.m_friction = static_cast<btScalar>(std::sqrt(material.staticFriction));
    info.m_restitution = static_cast<btScalar>(std::sqrt(material.restitution));
    return info;
}

bool isFinite(const btTransform& place) {
    return isFinite(fromBullet(place));
}

btVector3 bulletVector(const gmtl::Vec<double, 3>& vector) {
    return toBullet(Vector3{vector[0], vector[1], vector[2]});
}

gmtl::Vec<double, 3> gmtlVector(const btVector3& vector) {
    return {vector.x(), vector.y(), vector.z()};
}

} // namespace

BulletBody::BulletBody(std::shared_ptr<WorldCore> worldCore, std::string bodyName, BodyShape bodyShape,
                       const collada::Material& bodyMaterial, const Affine& pose)
    : core(std::move(worldCore)), name(std::move(bodyName)), number(core->getContacts().nextBodyNumber()),
      material(bodyMaterial), shape(std::move(bodyShape)), massFrameInverse(rigidInverse(shape.massFrame)),
      body(describe(shape, material, pose, core->getMassUnit())), lastPlace(body.getWorldTransform()),
      placeBefore(lastPlace) {
    body.setUserPointer(this);
    // EngineWorld turns bodies itself.
    body.setFlags(body.getFlags() & ~BT_ENABLE_GYROSCOPIC_FORCE_IMPLICIT_BODY);
    if (shape.mass > 0) {
        // A body that moves by more than its own size in one step is swept, so that it can't pass through a surface.
        body.setCcdMotionThreshold(static_cast<btScalar>(shape.size));
        body.setCcdSweptSphereRadius(static_cast<btScalar>(shape.size / 2));
    }
    core->add(body);
}

BulletBody::~BulletBody() {
    while (!joints.empty()) {
        joints.back()->disconnect();
    }
    core->getContacts().forget(*this);
    core->remove(body);
}

void BulletBody::setUserData(DynamicsUserData* data) {
    userData = data;
    core->getContacts().updateUserData(*this);
}

void BulletBody::addJoint(JointCore& joint) {
    joints.push_back(&joint);
    core->setThresholds(body);
}

void BulletBody::removeJoint(JointCore& joint) {
    const auto found = std::find(joints.rbegin(), joints.rend(), &joint);
    *found = joints.back();
    joints.pop_back();
    core->setThresholds(body);
    core->wakeAround(body);
}

Affine BulletBody::getPose() const {
    return fromBullet(body.getWorldTransform()) * massFrameInverse;
}

void BulletBody::setPose(const Affine& pose) {
    const btTransform place = toBullet(pose * shape.massFrame);
    if (!isFinite(place)) {
        TESSARIN_LOG(logCategory(), logging::Logger::errorLevel,
                     "body '" << name << "' can't be put where numbers are not finite, it stays");
        return;
    }
    core->wakeAround(body);
    // Both, else the engine would draw the body from its old place to the new one.
    body.setWorldTransform(place);
    body.setInterpolationWorldTransform(place);
    lastPlace = place;
    placeBefore = place;
    isPoseUnread = true;
    poseChanged();
    core->updatePlace(body);
}

void BulletBody::getMatrix(gmtl::Matrix<double, 4, 4>& matrix) {
    toGmtl(getPose(), matrix);
    isPoseUnread = false;
}

void BulletBody::setMatrix(const gmtl::Matrix<double, 4, 4>& matrix) {
    const Affine given = fromGmtl(matrix);
    setPose(bullet::isFinite(given) ? Affine{polarPartsOf(given.linear).rotation, given.translation} : given);
}

void BulletBody::setLinearVelocity(const gmtl::Vec<float, 3>& velocity) {
    const btVector3 value(velocity[0], velocity[1], velocity[2]);
    if (body.isStaticObject() || !bullet::isFinite(fromBullet(value))) {
        return;
    }
    body.setLinearVelocity(value);
    body.setInterpolationLinearVelocity(value);
    core->wakeAround(body);
}

void BulletBody::setAngularVelocity(const gmtl::Vec<float, 3>& velocity) {
    const btVector3 value(velocity[0], velocity[1], velocity[2]);
    if (body.isStaticObject() || !bullet::isFinite(fromBullet(value))) {
        return;
    }
    body.setAngularVelocity(value);
    body.setInterpolationAngularVelocity(value);
    core->wakeAround(body);
}

void BulletBody::setPosition(const gmtl::Vec<double, 3>& position) {
    setPose({getPose().linear, {position[0], position[1], position[2]}});
}

void BulletBody::setRotation(const gmtl::Quat<double>& rotation) {
    const Vector3 axis = {rotation[0], rotation[1], rotation[2]};
    const double sine = length(axis);
    if (!(std::hypot(sine, rotation[3]) > 0)) {
        TESSARIN_LOG(logCategory(), logging::Logger::errorLevel,
                     "body '" << name << "' can't be turned by a quaternion of nothing, it stays");
        return;
    }
    setPose({axisRotation(axis, 2 * std::atan2(sine, rotation[3])), getPose().translation});
}

bool BulletBody::isActive() {
    const bool isDue = hasPoseReaders() ? isPoseDue() : isPoseUnread;
    return isDue || (!body.isStaticObject() && body.isActive());
}

void BulletBody::prepareMove() {
    core->wakeAround(body);
}

gmtl::Vec<double, 3> BulletBody::getCentreOfMass() const {
    return gmtlVector(body.getCenterOfMassPosition());
}

gmtl::Vec<double, 3> BulletBody::getLinearVelocity() const {
    return gmtlVector(body.getLinearVelocity());
}

gmtl::Vec<double, 3> BulletBody::getAngularVelocity() const {
    return gmtlVector(body.getAngularVelocity());
}

gmtl::Matrix<double, 4, 4> BulletBody::getPoseBetween(double part) const {
    const btTransform& now = body.getWorldTransform();
    const auto ratio = static_cast<btScalar>(std::clamp(part, 0.0, 1.0));
    gmtl::Matrix<double, 4, 4> matrix;
    if (ratio == 1 || !body.isActive()) {
        toGmtl(getPose(), matrix);
    } else {
        const btTransform between(placeBefore.getRotation().slerp(now.getRotation(), ratio),
                                  placeBefore.getOrigin().lerp(now.getOrigin(), ratio));
        toGmtl(fromBullet(between) * massFrameInverse, matrix);
    }
    return matrix;
}

void BulletBody::applyImpulse(const gmtl::Vec<double, 3>& impulse, const gmtl::Vec<double, 3>& point) {
    const btVector3 value = bulletVector(impulse) / static_cast<btScalar>(core->getMassUnit().get());
    const btVector3 arm = bulletVector(point) - body.getCenterOfMassPosition();
    if (body.isStaticObject() || !bullet::isFinite(fromBullet(value)) || !bullet::isFinite(fromBullet(arm))) {
        return;
    }
    core->wakeAround(body);
    body.applyImpulse(value, arm);
}

void BulletBody::applyAngularImpulse(const gmtl::Vec<double, 3>& impulse) {
    const btVector3 value = bulletVector(impulse) / static_cast<btScalar>(core->getMassUnit().get());
    if (body.isStaticObject() || !bullet::isFinite(fromBullet(value))) {
        return;
    }
    core->wakeAround(body);
    body.applyTorqueImpulse(value);
}

void BulletBody::countMassIn(double unit) {
    body.setMassProps(static_cast<btScalar>(shape.mass / unit), toBullet(shape.inertia * (1 / unit)));
    body.updateInertiaTensor();
}

void BulletBody::onStepped() {
    if (isFinite(body.getWorldTransform()) && bullet::isFinite(fromBullet(body.getLinearVelocity())) &&
        bullet::isFinite(fromBullet(body.getAngularVelocity()))) {
        placeBefore = lastPlace;
        // Asked of the place itself: a body may have moved and fallen asleep within one step.
        if (!(body.getWorldTransform() == lastPlace)) {
            lastPlace = body.getWorldTransform();
            poseChanged();
        }
        return;
    }
    if (!hasBeenStopped) {
        TESSARIN_LOG(logCategory(), logging::Logger::errorLevel,
                     "body '" << name << "' has left the range of numbers, it is stopped where it was last");
        hasBeenStopped = true; // what drives it out does so again in the next step
    }
    placeBefore = lastPlace;
    body.setLinearVelocity(btVector3(0, 0, 0));
    body.setAngularVelocity(btVector3(0, 0, 0));
    body.setWorldTransform(lastPlace);
    body.setInterpolationWorldTransform(lastPlace);
    body.setInterpolationLinearVelocity(btVector3(0, 0, 0));
    body.setInterpolationAngularVelocity(btVector3(0, 0, 0));
    // The engine takes a body without usable bounds out of the simulation.
    body.forceActivationState(ACTIVE_TAG);
    core->updatePlace(body);
}

} // namespace tessarin::dynamics::bullet
