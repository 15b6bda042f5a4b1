#pragma once

#include <tests/doubles/Counted.h>

#include <dynamics/DynamicsBody.h>
#include <dynamics/DynamicsBodyFunctor.h>
#include <dynamics/DynamicsJoint.h>
#include <dynamics/DynamicsWorld.h>

#include <gmtl/Generate.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace tessarin::doubles {

/// A body that stays where it is put and notes what is asked of it, as "setPosition(1,2,3)".
class BodyDouble : public dynamics::DynamicsBody, public Counted<BodyDouble> {
public:
    using Matrix = gmtl::Matrix<double, 4, 4>;

    explicit BodyDouble(const std::string& newName = "body") : name(newName) {}

    const std::string& getName() override { return name; }
    void setUserData(dynamics::DynamicsUserData* data) override { userData = data; }
    void getMatrix(Matrix& matrix) override {
        note("getMatrix");
        matrix = pose;
    }
    void setMatrix(const Matrix& matrix) override {
        note("setMatrix");
        pose = matrix;
    }
    void setPosition(const gmtl::Vec<double, 3>& position) override {
        note("setPosition", position.getData(), 3);
        gmtl::setTrans(pose, position);
    }
    void setLinearVelocity(const gmtl::Vec<float, 3>& speed) override { note("setLinearVelocity", speed.getData(), 3); }
    void setAngularVelocity(const gmtl::Vec<float, 3>& spin) override { note("setAngularVelocity", spin.getData(), 3); }
    void setRotation(const gmtl::Quat<double>& rotation) override { note("setRotation", rotation.getData(), 4); }
    bool isActive() override { return active; }
    void prepareMove() override { note("prepareMove"); }

    bool active = true;
    Matrix pose;
    dynamics::DynamicsUserData* userData = nullptr;
    std::vector<std::string> calls;

private:
    template <class Number = double>
    void note(const char* call, const Number* numbers = nullptr, int count = 0) {
        std::ostringstream text;
        text << call;
        for (int i = 0; i < count; ++i)
            text << (i == 0 ? '(' : ',') << numbers[i];
        calls.push_back(text.str() + (count > 0 ? ")" : ""));
    }

    std::string name;
};

template <class Kind>
struct JointDouble : Kind, Counted<JointDouble<Kind>> {
    explicit JointDouble(const std::string& newName = "joint") { this->name = newName; }
};

/// A world in which a file holds what the test says.
struct WorldDouble : dynamics::DynamicsWorld {
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
