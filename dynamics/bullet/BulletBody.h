#pragma once

#include <dynamics/DynamicsBody.h>
#include <dynamics/bullet/BodyShape.h>

#include <btBulletDynamicsCommon.h>

#include <cstdint>
#include <memory>
#include <string>

namespace tessarin::dynamics::bullet {

class WorldCore;

/// A rigid body in the engine.
///
/// The pose that it shows is that of its node; the engine has the body at its centre of mass, and the body converts
/// between the two. It is active while the engine has it awake and for a few steps after, and until a pose given to it
/// from outside has been read.
class BulletBody : public DynamicsBody {
public:
    /// @param shape with at least one part.
    /// @param pose rigid.
    BulletBody(std::shared_ptr<WorldCore> core, std::string name, BodyShape shape, const Affine& pose);
    ~BulletBody() override;

    BulletBody(const BulletBody&) = delete;
    BulletBody& operator=(const BulletBody&) = delete;

    const std::string& getName() override { return name; }
    void setUserData(DynamicsUserData* data) override { userData = data; }
    void getMatrix(gmtl::Matrix<double, 4, 4>& matrix) override;
    void setMatrix(const gmtl::Matrix<double, 4, 4>& matrix) override;
    void setLinearVelocity(const gmtl::Vec<float, 3>& velocity) override;
    void setAngularVelocity(const gmtl::Vec<float, 3>& velocity) override;
    void setPosition(const gmtl::Vec<double, 3>& position) override;
    void setRotation(const gmtl::Quat<double>& rotation) override;
    bool isActive() override;
    void prepareMove() override;

    /// Half of what the body measures where it is narrowest.
    double getSize() const { return shape.size; }

    /// To be called after each step.
    void onStepped();

private:
    Affine getPose() const;
    void setPose(const Affine& pose);

    const std::shared_ptr<WorldCore> core;
    const std::string name;
    DynamicsUserData* userData = nullptr;
    BodyShape shape;
    Affine massFrameInverse;
    btRigidBody body;
    btTransform lastPlace;
    bool isPoseUnread = true;
    std::uint64_t lastMovedStep = 0;
};

} // namespace tessarin::dynamics::bullet
