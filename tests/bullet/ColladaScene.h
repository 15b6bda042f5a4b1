#pragma once

#include <dynamics/DynamicsBody.h>
#include <dynamics/DynamicsBodyFunctor.h>
#include <dynamics/DynamicsJoint.h>
#include <dynamics/bullet/BulletDynamicsWorld.h>

#include <gmtl/Matrix.h>
#include <gmtl/Vec.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <unistd.h>

namespace tessarin::dynamics::bullet {

using Pose = gmtl::Matrix<double, 4, 4>;

/// A COLLADA document put together piece by piece.
struct ColladaScene {
    std::string upAxis = "<up_axis>Z_UP</up_axis>";
    std::string gravity = "0 0 -10";
    std::string geometries;
    std::string nodes;
    std::string bodies;
    std::string instances;

    /// A node, a body of its name and the instance that ties the two.
    ColladaScene& add(const std::string& name, const std::string& transforms, const std::string& properties,
                      const std::string& overrides = "") {
        nodes += "<node id='" + name + "'>" + transforms + "</node>";
        bodies += "<rigid_body sid='" + name + "'><technique_common>" + properties + "</technique_common></rigid_body>";
        instances += "<instance_rigid_body body='" + name + "' target='#" + name + "'><technique_common>" + overrides +
                     "</technique_common></instance_rigid_body>";
        return *this;
    }

    ColladaScene& addGround() {
        return add("ground", "", "<dynamic>false</dynamic><shape><plane><equation>0 0 1 0</equation></plane></shape>");
    }

    std::string text() const {
        return "<?xml version='1.0'?><COLLADA xmlns='http://www.collada.org/2005/11/COLLADASchema' version='1.4.1'>"
               "<asset><created>2024-01-01T00:00:00Z</created><modified>2024-01-01T00:00:00Z</modified>" +
               upAxis + "</asset><library_geometries>" + geometries +
               "</library_geometries><library_visual_scenes><visual_scene id='view'>" + nodes +
               "</visual_scene></library_visual_scenes><library_physics_models><physics_model id='model'>" + bodies +
               "</physics_model></library_physics_models><library_physics_scenes><physics_scene id='physics'>"
               "<instance_physics_model url='#model'>" +
               instances + "</instance_physics_model><technique_common><gravity>" + gravity +
               "</gravity></technique_common></physics_scene></library_physics_scenes><scene>"
               "<instance_physics_scene url='#physics'/><instance_visual_scene url='#view'/></scene></COLLADA>";
    }
};

/// A file that goes with this object.
class ScratchFile {
public:
    explicit ScratchFile(const std::string& text) {
        static int count = 0;
        path = (std::filesystem::temp_directory_path() /
                ("tessarin_" + std::to_string(getpid()) + "_" + std::to_string(++count) + ".dae"))
                   .string();
        std::ofstream(path) << text;
    }
    ~ScratchFile() { std::remove(path.c_str()); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    std::string path;
};

/// A world with what a document holds.
struct LoadedWorld final : DynamicsBodyFunctor {
    explicit LoadedWorld(const ColladaScene& scene) : LoadedWorld(scene.text()) {}
    explicit LoadedWorld(const std::string& text) {
        const ScratchFile file(text);
        world->loadScene(file.path, Pose(), *this);
    }

    void visitJoint(DynamicsJoint* joint) override { joints.emplace_back(joint); }
    void visitBody(DynamicsBody* newBody) override { bodies.emplace_back(newBody); }

    void load(const ColladaScene& scene, const Pose& placement) {
        const ScratchFile file(scene.text());
        world->loadScene(file.path, placement, *this);
    }

    void run(int steps) {
        for (int i = 0; i < steps; ++i) {
            world->step(world->getFixedStep());
        }
    }

    DynamicsBody& body(const std::string& name) const {
        for (const auto& candidate : bodies) {
            if (candidate->getName() == name) {
                return *candidate;
            }
        }
        throw std::runtime_error("no body " + name);
    }

    Pose pose(const std::string& name) const {
        Pose result;
        body(name).getMatrix(result);
        return result;
    }

    /// A coordinate of a body's position.
    double at(const std::string& name, unsigned axis) const { return pose(name)(axis, 3); }

    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (const auto& each : bodies) {
            result.push_back(each->getName());
        }
        return result;
    }

    std::vector<std::unique_ptr<DynamicsJoint>> joints;
    std::vector<std::unique_ptr<DynamicsBody>> bodies;
    // Goes first, so that every test has bodies that outlive their world.
    std::unique_ptr<BulletDynamicsWorld> world = std::make_unique<BulletDynamicsWorld>();
};

/// The mesh of an axis-aligned box as a geometry whose faces are written as `primitives` says: polylist, polygons,
/// triangles, tristrips or trifans. Normals take the second index of each corner.
inline std::string boxGeometry(const std::string& id, const std::string& half, const std::string& primitives,
                               const std::string& tag = "mesh") {
    const std::string& h = half;
    std::string positions;
    for (int i = 0; i < 8; ++i) {
        for (const int bit : {1, 2, 4}) {
            positions += (i & bit ? "" : "-") + h + "\r\n";
        }
    }
    const int faces[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    std::string lists;
    std::string counts;
    const auto corner = [](int index) { return std::to_string(index) + " 0\t"; };
    for (const auto& f : faces) {
        if (primitives == "triangles") {
            for (const int i : {0, 1, 2, 0, 2, 3}) {
                lists += corner(f[i]);
            }
        } else {
            const bool strip = primitives == "tristrips";
            const std::string face = corner(f[0]) + corner(f[1]) + corner(f[strip ? 3 : 2]) + corner(f[strip ? 2 : 3]);
            lists += primitives == "polylist" ? face : "<p>" + face + "</p>";
            counts += "4 ";
        }
    }
    if (primitives == "triangles" || primitives == "polylist") {
        lists = "<p>" + lists + "</p>";
    }
    if (primitives == "polylist") {
        lists = "<vcount>" + counts + "</vcount>" + lists;
    }
    const std::string source = "<technique_common><accessor source='#" + id +
                               "-a' count='8' stride='3'><param name='X' type='float'/><param name='Y' type='float'/>"
                               "<param name='Z' type='float'/></accessor></technique_common></source>";
    return "<geometry id='" + id + "'><" + tag + "><source id='" + id + "-p'><float_array id='" + id +
           "-a' count='24'>" + positions + "</float_array>" + source + "<source id='" + id + "-n'><float_array id='" +
           id + "-na' count='3'>0 0 1</float_array></source><vertices id='" + id +
           "-v'><input semantic='POSITION' source='#" + id + "-p'/></vertices><" + primitives +
           " count='6'><input semantic='VERTEX' offset='0' source='#" + id +
           "-v'/><input semantic='NORMAL' offset='1' "
           "source='#" +
           id + "-n'/>" + lists + "</" + primitives + "></" + tag + "></geometry>";
}

} // namespace tessarin::dynamics::bullet
