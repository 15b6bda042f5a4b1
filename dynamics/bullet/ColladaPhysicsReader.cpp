#include <dynamics/bullet/ColladaPhysicsReader.h>

#include <dynamics/bullet/ColladaNumbers.h>
#include <dynamics/bullet/ColladaShapes.h>

#include <optional>
#include <utility>

namespace tessarin::dynamics::bullet::collada {

namespace {

/// Models that each hold two of the next one grow beyond all bounds in a few lines.
constexpr int maxModelInstances = 10000;

constexpr double radiansPerDegree = 3.14159265358979323846 / 180;

/// The last step of a path of sids, without the sign of a reference.
std::string lastStep(const std::string& reference) {
    std::string_view step = trimmed(reference);
    const std::size_t separator = step.find_last_of("#/");
    return std::string(separator == std::string_view::npos ? step : step.substr(separator + 1));
}

const Element* bodyIn(const Element* model, const std::string& name) {
    const std::vector<const Element*> bodies = childrenOf(model, "rigid_body");
    for (const char* attribute : {"sid", "id", "name"}) {
        for (const Element* body : bodies) {
            if (body->getAttributeValue(attribute) == name) {
                return body;
            }
        }
    }
    return nullptr;
}

/// A `technique_common`, or the element itself where the properties stand in it directly.
const Element* propertiesOf(const Element& element) {
    const Element* technique = childOf(&element, "technique_common");
    return technique ? technique : &element;
}

} // namespace

PhysicsReader::PhysicsReader(const Document& file, const Element& rootElement)
    : document(file), root(rootElement), nodes(file, rootElement), meshes(file) {}

Physics PhysicsReader::read() {
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
    return std::move(physics);
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
    readInstances(scene, nullptr);
}

void PhysicsReader::readInstances(const Element& instance, const Element* model) {
    for (const Element* child : childrenOf(&instance)) {
        if (localTag(*child) == "instance_physics_model") {
            readModelInstance(*child);
        } else if (localTag(*child) == "instance_rigid_body") {
            readBodyInstance(*child, model);
        }
    }
}

void PhysicsReader::readModelInstance(const Element& instance) {
    if (++modelInstances >= maxModelInstances) {
        if (modelInstances == maxModelInstances) {
            document.complain(instance, "there are too many instances of physics models, the rest is left out");
        }
        return;
    }
    const Element* model = document.find(instance.getAttributeValue("url"), "physics_model");
    if (!model) {
        document.complain(instance, "there is no such physics model");
    }
    readInstances(instance, model);
    if (!model) {
        return;
    }
    if (!openModels.insert(model).second) {
        document.complain(instance, "the physics model contains itself");
        return;
    }
    for (const Element* nested : childrenOf(model, "instance_physics_model")) {
        readModelInstance(*nested);
    }
    openModels.erase(model);
}

const Element* PhysicsReader::findBody(const Element& instance, const Element* model) const {
    const std::string name = lastStep(instance.getAttributeValue("body"));
    if (name.empty()) {
        const std::vector<const Element*> bodies = childrenOf(model, "rigid_body");
        return bodies.size() == 1 ? bodies[0] : nullptr;
    }
    if (const Element* body = bodyIn(model, name)) {
        return body;
    }
    for (const Element* nested : childrenOf(model, "instance_physics_model")) {
        const Element* nestedModel = document.find(nested->getAttributeValue("url"), "physics_model");
        if (const Element* body = bodyIn(nestedModel, name)) {
            return body;
        }
    }
    for (const Element* library : childrenOf(&root, "library_physics_models")) {
        for (const Element* anyModel : childrenOf(library, "physics_model")) {
            if (const Element* body = bodyIn(anyModel, name)) {
                return body;
            }
        }
    }
    return nullptr;
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

void PhysicsReader::readBodyInstance(const Element& instance, const Element* model) {
    const Element* body = findBody(instance, model);
    const Element* overrides = childOf(&instance, "technique_common");
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
    result.nodeToWorld = nodes.nodeToWorld(*node);
    if (!isFinite(result.nodeToWorld)) {
        document.complain(instance, "the place of its node is out of range, the body is left out");
        return;
    }
    if (body) {
        readProperties(propertiesOf(*body), result.body);
    }
    readProperties(overrides, result.body);
    readMotion(overrides, result);
    physics.bodies.push_back(std::move(result));
}

void PhysicsReader::readProperties(const Element* technique, RigidBody& body) {
    if (const Element* dynamic = childOf(technique, "dynamic")) {
        body.dynamic = readBool(dynamic->text);
    }
    if (const Element* mass = childOf(technique, "mass")) {
        body.mass = numberIn(mass);
        if (!body.mass) {
            document.complain(*technique, "<mass> is no number and is left out");
        }
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
