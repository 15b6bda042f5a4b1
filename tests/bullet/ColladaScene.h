#pragma once

#include <dynamics/DynamicsBody.h>
#include <dynamics/DynamicsBodyFunctor.h>
#include <dynamics/DynamicsJoint.h>
#include <dynamics/bullet/BulletDynamicsWorld.h>

#include <gmtl/Matrix.h>
#include <gmtl/Vec.h>

#include <algorithm>
#include <cmath>
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

inline std::string shape(const std::string& geometry) {
    return "<shape>" + geometry + "</shape>";
}

inline std::string box(const std::string& half, const std::string& more = "") {
    return shape("<box><half_extents>" + half + "</half_extents></box>" + more);
}

inline std::string ball(double radius = 0.5, const std::string& more = "") {
    return shape("<sphere><radius>" + std::to_string(radius) + "</radius></sphere>" + more);
}

inline std::string mesh(const std::string& id) {
    return shape("<instance_geometry url='#" + id + "'/>");
}

inline std::string translate(double x, double y, double z) {
    return "<translate>" + std::to_string(x) + " " + std::to_string(y) + " " + std::to_string(z) + "</translate>";
}

/// A material that sticks and slides alike.
inline std::string surface(double friction, double restitution) {
    const std::string value = std::to_string(friction);
    return "<physics_material><technique_common><dynamic_friction>" + value + "</dynamic_friction><restitution>" +
           std::to_string(restitution) + "</restitution><static_friction>" + value +
           "</static_friction></technique_common></physics_material>";
}

const std::string fixed = "<dynamic>false</dynamic>";
const std::string ground = fixed + shape("<plane><equation>0 0 1 0</equation></plane>");

/// A COLLADA document put together piece by piece.
struct ColladaScene {
    explicit ColladaScene(const std::string& gravityOfIt = "0 0 -10") : gravity(gravityOfIt) {}

    std::string upAxis = "<up_axis>Z_UP</up_axis>";
    std::string gravity;
    std::string geometries;
    std::string nodes;
    std::string bodies;
    std::string instances;
    std::string models;

    /// A node, a body of its name and the instance that ties the two.
    ColladaScene& add(const std::string& name, const std::string& transforms, const std::string& properties,
                      const std::string& overrides = "") {
        nodes += "<node id='" + name + "'>" + transforms + "</node>";
        bodies += "<rigid_body sid='" + name + "'><technique_common>" + properties + "</technique_common></rigid_body>";
        instances += "<instance_rigid_body body='" + name + "' target='#" + name + "'><technique_common>" + overrides +
                     "</technique_common></instance_rigid_body>";
        return *this;
    }

    std::string text() const {
        return "<COLLADA xmlns='http://www.collada.org/2005/11/COLLADASchema' version='1.4.1'><asset>"
               "<created>2024-01-01T00:00:00Z</created><modified>2024-01-01T00:00:00Z</modified>" +
               upAxis + "</asset><library_geometries>" + geometries +
               "</library_geometries><library_visual_scenes><visual_scene id='view'>" + nodes +
               "</visual_scene></library_visual_scenes><library_physics_models><physics_model id='model'>" + bodies +
               "</physics_model>" + models + "</library_physics_models><library_physics_scenes><physics_scene id='p'>" +
               "<instance_physics_model url='#model'>" + instances +
               "</instance_physics_model><technique_common><gravity>" + gravity +
               "</gravity></technique_common></physics_scene></library_physics_scenes><scene><instance_physics_scene "
               "url='#p'/><instance_visual_scene url='#view'/></scene></COLLADA>";
    }
};

/// A file that goes with this object.
class ScratchFile {
public:
    explicit ScratchFile(const std::string& text) {
        static int count = 0;
        const std::string name = "tessarin_" + std::to_string(getpid()) + "_" + std::to_string(++count) + ".dae";
        path = (std::filesystem::temp_directory_path() / name).string();
        std::ofstream(path) << text;
    }
    ~ScratchFile() { std::remove(path.c_str()); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    std::string path;
};

/// A world with what a document holds.
struct LoadedWorld final : DynamicsBodyFunctor {
    LoadedWorld() = default;
    explicit LoadedWorld(const ColladaScene& scene) { load(scene.text()); }

