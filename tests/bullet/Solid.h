#pragma once

#include <tests/bullet/JointScene.h>

#include <dynamics/bullet/BulletBodyControl.h>

#include <osg/Quat>
#include <osg/Vec3d>

#include <cmath>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

namespace tessarin::dynamics::bullet {

inline std::string textOf(const osg::Vec3d& v) {
    std::ostringstream text;
    text << std::setprecision(12) << v.x() << ' ' << v.y() << ' ' << v.z();
    return text.str();
}

inline osg::Vec3d vectorOf(const gmtl::Vec<double, 3>& v) {
    return {v[0], v[1], v[2]};
}

inline osg::Vec3d unit(int axis) {
    osg::Vec3d result;
    result[axis] = 1;
    return result;
}

/// @param velocity in radians per second.
inline std::string turning(const osg::Vec3d& velocity) {
    return "<angular_velocity>" + textOf(velocity * (180 / pi)) + "</angular_velocity>";
}

/// A small body with given moments about the axes of a mass frame.
struct Solid {
    std::string name;
    double mass = 1;
    osg::Vec3d moments = {1, 1, 1};
    osg::Vec3d centre = {};
    osg::Vec3d axis = {1, 0, 0}; // about which the mass frame is turned
    double degrees = 0;
    double radius = 0.05;

    void addTo(ColladaScene& scene, const std::string& transforms, const std::string& motion) const {
        scene.add(name, transforms,
                  "<mass>" + std::to_string(mass) + "</mass><inertia>" + textOf(moments) + "</inertia><mass_frame>" +
                      "<translate>" + textOf(centre) + "</translate><rotate>" + textOf(axis) + " " +
                      std::to_string(degrees) + "</rotate></mass_frame>" + ball(radius),
                  motion);
    }

    BulletBodyControl& in(const LoadedWorld& loaded) const {
        return dynamic_cast<BulletBodyControl&>(loaded.body(name));
    }

    /// A principal axis in the world.
    osg::Vec3d axisIn(const LoadedWorld& loaded, int index) const {
        const osg::Vec3d inNode = osg::Quat(degrees * pi / 180, axis) * unit(index);
        const Pose pose = loaded.pose(name);
        osg::Vec3d result;
        for (unsigned row = 0; row < 3; ++row) {
            result[static_cast<int>(row)] =
                pose(row, 0) * inNode.x() + pose(row, 1) * inNode.y() + pose(row, 2) * inNode.z();
        }
        return result;
    }
};

/// The motion of all bodies together.
struct Motion {
    double energy = 0; // of motion
    osg::Vec3d momentum;
    osg::Vec3d angular; // about the origin of the world

    Motion(const LoadedWorld& loaded, const std::vector<Solid>& solids) {
        for (const Solid& solid : solids) {
            const BulletBodyControl& control = solid.in(loaded);
            const osg::Vec3d velocity = vectorOf(control.getLinearVelocity());
            const osg::Vec3d turning = vectorOf(control.getAngularVelocity());
            momentum += velocity * solid.mass;
            energy += velocity.length2() * solid.mass / 2;
            angular += vectorOf(control.getCentreOfMass()) ^ velocity * solid.mass;
            for (int i = 0; i < 3; ++i) {
                const osg::Vec3d along = solid.axisIn(loaded, i);
                energy += solid.moments[i] * std::pow(along * turning, 2) / 2;
                angular += along * (solid.moments[i] * (along * turning));
            }
        }
    }
};

} // namespace tessarin::dynamics::bullet
