#pragma once

#include <tests/bullet/ColladaScene.h>

#include <dynamics/bullet/BulletJoint.h>

#include <cmath>
#include <stdexcept>
#include <string>

namespace tessarin::dynamics::bullet {

constexpr double pi = 3.14159265358979323846;

inline std::string refAttachment(const std::string& body, const std::string& placement = "") {
    return "<ref_attachment rigid_body='" + body + "'>" + placement + "</ref_attachment>";
}

inline std::string attachment(const std::string& body, const std::string& placement = "") {
    return "<attachment rigid_body='" + body + "'>" + placement + "</attachment>";
}

/// The first side of a constraint to the world, at its origin.
const std::string origin = "<ref_attachment><translate>0 0 0</translate></ref_attachment>";

/// A constraint put together piece by piece.
struct Constraint {
    std::string first;
    std::string second;
    std::string linearMin = "0 0 0";
    std::string linearMax = "0 0 0";
    std::string angularMin = "0 0 0";
    std::string angularMax = "0 0 0";
    std::string properties = "";

    std::string text(const std::string& attributes) const {
        return "<rigid_constraint " + attributes + ">" + first + second + "<technique_common>" + properties +
               "<limits><linear><min>" + linearMin + "</min><max>" + linearMax +
               "</max></linear><swing_cone_and_twist><min>" + angularMin + "</min><max>" + angularMax +
               "</max></swing_cone_and_twist></limits></technique_common></rigid_constraint>";
    }
};

inline void addConstraint(ColladaScene& scene, const std::string& name, const Constraint& constraint) {
    scene.bodies += constraint.text("sid='" + name + "'");
    scene.instances += "<instance_rigid_constraint constraint='" + name + "'/>";
}

inline void addHinge(ColladaScene& scene, const std::string& first, const std::string& second,
                     const std::string& angularMin, const std::string& angularMax, const std::string& properties = "") {
    addConstraint(scene, "hinge", {first, second, "0 0 0", "0 0 0", angularMin, angularMax, properties});
}

inline BulletJoint& jointOf(const LoadedWorld& loaded, std::size_t index = 0) {
    return dynamic_cast<BulletJoint&>(*loaded.joints.at(index));
}

/// How far the two attachments of a joint are apart.
inline double gapOf(const BulletJoint& joint) {
    const Pose first = joint.getFirstFrame();
    const Pose second = joint.getSecondFrame();
    return std::hypot(first(0, 3) - second(0, 3), first(1, 3) - second(1, 3), first(2, 3) - second(2, 3));
}

} // namespace tessarin::dynamics::bullet
