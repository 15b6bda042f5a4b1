#include <viewer/BodyNodes.h>

#include <osg/MatrixTransform>
#include <osg/Switch>
#include <osg/Transform>
#include <osg/ValueObject>

#include <vector>

namespace tessarin::viewer {

namespace {

constexpr const char* storeName = "bodies of the model";

class IdVisitor : public osg::NodeVisitor {
public:
    explicit IdVisitor(const std::set<std::string>& wanted) : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN), ids(wanted) {}

    void apply(osg::Group& node) override {
        std::string id;
        if (node.getUserValue("dae_node_id", id) && ids.count(id))
            paths.emplace(id, getNodePath());
        traverse(node);
    }

    std::map<std::string, osg::NodePath> paths;

private:
    const std::set<std::string>& ids;
};

/// Gives the nodes below a body's node that bear a body's name another one.
class Renamer : public osg::NodeVisitor {
public:
    explicit Renamer(const std::set<std::string>& taken) : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN), names(taken) {}

    void apply(osg::Node& node) override {
        if (names.count(node.getName()))
            node.setName(node.getName() + " (part)");
        traverse(node);
    }

private:
    const std::set<std::string>& names;
};

struct Body {
    osg::ref_ptr<osg::Node> node;
    osg::Matrixd world;
};

/// A node of the store: the body's pose, below it the scale of the model, below that what the node holds.
osg::ref_ptr<osg::Node> makeStored(const Body& body, Renamer& renamer) {
    osg::Vec3d place, scale;
    osg::Quat turn, scaleTurn;
    body.world.decompose(place, turn, scale, scaleTurn);
    const osg::Matrixd pose = osg::Matrixd::rotate(turn) * osg::Matrixd::translate(place);

    const osg::ref_ptr<osg::MatrixTransform> stored = new osg::MatrixTransform(pose);
    stored->setName(body.node->getName());
    if (osg::MatrixTransform* const transform =
            body.node->asTransform() ? body.node->asTransform()->asMatrixTransform() : nullptr) {
        transform->setMatrix(body.world * osg::Matrixd::inverse(pose));
        stored->addChild(transform);
    } else {
        // A node without a transform of its own, or one of another kind: what it does stays as it is below the scale.
        osg::Matrixd above = body.world;
        if (osg::Transform* const other = body.node->asTransform()) {
            osg::Matrixd own;
            other->computeLocalToWorldMatrix(own, nullptr);
            above = osg::Matrixd::inverse(own) * body.world;
        }
        const osg::ref_ptr<osg::MatrixTransform> rest = new osg::MatrixTransform(above * osg::Matrixd::inverse(pose));
        rest->addChild(body.node);
        stored->addChild(rest);
    }
    for (unsigned i = 0; i < stored->getNumChildren(); ++i)
        stored->getChild(i)->accept(renamer);
    return stored;
}

} // namespace

std::map<std::string, osg::NodePath> findNodesById(osg::Node& model, const std::set<std::string>& ids) {
    IdVisitor visitor(ids);
    model.accept(visitor);
    return visitor.paths;
}

osg::ref_ptr<osg::Node> separateBodies(osg::Node& model, const std::set<std::string>& bodyNodeIds) {
    const std::map<std::string, osg::NodePath> paths = findNodesById(model, bodyNodeIds);
    if (paths.empty())
        return &model;

    std::vector<Body> bodies;
    std::set<std::string> names;
    for (const auto& [id, path] : paths) {
        bodies.push_back({path.back(), osg::computeLocalToWorld(path)});
        names.insert(path.back()->getName());
    }
    for (const Body& body : bodies) {
        body.node->setUpdateCallback(nullptr); // an animation would put it back to where the file has it
        for (osg::Group* parent : osg::Node::ParentList(body.node->getParents()))
            parent->removeChild(body.node);
    }

    const osg::ref_ptr<osg::Switch> store = new osg::Switch;
    store->setName(storeName);
    store->setNewChildDefaultValue(false);
    Renamer renamer(names);
    for (const Body& body : bodies)
        store->addChild(makeStored(body, renamer));

    const osg::ref_ptr<osg::Group> parts = new osg::Group;
    parts->setName("model");
    parts->addChild(store);
    parts->addChild(&model);
    return parts;
}

void showStoredWithout(osg::Node& model, const std::set<std::string>& names) {
    osg::Group* const parts = model.asGroup();
    osg::Switch* const store = parts && parts->getNumChildren() > 0 ? parts->getChild(0)->asSwitch() : nullptr;
    if (!store || store->getName() != storeName)
        return;
    for (unsigned i = 0; i < store->getNumChildren(); ++i)
        if (names.count(store->getChild(i)->getName()) == 0)
            store->setValue(i, true);
}

} // namespace tessarin::viewer