    void visitJoint(DynamicsJoint* joint) override { joints.emplace_back(joint); }
    void visitBody(DynamicsBody* newBody) override { bodies.emplace_back(newBody); }

    void load(const std::string& text, const Pose& placement = Pose()) {
        const ScratchFile file(text);
        world->loadScene(file.path, placement, *this);
    }

    LoadedWorld& run(int steps) {
        for (int i = 0; i < steps; ++i) {
            world->step(world->getFixedStep());
        }
        return *this;
    }

    DynamicsBody& body(const std::string& name) const {
        for (const auto& candidate : bodies) {
            if (candidate->getName() == name) {
                return *candidate;
            }
        }
        throw std::runtime_error("no body " + name);
    }

    static Pose poseOf(DynamicsBody& body) {
        Pose pose;
        body.getMatrix(pose);
        return pose;
    }

    Pose pose(const std::string& name) const { return poseOf(body(name)); }

    /// A coordinate of a body's position.
    double at(const std::string& name, unsigned axis) const { return pose(name)(axis, 3); }

    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (const auto& each : bodies) {
            result.push_back(each->getName());
        }
        return result;
    }

    /// The elements of all poses.
    std::vector<double> numbers() const {
        std::vector<double> result;
        for (const auto& each : bodies) {
            const Pose pose = poseOf(*each);
            result.insert(result.end(), pose.getData(), pose.getData() + 16);
        }
        return result;
    }

    bool areNumbers() const {
        const std::vector<double> all = numbers();
        return std::all_of(all.begin(), all.end(), [](double number) { return std::isfinite(number); });
    }

    std::vector<std::unique_ptr<DynamicsJoint>> joints;
    std::vector<std::unique_ptr<DynamicsBody>> bodies;
    // Goes first, so that every test has bodies that outlive their world.
    std::unique_ptr<BulletDynamicsWorld> world = std::make_unique<BulletDynamicsWorld>();
};

inline std::string faces(const std::string& tag, const std::string& lists) {
    return "<" + tag + "><input semantic='VERTEX' offset='0'/>" + lists + "</" + tag + ">";
}

inline std::string geometry(const std::string& id, const std::string& positions, const std::string& primitives,
                            const std::string& tag = "mesh", const std::string& accessor = "stride='3'") {
    return "<geometry id='" + id + "'><" + tag + "><source id='" + id + "-p'><float_array id='" + id + "-a'>" +
           positions + "</float_array><technique_common><accessor source='#" + id + "-a' " + accessor +
           "/></technique_common></source><vertices><input semantic='POSITION' source='#" + id + "-p'/></vertices>" +
           primitives + "</" + tag + "></geometry>";
}

/// The mesh of an axis-aligned box whose faces are written as polylist, polygons, triangles, tristrips or trifans.
/// Normals take the second index of each corner, and something stands before and between the positions.
inline std::string boxGeometry(const std::string& id, const std::string& half, const std::string& primitives,
                               const std::string& tag = "mesh") {
    std::string positions = "7 ";
    for (int i = 0; i < 8; ++i) {
        for (const int bit : {1, 2, 4}) {
            positions += (i & bit ? "" : "-") + half + "\r\n";
        }
        positions += "9 ";
    }
    const int quads[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    const bool isOneList = primitives == "triangles" || primitives == "polylist";
    const std::string order = primitives == "triangles" ? "012023" : primitives == "tristrips" ? "0132" : "0123";
    std::string lists = primitives == "polylist" ? "<vcount>4 4 4 4 4 4</vcount><p>" : isOneList ? "<p>" : "";
    for (const auto& quad : quads) {
        lists += isOneList ? "" : "<p>";
        for (const char place : order) {
            lists += std::to_string(quad[place - '0']) + " 0\t";
        }
        lists += isOneList ? "" : "</p>";
    }
    return geometry(id, positions,
                    faces(primitives, "<input semantic='NORMAL' offset='1'/>" + lists + (isOneList ? "</p>" : "")), tag,
                    "stride='4' offset='1' count='8'");
}

} // namespace tessarin::dynamics::bullet
