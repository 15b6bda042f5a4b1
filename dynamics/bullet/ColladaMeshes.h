#pragma once

#include <dynamics/bullet/ColladaDocument.h>
#include <dynamics/bullet/ColladaPhysics.h>

#include <memory>
#include <optional>
#include <unordered_map>

namespace tessarin::dynamics::bullet::collada {

/// Reads the positions and triangles of geometries, each once however often it is used.
///
/// Polygons are cut into triangles, around their holes. Lines are left out. A triangle with an index or a coordinate
/// that isn't there is left out, with one message for its mesh.
class Meshes {
public:
    explicit Meshes(const Document& file) : document(file) {}

    /// What an `instance_geometry`, or a `mesh` or `convex_mesh` within a shape, stands for. Nothing, with one message,
    /// if it has no mesh with vertices.
    std::optional<MeshShape> read(const Element& instanceOrMesh);

private:
    std::optional<MeshShape> readMesh(const Element& mesh, int hullDepth);
    std::optional<MeshShape> readGeometry(const Element& geometry, int hullDepth);
    std::shared_ptr<const Mesh> readData(const Element& mesh);
    std::vector<Vector3> readVertices(const Element& mesh);

    const Document& document;
    std::unordered_map<const Element*, std::shared_ptr<const Mesh>> cache;
};

} // namespace tessarin::dynamics::bullet::collada
