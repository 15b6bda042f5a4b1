#pragma once

#include <viewer/QuietReader.h>

#include <osg/Node>
#include <osg/ref_ptr>

#include <filesystem>
#include <set>
#include <string>

namespace tessarin::viewer {

/// A COLLADA file: its picture, as OpenSceneGraph reads it, with what only its physics tells.
class ColladaFile {
public:
    /// @throws ViewerError if the file is missing, not well formed, no COLLADA file, or if one of its nodes
    /// contains itself.
    explicit ColladaFile(const std::filesystem::path& path);

    /// The file's visual scene; null if there is none. Nodes that rigid bodies move are never empty-handed: one without
    /// geometry gets that of its body's shapes.
    osg::ref_ptr<osg::Node> readModel() const;

    /// The ids of the nodes that rigid bodies move.
    const std::set<std::string>& getBodyNodeIds() const { return bodyNodeIds; }

private:
    void collectBodyNodes(const xml_parser::XMLNode& element);
    static bool instanceVisualScene(xml_parser::XMLNode& root);
    bool turnConvexMeshesIntoMeshes(xml_parser::XMLNode& element);

    std::filesystem::path path;
    QuietReader reader;
    std::set<std::string> bodyNodeIds;
    bool isChanged = false;
};

} // namespace tessarin::viewer
