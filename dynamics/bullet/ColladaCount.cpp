#include <dynamics/bullet/ColladaCount.h>

#include <cstdio>
#include <stdexcept>

namespace tessarin::dynamics::bullet::collada {

void requireAtMost(double limit, double count, const char* what) {
    if (count > limit) {
        char text[120];
        std::snprintf(text, sizeof(text), "it would become %.10g %s, and %.10g are allowed", count, what, limit);
        throw std::runtime_error(text);
    }
}

Counter::Count& Counter::Count::operator+=(const Count& other) {
    modelInstances += other.modelInstances;
    bodies += other.bodies;
    joints += other.joints;
    return *this;
}

void Counter::check(const Element& root, const LoadLimits& limits) {
    Count count;
    for (const Element* scene : childrenOf(&root, "scene")) {
        for (const Element* instance : childrenOf(scene, "instance_physics_scene")) {
            if (const Element* physicsScene = document.find(instance->getAttributeValue("url"), "physics_scene")) {
                count += countInstances(*physicsScene, 0);
            }
        }
    }
    requireAtMost(limits.modelInstances, count.modelInstances, "instances of physics models");
    requireAtMost(limits.bodies, count.bodies, "bodies");
    requireAtMost(limits.joints, count.joints, "joints");
}

Counter::Count Counter::countInstances(const Element& element, std::size_t depth) {
    Count count;
    for (const Element* child : childrenOf(&element)) {
        const std::string_view tag = localTag(*child);
        if (tag == "instance_physics_model") {
            count.modelInstances += 1;
            count += countInstances(*child, depth);
            if (const Element* model = document.find(child->getAttributeValue("url"), "physics_model")) {
                count += countModel(*model, depth + 1);
            }
        } else if (tag == "instance_rigid_body") {
            count.bodies += 1;
        } else if (tag == "instance_rigid_constraint") {
            count.joints += 1;
        }
    }
    return count;
}

Counter::Count Counter::countModel(const Element& model, std::size_t depth) {
    // What is nested more deeply isn't read either, and a model within itself counts as nothing while it is counted.
    const auto [known, isNew] = models.emplace(&model, Count());
    if (!isNew || depth > maxModelDepth) {
        return known->second;
    }
    Count count;
    for (const Element* nested : childrenOf(&model, "instance_physics_model")) {
        count.modelInstances += 1;
        count += countInstances(*nested, depth);
        if (const Element* inner = document.find(nested->getAttributeValue("url"), "physics_model")) {
            count += countModel(*inner, depth + 1);
        }
    }
    return models[&model] = count;
}

} // namespace tessarin::dynamics::bullet::collada
