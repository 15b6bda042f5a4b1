#include <viewer/ColladaFile.h>

#include <viewer/ModelReading.h>
#include <viewer/PictureCheck.h>
#include <viewer/ShapeGeometry.h>
#include <viewer/ViewerError.h>

#include <dynamics/bullet/ColladaBodyNodes.h>
#include <sceneutils/NameNodes.h>
#include <xml_parser/XMLNode.h>

#include <osg/ComputeBoundsVisitor>
#include <osgDB/ReadFile>
#include <osgDB/Registry>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <sstream>
#include <utility>

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

bool isRemote(const std::string& reference) {
    const std::size_t end = reference.find("://");
    return end != std::string::npos && end > 0 && reference.compare(0, end, "file") != 0 &&
           std::all_of(reference.begin(), reference.begin() + static_cast<std::ptrdiff_t>(end),
                       [](unsigned char c) { return std::isalnum(c) || c == '+' || c == '-' || c == '.'; });
}

} // namespace

ColladaFile::ColladaFile(const std::filesystem::path& file, const ModelLimits& modelLimits)
    : path(file), limits(modelLimits), reader(file) {
    XMLNode& root = *reader.getRoot();
    if (root.tag != "COLLADA")
        throw ViewerError(path.string() + ": no COLLADA file, its root element is " + root.tag);
    try {
        checkPicture(root, limits);
    } catch (const ViewerError& error) {
        throw ViewerError(path.string() + ": " + error.what());
    }
    collectBodyNodes(root);
    isChanged = turnConvexMeshesIntoMeshes(root);
    isChanged = instanceVisualScene(root) || isChanged;
    dropRemoteReferences(root);
    isChanged = isChanged || !remoteReference.empty();
}

osg::ref_ptr<osg::Node> ColladaFile::readPicture() const {
    osgDB::ReaderWriter* const plugin = osgDB::Registry::instance()->getReaderWriterForExtension("dae");
    if (!plugin)
        throw ViewerError(path.string() + ": OpenSceneGraph's plugin for COLLADA files is missing");
    const std::filesystem::path whole = std::filesystem::absolute(path);
    return readInChild(path, limits, [&]() -> osg::ref_ptr<osg::Node> {
        if (!remoteReference.empty())
            tellParent(path.string() + ": refers to " + remoteReference + "; servers aren't asked for anything");
        if (!isChanged)
            return osgDB::readRefNodeFile(whole.string());
        const osg::ref_ptr<osgDB::Options> options = new osgDB::Options;
        options->getDatabasePathList().push_back(whole.parent_path().string());
        std::stringstream text;
        reader.getRoot()->printBranch(text, 0);
        text << '\0'; // the plugin copies the stream byte for byte and takes the copy for a C string
        return plugin->readNode(text, options).getNode();
    });
}

osg::ref_ptr<osg::Node> ColladaFile::readModel() const {
    const osg::ref_ptr<osg::Node> model = readPicture();
    const ShapeGeometry shapeGeometry(*reader.getRoot());
    const std::vector<std::string> ids(bodyNodeIds.begin(), bodyNodeIds.end());
    for (const auto& [id, paths] : sceneutils::findNodesById(*model, ids)) {
        osg::Group* const node = paths.front().back()->asGroup();
        osg::ComputeBoundsVisitor bounds;
        node->accept(bounds);
        if (!bounds.getBoundingBox().valid())
            if (const osg::ref_ptr<osg::Node> shapes = shapeGeometry.make(id))
                node->addChild(shapes);
    }
    return model;
}

std::vector<BodyNode> ColladaFile::readBodyNodes() const {
    std::vector<BodyNode> nodes;
    for (const dynamics::bullet::ColladaBodyNode& body :
         dynamics::bullet::readColladaBodyNodes(path.string(), limits.ofPhysics()))
        nodes.push_back({body.nodeId, body.bodyName, osg::Matrixd(body.nodeToWorld.getData())});
    return nodes;
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

// The plugin would ask the server that a reference names.
void ColladaFile::dropRemoteReferences(XMLNode& element) {
    for (const char* const name : {"url", "source", "target", "parent", "convex_hull_of"}) {
        const auto reference = element.attributes.find(name);
        if (reference != element.attributes.end() && isRemote(reference->second))
            remoteReference = std::exchange(reference->second, "#");
    }
    if (element.tag == "skeleton" && isRemote(element.text))
        remoteReference = std::exchange(element.text, {});
    if (element.tag == "init_from" && isRemote(element.text))
        remoteReference = element.text; // an image, which the plugin leaves out without a word
    for (int i = 0; i < element.getNumChildren(); ++i)
        dropRemoteReferences(*element.getChild(i));
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
