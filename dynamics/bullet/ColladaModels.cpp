#include <dynamics/bullet/ColladaModels.h>

#include <algorithm>
#include <array>

namespace tessarin::dynamics::bullet::collada {

namespace {

constexpr std::string_view instanceTag = "instance_physics_model";

/// What a name may stand in, in the order in which it is sought.
constexpr std::array<const char*, 3> naming = {"sid", "id", "name"};

std::string keyOf(std::string_view tag, std::string_view attribute, std::string_view name) {
    return std::string(tag).append(" ").append(attribute).append(" ").append(name);
}

std::string keyOf(std::string_view tag, std::string_view name) {
    return keyOf(tag, {}, name);
}

} // namespace

Models::Models(const Document& file, const Element& rootElement) : document(file), root(rootElement) {}

int Models::enter(int outer, const Element& instance) {
    return scopes.emplace(std::make_pair(outer, &instance), static_cast<int>(scopes.size()) + 1).first->second;
}

const Element* Models::modelOf(const Element& instance) const {
    return document.find(instance.getAttributeValue("url"), "physics_model");
}

const Models::Names& Models::namesIn(const Element* model) {
    const auto [found, isNew] = names.emplace(model, Names());
    if (isNew) {
        for (const Element* child : childrenOf(model)) {
            const std::string_view tag = localTag(*child);
            found->second[keyOf(tag, {})].push_back(child);
            for (const char* attribute : naming) {
                const std::string name = child->getAttributeValue(attribute);
                if (!name.empty()) {
                    found->second[keyOf(tag, attribute, name)].push_back(child);
                }
            }
        }
    }
    return found->second;
}

const Element* Models::namedIn(const Element* model, std::string_view tag, const std::string& name, std::size_t index) {
    const Names& known = namesIn(model);
    for (const char* attribute : naming) {
        const auto found = known.find(keyOf(tag, attribute, name));
        if (found != known.end()) {
            return found->second[std::min(index, found->second.size() - 1)];
        }
    }
    return nullptr;
}

void Models::noteNames(const Element* model, const Element* holder, Holders& holders) {
    for (const Element* child : childrenOf(model)) {
        for (const char* attribute : naming) {
            const std::string name = child->getAttributeValue(attribute);
            if (!name.empty()) {
                holders.emplace(keyOf(localTag(*child), name), holder);
            }
        }
    }
}

const Models::Holders& Models::nestedIn(const Element* model) {
    const auto [found, isNew] = nested.emplace(model, Holders());
    if (isNew) {
        std::unordered_set<const Element*> known;
        for (const Element* instance : childrenOf(model, instanceTag)) {
            const Element* inner = modelOf(*instance);
            if (known.insert(inner).second) {
                noteNames(inner, instance, found->second);
            }
        }
    }
    return found->second;
}

const Models::Holders& Models::all() {
    if (!anywhere) {
        anywhere.emplace();
        for (const Element* library : childrenOf(&root, "library_physics_models")) {
            for (const Element* model : childrenOf(library, "physics_model")) {
                noteNames(model, model, *anywhere);
            }
        }
    }
    return *anywhere;
}

Models::Found Models::find(int scope, const Element* model, std::string_view tag, const std::string& reference,
                           std::size_t index) {
    const std::vector<std::string> steps = stepsOf(reference);
    if (steps.empty()) {
        const Names& known = namesIn(model);
        const auto candidates = known.find(keyOf(tag, {}));
        const bool isOnly = candidates != known.end() && candidates->second.size() == 1;
        return {isOnly ? candidates->second[0] : nullptr, scope};
    }
    Found found = findByPath(scope, model, tag, steps, index);
    // A name may have been escaped, or have a step's signs in it.
    const std::string whole(withoutSign(reference));
    for (const std::string& name : {unescaped(steps.back()), whole, unescaped(whole)}) {
        if (!found.element && name != steps.back()) {
            found = findByPath(scope, model, tag, {name}, index);
        }
    }
    return found;
}

Models::Found Models::findByPath(int scope, const Element* model, std::string_view tag,
                                 const std::vector<std::string>& steps, std::size_t index) {
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
    const Holders& below = nestedIn(model);
    if (const auto instance = below.find(keyOf(tag, name)); instance != below.end()) {
        return {namedIn(modelOf(*instance->second), tag, name, index), enter(scope, *instance->second)};
    }
    const auto anyModel = all().find(keyOf(tag, name));
    return anyModel == all().end() ? Found() : Found{namedIn(anyModel->second, tag, name, index), scope};
}

} // namespace tessarin::dynamics::bullet::collada
