#include <dynamics/bullet/ColladaMeshes.h>

#include <dynamics/bullet/ColladaNumbers.h>
#include <dynamics/bullet/ColladaPrimitives.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessarin::dynamics::bullet::collada {

namespace {

/// How many `convex_hull_of` may lead from one to the next.
constexpr int maxHullDepth = 16;

long integerAttribute(const Element& element, const char* name, long missing) {
    long number = missing;
    NumberReader(element.getAttributeValue(name)).next(number);
    return number;
}

const Element* inputWith(const Element* element, std::string_view semantic) {
    for (const Element* input : childrenOf(element, "input")) {
        if (input->getAttributeValue("semantic") == semantic) {
            return input;
        }
    }
    return nullptr;
}

/// A source's vectors of three; nothing but the first three values of each is looked at.
std::vector<Vector3> readSource(const Document& document, const Element& source) {
    const Element* accessor = childOf(childOf(&source, "technique_common"), "accessor");
    const Element* array = accessor ? document.find(accessor->getAttributeValue("source")) : nullptr;
    if (!array || (localTag(*array) != "float_array" && localTag(*array) != "int_array")) {
        array = childOf(&source, "float_array");
    }
    if (!array) {
        return {};
    }
    const long stride = std::max(accessor ? integerAttribute(*accessor, "stride", 3) : 3, 3L);
    const long offset = std::max(accessor ? integerAttribute(*accessor, "offset", 0) : 0, 0L);
    const long count = accessor ? integerAttribute(*accessor, "count", -1) : -1;

    std::vector<Vector3> result;
    Vector3 vector{};
    NumberReader reader(array->text);
    double number = 0;
    for (long i = 0; reader.next(number) && (count < 0 || static_cast<long>(result.size()) < count); ++i) {
        const long place = i < offset ? -1 : (i - offset) % stride;
        if (place >= 0 && place < 3) {
            vector[static_cast<std::size_t>(place)] = number;
        }
        if (place == 2) {
            result.push_back(vector);
        }
    }
    return result;
}

/// Coordinates beyond this are no shape of a body: their squares don't fit the engine's single precision.
bool isUsable(const Vector3& vertex) {
    return isFinite(vertex) && std::abs(vertex[0]) < 1e15 && std::abs(vertex[1]) < 1e15 && std::abs(vertex[2]) < 1e15;
}

/// Leaves out what can't be used, and vertices that no triangle needs. True if a triangle was left out.
bool tidy(Mesh& mesh) {
    const std::size_t before = mesh.triangles.size();
    const auto isBad = [&](unsigned index) { return index >= mesh.vertices.size() || !isUsable(mesh.vertices[index]); };
    mesh.triangles.erase(std::remove_if(mesh.triangles.begin(), mesh.triangles.end(),
                                        [&](const auto& t) { return isBad(t[0]) || isBad(t[1]) || isBad(t[2]); }),
                         mesh.triangles.end());
    const bool hasLost = mesh.triangles.size() < before;
    std::vector<Vector3> kept;
    if (before == 0) {
        std::copy_if(mesh.vertices.begin(), mesh.vertices.end(), std::back_inserter(kept), isUsable);
    } else {
        constexpr unsigned unseen = std::numeric_limits<unsigned>::max();
        std::vector<unsigned> newIndices(mesh.vertices.size(), unseen);
        for (auto& triangle : mesh.triangles) {
            for (unsigned& index : triangle) {
                unsigned& newIndex = newIndices[index];
                if (newIndex == unseen) {
                    newIndex = static_cast<unsigned>(kept.size());
                    kept.push_back(mesh.vertices[index]);
                }
                index = newIndex;
            }
        }
    }
    mesh.vertices = std::move(kept);
    return hasLost;
}

} // namespace

std::optional<MeshShape> Meshes::read(const Element& instanceOrMesh) {
    std::optional<MeshShape> result;
    if (localTag(instanceOrMesh) == "instance_geometry") {
        const Element* geometry = document.find(instanceOrMesh.getAttributeValue("url"), "geometry");
        if (!geometry) {
            document.complain(instanceOrMesh, "there is no such geometry");
            return std::nullopt;
        }
        result = readGeometry(*geometry, 0);
    } else {
        result = readMesh(instanceOrMesh, 0);
    }
    if (!result) {
        document.complain(instanceOrMesh, "has no mesh with vertices");
    }
    return result;
}

std::optional<MeshShape> Meshes::readGeometry(const Element& geometry, int hullDepth) {
    for (const char* tag : {"convex_mesh", "mesh"}) {
        if (const Element* mesh = childOf(&geometry, tag)) {
            return readMesh(*mesh, hullDepth);
        }
    }
    return std::nullopt;
}

std::optional<MeshShape> Meshes::readMesh(const Element& mesh, int hullDepth) {
    const bool convex = localTag(mesh) == "convex_mesh";
    const std::string hullOf = mesh.getAttributeValue("convex_hull_of");
    if (convex && !hullOf.empty()) {
        const Element* geometry = document.find(hullOf, "geometry");
        std::optional<MeshShape> of =
            geometry && hullDepth < maxHullDepth ? readGeometry(*geometry, hullDepth + 1) : std::nullopt;
        if (of) {
            of->convex = true;
        }
        return of;
    }
    const std::shared_ptr<const Mesh> data = readData(mesh);
    return data->vertices.empty() ? std::nullopt : std::make_optional(MeshShape{data, convex});
}

std::shared_ptr<const Mesh> Meshes::readData(const Element& element) {
    std::shared_ptr<const Mesh>& cached = cache[&element];
    if (!cached) {
        const auto mesh = std::make_shared<Mesh>();
        mesh->vertices = readVertices(element);
        for (const Element* child : childrenOf(&element)) {
            appendTriangles(*child, mesh->vertices, mesh->triangles);
        }
        if (tidy(*mesh) && !mesh->vertices.empty()) {
            document.complain(element, "some triangles have vertices that aren't there or are no numbers");
        }
        cached = mesh;
    }
    return cached;
}

std::vector<Vector3> Meshes::readVertices(const Element& mesh) {
    const Element* input = inputWith(childOf(&mesh, "vertices"), "POSITION");
    const Element* source = input ? document.find(input->getAttributeValue("source"), "source") : nullptr;
    return source ? readSource(document, *source) : std::vector<Vector3>();
}

} // namespace tessarin::dynamics::bullet::collada
