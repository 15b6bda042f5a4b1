#pragma once

#include <dynamics/bullet/ColladaDocument.h>
#include <dynamics/bullet/ColladaModels.h>
#include <dynamics/bullet/ColladaNodes.h>
#include <dynamics/bullet/ColladaPhysics.h>

#include <map>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tessarin::dynamics::bullet::collada {

/// Collects the bodies and the constraints of a file while it is read, and brings the two together when all are known,
/// since a constraint may stand before its bodies.
class Constraints {
public:
    Constraints(const Document& document, Models& models, const Nodes& nodes);

    /// @param scope of Models.
    void addBody(int scope, const Element* body, const Element& node, std::size_t index);

    /// @param placement of the instance of the model in the world.
    void addConstraint(int scope, const Element& instance, const Element* model, const Affine& placement);

    /// All whose bodies are there.
    std::vector<ConstraintInstance> resolve();

private:
    struct Pending {
        int scope = 0;
        const Element* instance = nullptr;
        const Element* constraint = nullptr;
        Affine placement;
    };

    std::optional<ConstraintInstance> resolve(const Pending& pending);
    bool resolveSide(const Pending& pending, const Element* side, Attachment& attachment);
    std::optional<std::size_t> findBody(const Pending& pending, const std::string& reference);
    void readProperties(const Element& technique, ConstraintInstance& result) const;
    Limits readLimits(const Element* limits) const;
    std::optional<Spring> readSpring(const Element* spring) const;

    const Document& document;
    Models& models;
    const Nodes& nodes;
    std::map<std::pair<int, const Element*>, std::size_t> bodiesOfScope;
    std::unordered_map<const Element*, std::size_t> bodies;
    std::unordered_map<const Element*, std::size_t> bodiesByNode;
    std::map<std::pair<int, std::vector<std::string>>, std::size_t> timesInstanced;
    std::vector<Pending> constraints;
};

} // namespace tessarin::dynamics::bullet::collada
