#include <dynamics/bullet/ColladaNodes.h>

#include <dynamics/bullet/ColladaNumbers.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace tessarin::dynamics::bullet::collada {

namespace {

constexpr double radiansPerDegree = 3.14159265358979323846 / 180;

/// The matrix of a view, as the plugin takes it, and not the place of the eye.
Affine lookAt(const std::array<double, 9>& n) {
    const Vector3 eye = {n[0], n[1], n[2]};
    const Vector3 forward = normalized(Vector3{n[3], n[4], n[5]} - eye);
    const Vector3 side = normalized(cross(forward, {n[6], n[7], n[8]}));
    const Matrix3 view = {side, cross(side, forward), forward * -1};
    return {view, view * eye * -1};
}

Affine skew(const std::array<double, 7>& n) {
    const Vector3 around = normalized({n[1], n[2], n[3]});
    const Vector3 along = normalized({n[4], n[5], n[6]});
    const Vector3 normal = normalized(cross(along, around));
    return {identityMatrix3 + outerProduct(along, normal) * std::sin(n[0] * radiansPerDegree), {0, 0, 0}};
}

/// False if the numbers are not what the element needs; other elements leave the placement as it is.
bool readTransform(const Element& element, Affine& placement) {
    const std::string_view tag = localTag(element);
    if (tag == "translate" || tag == "scale") {
        std::array<double, 3> n{};
        if (!readNumbers(element.text, n)) {
            return false;
        }
        placement = tag == "scale" ? Affine{diagonal(n), {0, 0, 0}} : Affine{identityMatrix3, n};
    } else if (tag == "rotate") {
        std::array<double, 4> n{};
        if (!readNumbers(element.text, n)) {
            return false;
        }
        placement = {axisRotation({n[0], n[1], n[2]}, n[3] * radiansPerDegree), {0, 0, 0}};
    } else if (tag == "matrix") {
        std::array<double, 16> n{};
        if (!readNumbers(element.text, n)) {
            return false;
        }
        placement = {{{{n[0], n[1], n[2]}, {n[4], n[5], n[6]}, {n[8], n[9], n[10]}}}, {n[3], n[7], n[11]}};
    } else if (tag == "lookat") {
        std::array<double, 9> n{};
        if (!readNumbers(element.text, n)) {
            return false;
        }
        placement = lookAt(n);
    } else if (tag == "skew") {
        std::array<double, 7> n{};
        if (!readNumbers(element.text, n)) {
            return false;
        }
        placement = skew(n);
    }
    return true;
}

/// The first node below an element with that sid.
const Element* nodeBelow(const Element& element, const std::string& sid) {
    std::vector<const Element*> open = {&element};
    while (!open.empty()) {
        const Element* place = open.back();
        open.pop_back();
        if (place != &element && place->getAttributeValue("sid") == sid) {
            return place;
        }
        const std::vector<const Element*> below = childrenOf(place, "node");
        open.insert(open.end(), below.rbegin(), below.rend());
    }
    return nullptr;
}

} // namespace

Affine placementOf(const Document& document, const Element& element) {
    Affine result;
    for (const Element* child : childrenOf(&element)) {
        Affine step;
        if (!readTransform(*child, step)) {
            document.complain(element, "<" + child->tag + "> hasn't the numbers it needs and is left out");
            continue;
        }
        result = result * step;
    }
    return result;
}

Matrix3 upAxisTurn(const Element& root) {
    const Element* upAxis = childOf(childOf(&root, "asset"), "up_axis");
    const std::string_view axis = upAxis ? trimmed(upAxis->text) : std::string_view();
    // Written out instead of computed: a turn by 90 degrees has no rounding.
    if (axis == "Z_UP") {
        return identityMatrix3;
    }
    if (axis == "X_UP") {
        return {{{0, 0, 1}, {0, 1, 0}, {-1, 0, 0}}};
    }
    return {{{1, 0, 0}, {0, 0, -1}, {0, 1, 0}}};
}

