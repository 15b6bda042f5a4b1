#pragma once

#include <agent/VisualModelComponentModelLoader.h>

#include <filesystem>

namespace tessarin::viewer {

/// Reads models for agents such that what is drawn agrees with what is simulated.
///
/// A COLLADA model comes back as two parts: the scenery, drawn where the model is drawn as a whole, and a switched-off
/// store of the nodes that rigid bodies move, where a geometry component finds its node by name. So a model agent can
/// show the scenery without drawing any body twice; see separateBodies. Geometry that the file holds only for its
/// bodies, convex meshes and analytic shapes, is shown too. Lights and cameras of the file are left out: the viewer has
/// its own.
class ModelLoader : public agent::VisualModelComponentModelLoader {
public:
    osg::ref_ptr<osg::Node> loadModel(const std::string& path) override;

    /// @throws ViewerError if there is no such file, or if it is a COLLADA file that is not well formed.
    static void check(const std::filesystem::path& path);
};

} // namespace tessarin::viewer
