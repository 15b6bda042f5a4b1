#pragma once

#include <viewer/ModelLimits.h>

#include <agent/PlainModelLoader.h>

#include <filesystem>

namespace tessarin::viewer {

/// Reads models for agents such that what is drawn agrees with what is simulated.
///
/// A COLLADA model comes back as two parts: the scenery, drawn where the model is drawn as a whole, and a switched-off
/// store of the nodes that rigid bodies move, where a geometry component finds its node by name. So a model agent can
/// show the scenery without drawing any body twice; see separateBodies. Geometry that the file holds only for its
/// bodies, convex meshes and analytic shapes, is shown too. Lights and cameras of the file are left out: the viewer has
/// its own.
///
/// Models are read in a child process, also where others ask OpenSceneGraph for them; see readInChild.
class ModelLoader : public agent::PlainModelLoader {
public:
    /// The one of the program.
    static ModelLoader& instance();

    osg::ref_ptr<osg::Node> loadModel(const std::string& path) override;

    /// @throws ViewerError if the file isn't there, isn't read, can't be read, or would become larger than the limits
    /// allow.
    void check(const std::filesystem::path& path);

    void setLimits(const ModelLimits& modelLimits) { limits = modelLimits; }
    const ModelLimits& getLimits() const { return limits; }

protected:
    osg::ref_ptr<osg::Node> readModel(const std::string& path, const osgDB::Options* options) override;
    void tell(const std::string& line) override;

private:
    ModelLoader() = default;
    osg::ref_ptr<osg::Node> readPicture(const std::string& path, const osgDB::Options* options);

    ModelLimits limits;
};

} // namespace tessarin::viewer
