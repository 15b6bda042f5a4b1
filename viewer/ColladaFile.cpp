#include <viewer/ColladaFile.h>

#include <viewer/BodyNodes.h>
#include <viewer/ShapeGeometry.h>
#include <viewer/ViewerError.h>

#include <xml_parser/XMLNode.h>

#include <osg/ComputeBoundsVisitor>
#include <osgDB/FileNameUtils>
#include <osgDB/ReadFile>
#include <osgDB/Registry>

#include <charconv>
#include <sstream>
#include <unordered_map>
#include <vector>

namespace tessarin::viewer {

using xml_parser::XMLNode;

namespace {

/// With the "%20" of an URL as the characters that they stand for.
std::string unescaped(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char code = 0;
        const char* const digits = text.data() + i + 1;
        const bool isEscape =
            text[i] == '%' && i + 2 < text.size() && std::from_chars(digits, digits + 2, code, 16).ptr == digits + 2;
        result += isEscape ? char(code) : text[i];
        i += isEscape ? 2 : 0;
    }
    return result;
}

using NodesByUrl = std::unordered_map<std::string, const XMLNode*>;

void collectNodes(const XMLNode& element, NodesByUrl& nodes) {
    if (element.tag == "node")
        nodes.emplace("#" + element.getAttributeValue("id"), &element);
    for (int i = 0; i < element.getNumChildren(); ++i)
        collectNodes(*element.getChild(i), nodes);
}

/// A node that holds an instance of itself, directly or by way of others; null if there is none.
const XMLNode* findNodeInItself(const XMLNode& root) {
    NodesByUrl nodes;
    collectNodes(root, nodes);
    std::unordered_map<const XMLNode*, bool> isAbove; // what comes next, of each element that has been met
    std::vector<const XMLNode*> open = {&root};
    while (!open.empty()) {
        const XMLNode& element = *open.back();
        const auto [above, isNew] = isAbove.emplace(&element, true);
        if (!isNew) {
            above->second = false; // all that it holds has been seen
            open.pop_back();
            continue;
        }
        std::vector<const XMLNode*> below;
        below.reserve(static_cast<std::size_t>(element.getNumChildren()) + 1);
        for (int i = 0; i < element.getNumChildren(); ++i)
            below.push_back(element.getChild(i));
        const auto instanced =
            element.tag == "instance_node" ? nodes.find(element.getAttributeValue("url")) : nodes.end();
        if (instanced != nodes.end())
            below.push_back(instanced->second);
        for (const XMLNode* next : below) {
            const auto met = isAbove.find(next);
            if (met == isAbove.end())
                open.push_back(next);
            else if (met->second)
                return next;
        }
    }
    return nullptr;
}

} // namespace

ColladaFile::ColladaFile(const std::filesystem::path& file) : path(file), reader(file) {
    XMLNode& root = *reader.getRoot();
    if (root.tag != "COLLADA")
        throw ViewerError(path.string() + ": no COLLADA file, its root element is " + root.tag);
    // OpenSceneGraph would follow that until the stack ends.
    if (const XMLNode* const node = findNodeInItself(root))
        throw ViewerError(path.string() + ": the node " + node->getAttributeValue("id") + " contains itself");
    collectBodyNodes(root);
    isChanged = turnConvexMeshesIntoMeshes(root);
    isChanged = instanceVisualScene(root) || isChanged;
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

    const ShapeGeometry shapeGeometry(*reader.getRoot());
    for (const auto& [id, nodePath] : findNodesById(*model, bodyNodeIds)) {
        osg::Group* const node = nodePath.back()->asGroup();
        osg::ComputeBoundsVisitor bounds;
        node->accept(bounds);
        if (!bounds.getBoundingBox().valid())
            if (const osg::ref_ptr<osg::Node> shapes = shapeGeometry.make(id))
                node->addChild(shapes);
    }
    return model;
}

void ColladaFile::collectBodyNodes(const XMLNode& element) {
    for (int i = 0; i < element.getNumChildren(); ++i) {
        const XMLNode& child = *element.getChild(i);
        if (child.tag == "instance_rigid_body") {
            const std::string target = child.getAttributeValue("target");
            const std::string id = target.substr(target.find('#') + 1); // all of it where there is no sign
            if (!id.empty())
                bodyNodeIds.insert({id, unescaped(id)});
        } else {
            collectBodyNodes(child);
        }
    }
}

// Where a file instances its physics alone, the nodes that bodies move are still there to be shown.
bool ColladaFile::instanceVisualScene(XMLNode& root) {
    XMLNode* const scene = root.getChild("scene", true);
    const XMLNode* const library = root.getChild("library_visual_scenes", true);
    const XMLNode* const first = library ? library->getChild("visual_scene", true) : nullptr;
    if (!scene || !first || scene->getChild("instance_visual_scene", true))
        return false;
    scene->addChild("instance_visual_scene")->attributes["url"] = "#" + first->getAttributeValue("id");
    return true;
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
