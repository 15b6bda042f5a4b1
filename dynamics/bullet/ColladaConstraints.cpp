#include <dynamics/bullet/ColladaConstraints.h>

#include <dynamics/bullet/ColladaNumbers.h>

#include <cmath>

namespace tessarin::dynamics::bullet::collada {

namespace {

bool hasPlacement(const Element* side) {
    for (const Element* child : childrenOf(side)) {
        const std::string_view tag = localTag(*child);
        if (tag == "translate" || tag == "rotate" || tag == "matrix") {
            return true;
        }
    }
    return false;
}

std::string nameOf(const Element& instance, const Element& constraint) {
    for (const char* attribute : {"name", "sid"}) {
        for (const Element* element : {&instance, &constraint}) {
            std::string name = element->getAttributeValue(attribute);
            if (!name.empty()) {
                return name;
            }
        }
    }
    return constraint.getAttributeValue("id");
}

} // namespace

Constraints::Constraints(const Document& file, Models& fileModels, const Nodes& fileNodes)
    : document(file), models(fileModels), nodes(fileNodes) {}

void Constraints::addBody(int scope, const Element* body, const Element& node, std::size_t index) {
    if (body) {
        bodiesOfScope.emplace(std::make_pair(scope, body), index);
        bodies.emplace(body, index);
    }
    bodiesByNode.emplace(&node, index);
}

void Constraints::addConstraint(int scope, const Element& instance, const Element* model, const Affine& placement) {
    const std::string reference = instance.getAttributeValue("constraint");
    // Exporters give several constraints one sid and instance it as many times; each is meant once.
    const std::size_t index = timesInstanced[{scope, stepsOf(reference)}]++;
    const Models::Found found = models.find(scope, model, "rigid_constraint", reference, index);
    if (found.element) {
        constraints.push_back({found.scope, &instance, found.element, placement});
    } else {
        document.complain(instance, "there is no rigid constraint '" + reference + "', the joint is left out");
    }
}

std::vector<ConstraintInstance> Constraints::resolve() {
    std::vector<ConstraintInstance> result;
    for (const Pending& pending : constraints) {
        if (std::optional<ConstraintInstance> constraint = resolve(pending)) {
            result.push_back(std::move(*constraint));
        }
    }
    return result;
}

std::optional<ConstraintInstance> Constraints::resolve(const Pending& pending) {
    const Element& constraint = *pending.constraint;
    ConstraintInstance result;
    result.label = describe(constraint);
    result.name = nameOf(*pending.instance, constraint);
    if (!resolveSide(pending, childOf(&constraint, "ref_attachment"), result.first) ||
        !resolveSide(pending, childOf(&constraint, "attachment"), result.second)) {
        return std::nullopt;
    }
    if (!result.first.body && !result.second.body) {
        document.complain(constraint, "is attached to no body, the joint is left out");
        return std::nullopt;
    }
    const Element* technique = childOf(&constraint, "technique_common");
    readProperties(technique ? *technique : constraint, result);
    return result;
}

bool Constraints::resolveSide(const Pending& pending, const Element* side, Attachment& attachment) {
    const std::string reference = side ? side->getAttributeValue("rigid_body") : std::string();
    Affine frame = pending.placement;
    bool hasNode = false;
    if (!withoutSign(reference).empty()) {
        attachment.body = findBody(pending, reference);
        if (!attachment.body) {
            const Element* node = nodes.find(reference);
            // Some tools mean the world by the scene that holds all nodes.
            node = node ? node : document.find(reference, "visual_scene");
            if (!node) {
                document.complain(*pending.constraint,
                                  "there is no rigid body '" + reference + "', the joint is left out");
                return false;
            }
            frame = nodes.nodeToWorld(*node);
            hasNode = true;
        }
    }
    if (attachment.body || hasNode || hasPlacement(side)) {
        const Affine placement = side ? placementOf(document, *side) : Affine();
        attachment.placement = attachment.body ? placement : frame * placement;
    }
    return true;
}

std::optional<std::size_t> Constraints::findBody(const Pending& pending, const std::string& reference) {
    const Models::Found body = models.find(pending.scope, pending.constraint->getParent(), "rigid_body", reference);
    if (body.element) {
        const auto inScope = bodiesOfScope.find({body.scope, body.element});
        if (inScope != bodiesOfScope.end()) {
            return inScope->second;
        }
        const auto anywhere = bodies.find(body.element);
        if (anywhere != bodies.end()) {
            return anywhere->second;
        }
    }
    const auto byNode = bodiesByNode.find(nodes.find(reference));
    return byNode == bodiesByNode.end() ? std::nullopt : std::optional<std::size_t>(byNode->second);
}

void Constraints::readProperties(const Element& technique, ConstraintInstance& result) const {
    readFlag(document, &technique, "enabled", result.enabled);
    readFlag(document, &technique, "interpenetrate", result.interpenetrate);
    const Element* limits = childOf(&technique, "limits");
    result.linear = readLimits(childOf(limits, "linear"));
    result.angular = readLimits(childOf(limits, "swing_cone_and_twist"));
    const Element* spring = childOf(&technique, "spring");
    result.linearSpring = readSpring(childOf(spring, "linear"));
    result.angularSpring = readSpring(childOf(spring, "angular"));
}

Limits Constraints::readLimits(const Element* element) const {
    Limits limits;
    const auto readOne = [&](const char* tag, Vector3& values) {
        const Element* child = childOf(element, tag);
        if (child && !readLimitNumbers(child->text, values)) {
            document.complain(*child, "needs three numbers, zero is taken for them");
        }
    };
    readOne("min", limits.lower);
    readOne("max", limits.upper);
    return limits;
}

std::optional<Spring> Constraints::readSpring(const Element* element) const {
    if (!element) {
        return std::nullopt;
    }
    Spring spring;
    const auto readOne = [&](const char* tag, double lowest, double& value) {
        const Element* child = childOf(element, tag);
        const std::optional<double> number = numberIn(child);
        if (number && *number >= lowest) {
            value = *number;
        } else if (child) {
            document.complain(*child, "is no number that a spring can have, " + std::to_string(value) + " is taken");
        }
    };
    readOne("stiffness", 0, spring.stiffness);
    readOne("damping", 0, spring.damping);
    readOne("target_value", -HUGE_VAL, spring.target);
    return spring;
}

} // namespace tessarin::dynamics::bullet::collada
