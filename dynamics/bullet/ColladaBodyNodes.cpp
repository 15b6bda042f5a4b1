#include <dynamics/bullet/ColladaBodyNodes.h>

#include <dynamics/bullet/ColladaDocument.h>
#include <dynamics/bullet/ColladaPhysicsReader.h>

#include <exception>

namespace tessarin::dynamics::bullet {

std::vector<ColladaBodyNode> readColladaBodyNodes(const std::string& filePath, const LoadLimits& limits) {
    std::vector<ColladaBodyNode> nodes;
    try {
        collada::Document document(filePath, collada::Document::SILENT);
        const collada::Element* const root = document.load();
        if (!root) {
            return nodes;
        }
        for (const collada::BodyInstance& body : collada::PhysicsReader(document, *root, limits).readBodiesAlone()) {
            nodes.push_back({body.nodeId, body.name, {}});
            toGmtl(body.nodeToWorld, nodes.back().nodeToWorld);
        }
    } catch (const std::exception&) {
        nodes.clear(); // as the world, which says why
    }
    return nodes;
}

} // namespace tessarin::dynamics::bullet
