#pragma once

#include <dynamics/DynamicsBody.h>
#include <dynamics/PoseSource.h>
#include <dynamics/bullet/BodyShape.h>
#include <dynamics/bullet/BodySpins.h>
#include <dynamics/bullet/BulletBodyControl.h>
#include <dynamics/bullet/ColladaPhysics.h>
#include <dynamics/bullet/ContactList.h>
#include <dynamics/bullet/RollingResistance.h>

#include <btBulletDynamicsCommon.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tessarin::dynamics::bullet {

class JointCore;
class WorldCore;

/// A rigid body in the engine.
///
/// The pose that it shows is that of its node; the engine has the body at its centre of mass, and the body converts
/// between the two. It is active while the engine has it awake, and until all who follow its poses have the present
/// one. Where nobody follows, a pose given to it from outside counts as taken over when it is read.
class BulletBody : public DynamicsBody, public BulletBodyControl, public PoseSource {
public:
    /// @param shape with at least one part.
    /// @param pose rigid.
    BulletBody(std::shared_ptr<WorldCore> core, std::string name, BodyShape shape, const collada::Material& material,
               const Affine& pose);
    ~BulletBody() override;

    BulletBody(const BulletBody&) = delete;
    BulletBody& operator=(const BulletBody&) = delete;

    const std::string& getName() override { return name; }
    void setUserData(DynamicsUserData* data) override;
    void getMatrix(gmtl::Matrix<double, 4, 4>& matrix) override;
    void setMatrix(const gmtl::Matrix<double, 4, 4>& matrix) override;
    void setLinearVelocity(const gmtl::Vec<float, 3>& velocity) override;
    void setAngularVelocity(const gmtl::Vec<float, 3>& velocity) override;
    void setPosition(const gmtl::Vec<double, 3>& position) override;
    void setRotation(const gmtl::Quat<double>& rotation) override;
    bool isActive() override;
    void prepareMove() override;

    bool isMovable() const override { return !body.isStaticObject(); }
    double getMass() const override { return shape.mass; }
    gmtl::Vec<double, 3> getCentreOfMass() const override;
    gmtl::Vec<double, 3> getLinearVelocity() const override;
    gmtl::Vec<double, 3> getAngularVelocity() const override;
    gmtl::Matrix<double, 4, 4> getPoseBetween(double part) const override;
    void applyImpulse(const gmtl::Vec<double, 3>& impulse, const gmtl::Vec<double, 3>& point) override;
    void applyAngularImpulse(const gmtl::Vec<double, 3>& impulse) override;

    DynamicsUserData* getUserData() const { return userData; }

    /// In the order in which bodies were made.
    std::uint64_t getNumber() const { return number; }

    const collada::Material& getMaterial() const { return material; }
    bool isAwake() const { return body.isActive(); }

    /// Where the engine has the body's origin, in the frame of its node.
    const Affine& getMassFrame() const { return shape.massFrame; }

    Affine getPose() const;

    btRigidBody& getRigidBody() { return body; }

    /// A body that goes lets its joints know.
    void addJoint(JointCore& joint);
    void removeJoint(JointCore& joint);
    bool hasJoints() const { return !joints.empty(); }

    /// Belongs to the list of contacts.
    ContactLink contactLink;

    /// Belongs to the engine's world.
    ExactSpin exactSpin;

    /// Belongs to the bounces of a step.
    std::size_t flight = 0;

    /// Belongs to the resistance to rolling.
    Rolling rolling;

    /// Half of what the body measures where it is narrowest.
    double getSize() const { return shape.size; }

    /// Whether it has no flat sides.
    bool isRound() const { return shape.isRound; }

    /// Tells the engine the mass in a unit of it.
    void countMassIn(double unit);

    /// To be called after each step.
    void onStepped();

private:
    void setPose(const Affine& pose);

    const std::shared_ptr<WorldCore> core;
    const std::string name;
    const std::uint64_t number;
    const collada::Material material;
    std::vector<JointCore*> joints;
    DynamicsUserData* userData = nullptr;
    BodyShape shape;
    Affine massFrameInverse;
    btRigidBody body;
    btTransform lastPlace;
    btTransform placeBefore; // the last step
    bool isPoseUnread = true;
    bool hasBeenStopped = false;
};

} // namespace tessarin::dynamics::bullet
