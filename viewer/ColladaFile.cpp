#include <viewer/ColladaFile.h>

#include <viewer/BodyNodes.h>
#include <viewer/ShapeGeometry.h>
#include <viewer/ViewerError.h>

#include <xml_parser/XMLNode.h>

#include <osg/ComputeBoundsVisitor>
#include <osgDB/FileNameUtils>
#include <osgDB/ReadFile>
#include <osgDB/Registry>

#include <sstream>

namespace tessarin::viewer {

using xml_parser::XMLNode;

ColladaFile::ColladaFile(const std::filesystem::path& file) : path(file), reader(file) {
    XMLNode& root = *reader.getRoot();
    if (root.tag != "COLLADA")
        throw ViewerError(path.string() + ": no COLLADA file, its root element is " + root.tag);
    collectBodyNodes(root);
    isChanged = turnConvexMeshesIntoMeshes(root);
}

osg::ref_ptr<osg::Node> ColladaFile::readModel() const {
    osg::ref_ptr<osg::Node> model;
    osgDB::ReaderWriter* const plugin =
        isChanged ? osgDB::Registry::instance()->getReaderWriterForExtension("dae") : nullptr;
    if (plugin) {
        const osg::ref_ptr<osgDB::Options> options = new osgDB::Options;
        options->getDatabasePathList().push_back(path.parent_path().string());
        std::stringstream text;
        reader.getRoot()->printBranch(text, 0);
        text << '\0'; // the plugin copies the stream byte for byte and takes the copy for a C string
        model = plugin->readNode(text, options).takeNode();
    } else {
        model = osgDB::readRefNodeFile(path.string());
    }
    if (!model)
        return nullptr;

    for (const auto& [id, nodePath] : findNodesById(*model, bodyNodeIds)) {
        osg::Group* const node = nodePath.back()->asGroup();
        osg::ComputeBoundsVisitor bounds;
        node->accept(bounds);
        if (!bounds.getBoundingBox().valid())
            if (const osg::ref_ptr<osg::Node> shapes = makeShapeGeometry(*reader.getRoot(), id))
                node->addChild(shapes);
    }
    return model;
}

void ColladaFile::collectBodyNodes(const XMLNode& element) {
    for (int i = 0; i < element.getNumChildren(); ++i) {
        const XMLNode& child = *element.getChild(i);
        if (child.tag == "instance_rigid_body") {
            const std::string target = child.getAttributeValue("target");
            if (target.size() > 1 && target[0] == '#')
                bodyNodeIds.insert(target.substr(1));
        } else {
            collectBodyNodes(child);
        }
    }
}

// A convex mesh is written like a mesh, and OpenSceneGraph draws nothing but meshes.
bool ColladaFile::turnConvexMeshesIntoMeshes(XMLNode& element) {
    bool changed = false;
    for (int i = 0; i < element.getNumChildren(); ++i) {
        XMLNode& child = *element.getChild(i);
        if (child.tag == "convex_mesh" && child.getChild("vertices", true)) {
            child.tag = "mesh";
            changed = true;
        } else if (child.tag != "mesh") {
            changed = turnConvexMeshesIntoMeshes(child) || changed;
        }
    }
    return changed;
}

} // namespace tessarin::viewer
