#pragma once

#include <viewer/BodyNodes.h>
#include <viewer/ModelLimits.h>
#include <viewer/QuietReader.h>

#include <osg/Node>
#include <osg/ref_ptr>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace tessarin::viewer {

/// A COLLADA file: its picture, as OpenSceneGraph reads it, with what only its physics tells.
class ColladaFile {
public:
    /// @throws ViewerError if the file is missing, not well formed, no COLLADA file, if one of its nodes contains
    /// itself, or if its picture would be larger than the limits allow.
    ColladaFile(const std::filesystem::path& path, const ModelLimits& limits);

    /// The file's visual scene as OpenSceneGraph reads it.
    /// @throws ViewerError if it can't be read.
    osg::ref_ptr<osg::Node> readPicture() const;

    /// The picture with what only the physics tells. Nodes that rigid bodies move are never empty-handed: one without
    /// geometry gets that of its body's shapes.
    /// @throws ViewerError if it can't be read.
    osg::ref_ptr<osg::Node> readModel() const;

    /// The bodies as the dynamics world knows them, each with its node.
    std::vector<BodyNode> readBodyNodes() const;

private:
    void collectBodyNodes(const xml_parser::XMLNode& element);
    static bool instanceVisualScene(xml_parser::XMLNode& root);
    bool turnConvexMeshesIntoMeshes(xml_parser::XMLNode& element);

    void dropRemoteReferences(xml_parser::XMLNode& element);

    std::filesystem::path path;
    ModelLimits limits;
    QuietReader reader;
    std::set<std::string> bodyNodeIds;
    std::string remoteReference; // the last of those that were dropped
    bool isChanged = false;
};

} // namespace tessarin::viewer
