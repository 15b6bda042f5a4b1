#pragma once

#include <dynamics/bullet/ColladaDocument.h>
#include <dynamics/bullet/ColladaNodes.h>
#include <dynamics/bullet/ColladaPhysics.h>

#include <map>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tessarin::dynamics::bullet::collada {

/// The last step of a path of sids, without the sign of a reference.
std::string lastStep(const std::string& reference);

/// The index-th of the children of a model that a sid, id or name means, or the last of them if there aren't as many.
const Element* namedIn(const Element* model, std::string_view tag, const std::string& name, std::size_t index = 0);

/// As namedIn, in the model, else in the models instanced in it, else in any model of the file. Without a name it is
/// the only one that the model has.
const Element* findInModels(const Document& document, const Element& root, const Element* model, std::string_view tag,
                            const std::string& reference, std::size_t index = 0);

/// Collects the bodies and the constraints of a file while it is read, and brings the two together when all are known,
/// since a constraint may stand before its bodies.
class Constraints {
public:
    Constraints(const Document& document, const Element& root, const Nodes& nodes);

    /// @param scope a number for each instance of a physics model.
    void addBody(int scope, const Element* body, const Element& node, std::size_t index);

    /// @param placement of the instance of the model in the world.
    void addConstraint(int scope, const Element& instance, const Element* model, const Affine& placement);

    /// All whose bodies are there.
    std::vector<ConstraintInstance> resolve() const;

private:
    struct Pending {
        int scope;
        const Element* instance;
        const Element* constraint;
        const Element* model;
        Affine placement;
    };

    std::optional<ConstraintInstance> resolve(const Pending& pending) const;
    bool resolveSide(const Pending& pending, const Element* side, Attachment& attachment) const;
    std::optional<std::size_t> findBody(const Pending& pending, const std::string& reference) const;
    void readProperties(const Element& technique, ConstraintInstance& result) const;
    Limits readLimits(const Element* limits) const;
    std::optional<Spring> readSpring(const Element* spring) const;

    const Document& document;
    const Element& root;
    const Nodes& nodes;
    std::map<std::pair<int, const Element*>, std::size_t> bodiesOfScope;
    std::unordered_map<const Element*, std::size_t> bodies;
    std::unordered_map<const Element*, std::size_t> bodiesByNode;
    std::map<std::pair<int, std::string>, std::size_t> timesInstanced;
    std::vector<Pending> constraints;
};

} // namespace tessarin::dynamics::bullet::collada
