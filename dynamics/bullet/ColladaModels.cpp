#include <dynamics/bullet/ColladaModels.h>

#include <vector>

namespace tessarin::dynamics::bullet::collada {

namespace {

const Element* namedIn(const Element* model, std::string_view tag, const std::string& name, std::size_t index) {
    const std::vector<const Element*> candidates = childrenOf(model, tag);
    for (const char* attribute : {"sid", "id", "name"}) {
        const Element* last = nullptr;
        std::size_t count = 0;
        for (const Element* candidate : candidates) {
            if (candidate->getAttributeValue(attribute) == name) {
                last = candidate;
                if (count++ == index) {
                    break;
                }
            }
        }
        if (last) {
            return last;
        }
    }
    return nullptr;
}

} // namespace

Models::Models(const Document& file, const Element& rootElement) : document(file), root(rootElement) {}

int Models::enter(int outer, const Element& instance) {
    return scopes.emplace(std::make_pair(outer, &instance), static_cast<int>(scopes.size()) + 1).first->second;
}

const Element* Models::modelOf(const Element& instance) const {
    return document.find(instance.getAttributeValue("url"), "physics_model");
}

Models::Found Models::find(int scope, const Element* model, std::string_view tag, const std::string& reference,
                           std::size_t index) {
    const std::vector<std::string> steps = stepsOf(reference);
    if (steps.empty()) {
        const std::vector<const Element*> candidates = childrenOf(model, tag);
        return {candidates.size() == 1 ? candidates[0] : nullptr, scope};
    }
    constexpr std::string_view instanceTag = "instance_physics_model";
    for (std::size_t i = 0; i + 1 < steps.size(); ++i) {
        // A step that names no instance is one that names a library or the model itself.
        if (const Element* instance = namedIn(model, instanceTag, steps[i], 0)) {
            scope = enter(scope, *instance);
            model = modelOf(*instance);
        }
    }
    const std::string& name = steps.back();
    if (const Element* found = namedIn(model, tag, name, index)) {
        return {found, scope};
    }
    for (const Element* nested : childrenOf(model, instanceTag)) {
        if (const Element* found = namedIn(modelOf(*nested), tag, name, index)) {
            return {found, enter(scope, *nested)};
        }
    }
    for (const Element* library : childrenOf(&root, "library_physics_models")) {
        for (const Element* anyModel : childrenOf(library, "physics_model")) {
            if (const Element* found = namedIn(anyModel, tag, name, index)) {
                return {found, scope};
            }
        }
    }
    return {};
}

} // namespace tessarin::dynamics::bullet::collada
