#include <dynamics/bullet/ColladaMaterials.h>

#include <algorithm>
#include <string>

namespace tessarin::dynamics::bullet::collada {

namespace {

/// What is left out of a material is zero.
double readFactor(const Document& document, const Element* technique, const char* tag, double greatest) {
    const Element* element = childOf(technique, tag);
    const std::optional<double> number = numberIn(element);
    if (element && (!number || *number < 0)) {
        document.complain(*element, "is no number from zero on, zero is taken");
    }
    return number ? std::clamp(*number, 0.0, greatest) : 0;
}

} // namespace

std::optional<Material> readMaterial(const Document& document, const Element* owner) {
    const Element* material = childOf(owner, "physics_material");
    if (const Element* instance = childOf(owner, "instance_physics_material")) {
        material = document.find(instance->getAttributeValue("url"), "physics_material");
        if (!material) {
            document.complain(*instance, "there is no such physics material");
        }
    }
    if (!material) {
        return std::nullopt;
    }
    const Element* technique = childOf(material, "technique_common");
    technique = technique ? technique : material;
    constexpr double mostFriction = 1000;
    return Material{readFactor(document, technique, "static_friction", mostFriction),
                    readFactor(document, technique, "dynamic_friction", mostFriction),
                    readFactor(document, technique, "restitution", 1)};
}

} // namespace tessarin::dynamics::bullet::collada