Nodes::Nodes(const Document& file, const Element& root) : document(file) {
    const Affine turn = {upAxisTurn(root), {0, 0, 0}};
    for (const Element* instance : childrenOf(childOf(&root, "scene"), "instance_visual_scene")) {
        visitAll(document.find(instance->getAttributeValue("url"), "visual_scene"), turn);
    }
    for (const Element* library : childrenOf(&root, "library_visual_scenes")) {
        for (const Element* scene : childrenOf(library, "visual_scene")) {
            places.emplace(scene, Place{turn, nullptr, 0, 0});
            visitAll(scene, turn);
        }
    }
    for (const Element* library : childrenOf(&root, "library_nodes")) {
        visitAll(library, turn);
    }
}

void Nodes::visitAll(const Element* root, const Affine& toWorld) {
    for (const Element* node : childrenOf(root, "node")) {
        visit(*node, toWorld);
    }
}

void Nodes::visit(const Element& first, const Affine& firstParentToWorld) {
    // A node that has a place already isn't entered again: that keeps nodes that instance each other from going round.
    struct Open {
        const Element* node;
        Place* parent;
    };
    std::vector<Open> open = {{&first, nullptr}};
    std::vector<Place*> visited;
    while (!open.empty()) {
        const auto [node, parent] = open.back();
        open.pop_back();
        const auto [place, isNew] = places.emplace(node, Place());
        if (!isNew) {
            continue;
        }
        Place* const self = &place->second;
        self->toWorld = (parent ? parent->toWorld : firstParentToWorld) * placementOf(document, *node);
        self->parent = parent;
        self->number = self->last = places.size();
        visited.push_back(self);
        for (const char* attribute : {"name", "sid"}) {
            const std::string name = node->getAttributeValue(attribute);
            if (!name.empty()) {
                nodesByName.emplace(name, node);
            }
        }
        std::vector<const Element*> below = childrenOf(node, "node");
        for (const Element* instance : childrenOf(node, "instance_node")) {
            if (const Element* instanced = document.find(instance->getAttributeValue("url"), "node")) {
                below.push_back(instanced);
            }
        }
        for (auto child = below.rbegin(); child != below.rend(); ++child) {
            open.push_back({*child, self});
        }
    }
    // All that is below a node was visited before anything else was.
    for (auto place = visited.rbegin(); place != visited.rend(); ++place) {
        if (Place* const parent = (*place)->parent) {
            parent->last = std::max(parent->last, (*place)->last);
        }
    }
}

const Element* Nodes::find(const std::string& target) const {
    const Element* byId = document.find(target, "node");
    if (byId) {
        return byId;
    }
    const auto byName = nodesByName.find(std::string(withoutSign(target)));
    return byName == nodesByName.end() ? findByPath(target) : byName->second;
}

const Element* Nodes::findByPath(const std::string& target) const {
    const std::vector<std::string> steps = stepsOf(target);
    if (steps.size() < 2) {
        return nullptr;
    }
    const Element* place = document.find(steps[0]);
    for (std::size_t i = 1; place && i < steps.size(); ++i) {
        place = nodeBelow(*place, steps[i]);
    }
    return place;
}

Affine Nodes::nodeToWorld(const Element& node) const {
    const auto place = places.find(&node);
    return place == places.end() ? Affine() : place->second.toWorld;
}

bool Nodes::isWithin(const Element& node, const Element& other) const {
    if (&node == &other) {
        return true;
    }
    const auto place = places.find(&node);
    const auto around = places.find(&other);
    return place != places.end() && around != places.end() && around->second.number > 0 &&
           around->second.number <= place->second.number && place->second.number <= around->second.last;
}

std::string Nodes::nameOf(const Element& node) {
    const std::string name = node.getAttributeValue("name");
    return name.empty() ? node.getAttributeValue("id") : name;
}

} // namespace tessarin::dynamics::bullet::collada
