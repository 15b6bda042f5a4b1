#pragma once

#include <string>

namespace tessarin::viewer {

/// A COLLADA file with a unit cube as the geometry "cube", and a convex one as "hull".
/// @param nodes the inside of its visual scene.
/// @param bodies the insides of its physics model and of the instance of it.
inline std::string colladaText(const std::string& upAxis, const std::string& nodes, const std::string& bodies = {},
                               const std::string& instances = {}) {
    const auto geometry = [](const std::string& id, const std::string& tag) {
        return "<geometry id='" + id + "'><" + tag + "><source id='" + id + "-p'><float_array id='" + id +
               "-a' count='24'>0 0 0 1 0 0 1 1 0 0 1 0 0 0 1 1 0 1 1 1 1 0 1 1</float_array><technique_common>"
               "<accessor source='#" +
               id +
               "-a' count='8' stride='3'><param name='X' type='float'/><param name='Y' type='float'/>"
               "<param name='Z' type='float'/></accessor></technique_common></source><vertices id='" +
               id + "-v'><input semantic='POSITION' source='#" + id +
               "-p'/></vertices><triangles count='12'><input semantic='VERTEX' source='#" + id +
               "-v' offset='0'/><p>0 2 1 0 3 2 4 5 6 4 6 7 0 1 5 0 5 4 1 2 6 1 6 5 2 3 7 2 7 6 3 0 4 3 4 7</p>"
               "</triangles></" +
               tag + "></geometry>";
    };
    const std::string physics =
        bodies.empty()
            ? std::string()
            : "<library_physics_models><physics_model id='bodies'>" + bodies +
                  "</physics_model></library_physics_models>"
                  "<library_physics_scenes><physics_scene id='world'><instance_physics_model url='#bodies'>" +
                  instances + "</instance_physics_model><technique_common/></physics_scene></library_physics_scenes>";
    return "<?xml version='1.0'?><COLLADA xmlns='http://www.collada.org/2005/11/COLLADASchema' version='1.4.1'><asset>"
           "<created>2026-01-01T00:00:00Z</created><modified>2026-01-01T00:00:00Z</modified><up_axis>" +
           upAxis + "</up_axis></asset><library_geometries>" + geometry("cube", "mesh") +
           geometry("hull", "convex_mesh") + "</library_geometries><library_visual_scenes><visual_scene id='scene'>" +
           nodes + "</visual_scene></library_visual_scenes>" + physics + "<scene>" +
           (bodies.empty() ? "" : "<instance_physics_scene url='#world'/>") +
           "<instance_visual_scene url='#scene'/></scene></COLLADA>";
}

inline std::string bodyText(const std::string& sid, const std::string& shapes) {
    return "<rigid_body sid='" + sid + "'><technique_common><dynamic>false</dynamic>" + shapes +
           "</technique_common></rigid_body>";
}

inline std::string instanceText(const std::string& body, const std::string& node) {
    return "<instance_rigid_body body='" + body + "' target='#" + node + "'/>";
}

} // namespace tessarin::viewer
