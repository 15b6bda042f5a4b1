#include <dynamics/bullet/ColladaPhysicsReader.h>

#include <dynamics/bullet/BodyNames.h>
#include <dynamics/bullet/ColladaAnimations.h>
#include <dynamics/bullet/ColladaCount.h>
#include <dynamics/bullet/ColladaMaterials.h>
#include <dynamics/bullet/ColladaNumbers.h>
#include <dynamics/bullet/ColladaShapes.h>

#include <optional>
#include <utility>

namespace tessarin::dynamics::bullet::collada {

namespace {

/// Of what a file may ask for, in seconds.
constexpr double shortestStep = 1e-5;
constexpr double longestStep = 0.25;

constexpr double radiansPerDegree = 3.14159265358979323846 / 180;

/// A `technique_common`, or the element itself where the properties stand in it directly.
const Element* propertiesOf(const Element& element) {
    const Element* technique = childOf(&element, "technique_common");
    return technique ? technique : &element;
}

} // namespace

PhysicsReader::PhysicsReader(const Document& file, const Element& rootElement, const LoadLimits& loadLimits)
    : document(file), root(rootElement), limits(loadLimits), nodes(file, rootElement), meshes(file),
      models(file, rootElement), constraints(file, models, nodes) {}

std::vector<BodyInstance> PhysicsReader::readBodiesAlone() {
    Counter(document).check(root, limits);
    readsBodiesAlone = true;
    readScenes();
    return std::move(physics.bodies);
}

Physics PhysicsReader::read() {
    Counter(document).check(root, limits);
    const Element* upAxis = childOf(childOf(&root, "asset"), "up_axis");
    if (upAxis && trimmed(upAxis->text) == "X_UP") {
        document.complain(*upAxis,
                          "OpenSceneGraph turns X_UP so that +X points down: picture and physics come in upside down");
    }
    readScenes();
    physics.constraints = constraints.resolve();
    complainOfAnimations(document, root, bodyNodes);
    return std::move(physics);
}

void PhysicsReader::readScenes() {
    std::set<const Element*> read;
    for (const Element* scene : childrenOf(&root, "scene")) {
        for (const Element* instance : childrenOf(scene, "instance_physics_scene")) {
            const Element* physicsScene = document.find(instance->getAttributeValue("url"), "physics_scene");
            if (!physicsScene) {
                document.complain(*instance, "there is no such physics scene");
            } else if (read.insert(physicsScene).second) {
                readScene(*physicsScene);
            }
        }
    }
    makeNamesDiffer(document, root, physics.bodies);
}

void PhysicsReader::readScene(const Element& scene) {
    if (const Element* gravity = childOf(propertiesOf(scene), "gravity")) {
        Vector3 acceleration{};
        if (readNumbers(gravity->text, acceleration)) {
            physics.gravity = upAxisTurn(root) * acceleration;
        } else {
            document.complain(scene, "<gravity> needs three numbers and is left out");
        }
    }
    if (const Element* timeStep = childOf(propertiesOf(scene), "time_step")) {
        const std::optional<double> seconds = numberIn(timeStep);
        if (seconds && *seconds >= shortestStep && *seconds <= longestStep) {
            physics.timeStep = seconds;
        } else {
            document.complain(scene, "<time_step> is no time that a step can take and is left out");
        }
    }
    readInstances(scene, {nullptr, 0, {upAxisTurn(root), {0, 0, 0}}, {}});
}

void PhysicsReader::readInstances(const Element& instance, const Scope& scope) {
    for (const Element* child : childrenOf(&instance)) {
        const std::string_view tag = localTag(*child);
        if (tag == "instance_physics_model") {
            readModelInstance(*child, scope);
        } else if (tag == "instance_rigid_body") {
            readBodyInstance(*child, scope);
        } else if (tag == "instance_rigid_constraint") {
            constraints.addConstraint(scope.number, *child, scope.model, scope.frame);
        }
    }
}

void PhysicsReader::readModelInstance(const Element& instance, const Scope& outer) {
    requireAtMost(limits.modelInstances, ++modelInstances, "instances of physics models");
    const Element* model = document.find(instance.getAttributeValue("url"), "physics_model");
    if (!model) {
        document.complain(instance, "there is no such physics model");
    }
    const Scope scope = enter(instance, model, outer);
    readInstances(instance, scope);
    if (!model) {
        return;
    }
    if (openModels.size() >= maxModelDepth) {
        document.complain(instance, "the physics models are nested too deeply, the rest is left out");
        return;
    }
    if (!openModels.insert(model).second) {
        document.complain(instance, "the physics model contains itself");
        return;
    }
    for (const Element* nested : childrenOf(model, "instance_physics_model")) {
        readModelInstance(*nested, scope);
    }
    openModels.erase(model);
}

PhysicsReader::Scope PhysicsReader::enter(const Element& instance, const Element* model, const Scope& outer) {
    Scope scope = {model, models.enter(outer.number, instance), outer.frame, outer.parents};
    const Affine placement = placementOf(document, instance);
    scope.frame = scope.frame * placement;
    const std::string parent = instance.getAttributeValue("parent");
    const Element* node = parent.empty() ? nullptr : nodes.find(parent);
    if (node) {
        // The node's own place has the turn in it already.
        const Affine turn = {upAxisTurn(root), {0, 0, 0}};
        scope.parents.push_back({node, rigidInverse(turn) * nodes.nodeToWorld(*node)});
        scope.frame = scope.frame * scope.parents.back().place;
    } else if (!parent.empty()) {
        document.complain(instance, "there is no node '" + parent + "' to be its parent");
    }
    if (placement.linear != identityMatrix3 || placement.translation != Vector3{0, 0, 0}) {
        scope.parents.push_back({nullptr, placement});
    }
    return scope;
}

Affine PhysicsReader::placeOf(const Element& node, const Scope& scope) const {
    const Affine turn = {upAxisTurn(root), {0, 0, 0}};
    Affine place = turn;
    for (const Parent& parent : scope.parents) {
        // A node below its parent is where it is because of that.
        if (!parent.node || !nodes.isWithin(node, *parent.node)) {
            place = place * parent.place;
        }
    }
    return place * rigidInverse(turn) * nodes.nodeToWorld(node);
}

const Element* PhysicsReader::findTargetNode(const Element& instance, const Element* body) const {
    const std::string target = instance.getAttributeValue("target");
    if (!target.empty()) {
        const Element* node = nodes.find(target);
        if (!node) {
            document.complain(instance, "there is no node '" + target + "', the body is left out");
        }
        return node;
    }
    for (const char* attribute : {"sid", "name", "id"}) {
        const std::string name = body ? body->getAttributeValue(attribute) : std::string();
        const Element* node = name.empty() ? nullptr : nodes.find(name);
        if (node) {
            document.complain(instance, "names no target, the node '" + name + "' is taken for it");
            return node;
        }
    }
    document.complain(instance, "names no target, the body is left out");
    return nullptr;
}

void PhysicsReader::readBodyInstance(const Element& instance, const Scope& scope) {
    const Models::Found found =
        models.find(scope.number, scope.model, "rigid_body", instance.getAttributeValue("body"));
    const Element* body = found.element;
    const Element* overrides = propertiesOf(instance);
    if (!body && !childOf(overrides, "shape")) {
        document.complain(instance, "there is no such rigid body, it is left out");
        return;
    }
    const Element* node = findTargetNode(instance, body);
    if (!node) {
        return;
    }
    BodyInstance result;
    result.label = describe(instance);
    result.name = Nodes::nameOf(*node);
    for (const Element* other : {node, body}) {
        // What the picture doesn't name, an agent should still be found by.
        for (const char* attribute : {"sid", "name", "id"}) {
            result.name = result.name.empty() && other ? other->getAttributeValue(attribute) : result.name;
        }
    }
    result.nodeToWorld = scope.parents.empty() ? nodes.nodeToWorld(*node) : placeOf(*node, scope);
    if (!isFinite(result.nodeToWorld)) {
        document.complain(instance, "the place of its node is out of range, the body is left out");
        return;
    }
    result.nodeId = node->getAttributeValue("id");
    if (readsBodiesAlone) {
        physics.bodies.push_back(std::move(result));
        return;
    }
    if (body) {
        readProperties(propertiesOf(*body), result.body);
    }
    readProperties(overrides, result.body);
    readMotion(overrides, result);
    countShapes(result.body);
    constraints.addBody(found.scope, body, *node, physics.bodies.size());
    bodyNodes.insert(node);
    physics.bodies.push_back(std::move(result));
}

void PhysicsReader::readProperties(const Element* technique, RigidBody& body) {
    readFlag(document, technique, "dynamic", body.dynamic);
    if (const Element* mass = childOf(technique, "mass")) {
        body.mass = numberIn(mass);
        if (!body.mass) {
            document.complain(*technique, "<mass> is no number and is left out");
        }
    }
    if (const Element* inertia = childOf(technique, "inertia")) {
        Vector3 moments{};
        if (readNumbers(inertia->text, moments)) {
            body.inertia = moments;
        } else {
            document.complain(*technique, "<inertia> needs three numbers and is left out");
        }
    }
    if (const Element* frame = childOf(technique, "mass_frame")) {
        body.massFrame = placementOf(document, *frame);
    }
    if (const std::optional<Material> material = readMaterial(document, technique)) {
        body.material = material;
    }
    const std::vector<const Element*> shapes = childrenOf(technique, "shape");
    if (!shapes.empty()) {
        body.shapes.clear();
    }
    for (const Element* element : shapes) {
        if (std::optional<Shape> shape = readShape(document, *element, meshes)) {
            body.shapes.push_back(std::move(*shape));
        }
    }
}

void PhysicsReader::countShapes(const RigidBody& body) {
    for (const Shape& shape : body.shapes) {
        const auto* mesh = std::get_if<MeshShape>(&shape.geometry);
        if (mesh && mesh->mesh) {
            triangleCount += static_cast<double>(mesh->mesh->vertices.size() + mesh->mesh->triangles.size());
        }
    }
    shapeCount += static_cast<double>(body.shapes.size());
    requireAtMost(limits.shapes, shapeCount, "shapes");
    requireAtMost(limits.triangles, triangleCount, "triangles and vertices");
}

void PhysicsReader::readMotion(const Element* technique, BodyInstance& instance) const {
    const Matrix3 turn = upAxisTurn(root);
    const auto readTurned = [&](const char* tag, double unit, Vector3& value) {
        const Element* element = childOf(technique, tag);
        Vector3 numbers{};
        if (element && readNumbers(element->text, numbers)) {
            value = turn * numbers * unit;
        } else if (element) {
            document.complain(*element, "needs three numbers and is left out");
        }
    };
    readTurned("velocity", 1, instance.velocity);
    readTurned("angular_velocity", radiansPerDegree, instance.angularVelocity);
}

} // namespace tessarin::dynamics::bullet::collada
