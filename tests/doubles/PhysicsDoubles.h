#pragma once

#include <tests/doubles/Counted.h>

#include <dynamics/DynamicsBody.h>
#include <dynamics/DynamicsBodyFunctor.h>
#include <dynamics/DynamicsJoint.h>
#include <dynamics/DynamicsWorld.h>

#include <gmtl/Generate.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tessarin::doubles {

/// A body that stays where it is put and notes what is asked of it.
class BodyDouble : public dynamics::DynamicsBody, public Counted<BodyDouble> {
public:
    using Matrix = gmtl::Matrix<double, 4, 4>;

    explicit BodyDouble(std::string newName = "body", bool isActiveAtFirst = true)
        : active(isActiveAtFirst), name(std::move(newName)) {}

    const std::string& getName() override { return name; }
    void setUserData(dynamics::DynamicsUserData* data) override { userData = data; }
    void getMatrix(Matrix& matrix) override {
        calls.emplace_back("getMatrix");
        matrix = pose;
    }
    void setMatrix(const Matrix& matrix) override {
        calls.emplace_back("setMatrix");
        pose = matrix;
    }
    void setLinearVelocity(const gmtl::Vec<float, 3>& velocity) override {
        calls.emplace_back("setLinearVelocity");
        speed = velocity;
    }
    void setAngularVelocity(const gmtl::Vec<float, 3>& velocity) override {
        calls.emplace_back("setAngularVelocity");
        spin = velocity;
    }
    void setPosition(const gmtl::Vec<double, 3>& position) override {
        calls.emplace_back("setPosition");
        gmtl::setTrans(pose, position);
    }
    void setRotation(const gmtl::Quat<double>& newRotation) override {
        calls.emplace_back("setRotation");
        rotation = newRotation;
    }
    bool isActive() override { return active; }
    void prepareMove() override { calls.emplace_back("prepareMove"); }

    bool active;
    Matrix pose;
    gmtl::Quat<double> rotation;
    gmtl::Vec<float, 3> speed{1.0f, 2.0f, 3.0f};
    gmtl::Vec<float, 3> spin{4.0f, 5.0f, 6.0f};
    dynamics::DynamicsUserData* userData = nullptr;
    std::vector<std::string> calls;

private:
    std::string name;
};

template <class Kind>
class JointDouble : public Kind, public Counted<JointDouble<Kind>> {
public:
    explicit JointDouble(const std::string& newName = "joint") { this->name = newName; }
};

/// A world in which a file holds what the test says.
class WorldDouble : public dynamics::DynamicsWorld {
public:
    void loadScene(const std::string& filePath, const gmtl::Matrix<double, 4, 4>& placement,
                   dynamics::DynamicsBodyFunctor& functor) override {
        paths.push_back(filePath);
        lastPlacement = placement;
        if (scene)
            scene(functor);
    }

    std::function<void(dynamics::DynamicsBodyFunctor&)> scene;
    std::vector<std::string> paths;
    gmtl::Matrix<double, 4, 4> lastPlacement;
};

} // namespace tessarin::doubles
