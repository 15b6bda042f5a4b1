#pragma once

#include <tests/bullet/ColladaScene.h>

#include <dynamics/bullet/BulletJoint.h>

#include <cmath>
#include <stdexcept>
#include <string>

namespace tessarin::dynamics::bullet {

/// A constraint put together piece by piece. What is left empty is left out.
struct Constraint {
    std::string first;
    std::string second;
    std::string linearMin = "0 0 0";
    std::string linearMax = "0 0 0";
    std::string angularMin = "0 0 0";
    std::string angularMax = "0 0 0";
    std::string spring;
    std::string properties;

    std::string text(const std::string& attributes) const {
        return "<rigid_constraint " + attributes + ">" + first + second + "<technique_common>" + properties +
               "<limits><linear><min>" + linearMin + "</min><max>" + linearMax +
               "</max></linear><swing_cone_and_twist><min>" + angularMin + "</min><max>" + angularMax +
               "</max></swing_cone_and_twist></limits>" + spring + "</technique_common></rigid_constraint>";
    }
};

inline std::string refAttachment(const std::string& body, const std::string& placement = "") {
    return "<ref_attachment rigid_body='" + body + "'>" + placement + "</ref_attachment>";
}

inline std::string attachment(const std::string& body, const std::string& placement = "") {
    return "<attachment rigid_body='" + body + "'>" + placement + "</attachment>";
}

inline void addConstraint(ColladaScene& scene, const std::string& name, const Constraint& constraint) {
    scene.bodies += constraint.text("sid='" + name + "'");
    scene.instances += "<instance_rigid_constraint constraint='" + name + "'/>";
}

inline BulletJoint& jointOf(const LoadedWorld& loaded, const std::string& name) {
    for (const auto& joint : loaded.joints) {
        if (joint->name == name) {
            return dynamic_cast<BulletJoint&>(*joint);
        }
    }
    throw std::runtime_error("no joint " + name);
}

/// How far the two attachments of a joint are apart.
inline double gapOf(const BulletJoint& joint) {
    const Pose first = joint.getFirstFrame();
    const Pose second = joint.getSecondFrame();
    return std::hypot(first(0, 3) - second(0, 3), first(1, 3) - second(1, 3), first(2, 3) - second(2, 3));
}

} // namespace tessarin::dynamics::bullet
