#include <dynamics/bullet/ColladaAnimations.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace tessarin::dynamics::bullet::collada {

namespace {

bool isPhysicsLibrary(std::string_view tag) {
    return tag.substr(0, 16) == "library_physics_" || tag == "library_force_fields";
}

/// The elements below some others, and those themselves, that fit the condition.
template <class Condition>
std::vector<const Element*> selectWithin(std::vector<const Element*> open, const Condition& isWanted) {
    std::vector<const Element*> selected;
    while (!open.empty()) {
        const Element* element = open.back();
        open.pop_back();
        if (isWanted(*element)) {
            selected.push_back(element);
        }
        // Reversed, so that elements come in document order.
        for (int i = element->getNumChildren() - 1; i >= 0; --i) {
            open.push_back(element->getChild(i));
        }
    }
    return selected;
}

/// What a channel may lead to: "id/sid/sid.member", "id.member" or "id(0)".
class Targets {
public:
    Targets(const Document& file, const Element& root, const std::set<const Element*>& nodes)
        : document(file), bodyNodes(nodes) {
        std::vector<const Element*> libraries = childrenOf(&root);
        libraries.erase(std::remove_if(libraries.begin(), libraries.end(),
                                       [](const Element* child) { return !isPhysicsLibrary(localTag(*child)); }),
                        libraries.end());
        for (const Element* element : selectWithin(libraries, [](const Element&) { return true; })) {
            physics.insert(element);
            const std::string sid = element->getAttributeValue("sid");
            if (!sid.empty()) {
                physicsSids.insert(sid);
            }
        }
    }

    bool isInPhysics(const Element& channel) const {
        const Element* element = find(channel);
        // Paths are to begin with an id, but bodies have none, so that exporters begin with their sids.
        return element ? physics.count(element) > 0 : physicsSids.count(stepsTo(channel).front()) > 0;
    }

    bool isBodyNode(const Element& channel) const {
        const Element* element = find(channel);
        const std::vector<std::string> steps = stepsTo(channel);
        for (std::size_t i = 1; i < steps.size() && element; ++i) {
            const std::vector<const Element*> inner = childrenOf(element, "node");
            const auto found = std::find_if(inner.begin(), inner.end(), [&](const Element* node) {
                return node->getAttributeValue("sid") == steps[i];
            });
            element = found == inner.end() ? element : *found;
        }
        return bodyNodes.count(element) > 0;
    }

    /// Without the numbers behind it.
    static std::vector<std::string> stepsTo(const Element& channel) {
        const std::string target = channel.getAttributeValue("target");
        return stepsOf(std::string_view(target).substr(0, target.find('(')));
    }

private:
    const Element* find(const Element& channel) const {
        const std::vector<std::string> steps = stepsTo(channel);
        const std::string& id = steps.front();
        const Element* element = document.find(id);
        // An id may have points of its own.
        return element || steps.size() > 1 ? element : document.find(id.substr(0, id.rfind('.')));
    }

    const Document& document;
    const std::set<const Element*>& bodyNodes;
    std::set<const Element*> physics;
    std::set<std::string> physicsSids;
};

void complainOf(const Document& document, const std::vector<const Element*>& channels, const std::string& reason) {
    if (!channels.empty()) {
        const std::size_t count = channels.size();
        document.complain(*channels.front(), reason + (count > 1 ? ", the first of " + std::to_string(count) : ""));
    }
}

} // namespace

void complainOfAnimations(const Document& document, const Element& root, const std::set<const Element*>& bodyNodes) {
    const std::vector<const Element*> channels =
        selectWithin(childrenOf(&root, "library_animations"), [](const Element& element) {
            return localTag(element) == "channel" && !Targets::stepsTo(element).empty();
        });
    if (channels.empty()) {
        return;
    }
    const Targets targets(document, root, bodyNodes);
    std::vector<const Element*> ofPhysics;
    std::vector<const Element*> ofBodies;
    for (const Element* channel : channels) {
        if (targets.isInPhysics(*channel)) {
            ofPhysics.push_back(channel);
        } else if (targets.isBodyNode(*channel)) {
            ofBodies.push_back(channel);
        }
    }
    complainOf(document, ofPhysics, "animations of physics have no effect, this one is left out");
    complainOf(document, ofBodies, "its node goes where its body goes, the animation is left out");
}

} // namespace tessarin::dynamics::bullet::collada
