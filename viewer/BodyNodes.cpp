#include <viewer/BodyNodes.h>

#include <sceneutils/NameNodes.h>

#include <osg/MatrixTransform>
#include <osg/Switch>
#include <osg/Transform>

#include <algorithm>
#include <cmath>
#include <map>
#include <unordered_set>

namespace tessarin::viewer {

namespace {

constexpr const char* storeName = "bodies of the model";

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
    std::string name;
};

/// Hands the instances of one node to its bodies.
class Instances {
public:
    explicit Instances(const std::vector<osg::NodePath>& paths) {
        for (const osg::NodePath& path : paths)
            instances.push_back({path.back(), osg::computeLocalToWorld(path), {}});
        isTaken.resize(instances.size(), false);
    }

    /// @return never null, also if all are taken.
    const Body& take(const osg::Matrixd& place) {
        std::size_t index = nextAt(place);
        if (index == instances.size() && !isTaken[0])
            index = 0;
        if (index == instances.size())
            return instances[0];
        isTaken[index] = true;
        return instances[index];
    }

private:
    std::size_t nextAt(const osg::Matrixd& place) const {
        std::size_t index = 0;
        while (index < instances.size() && (isTaken[index] || !isNear(instances[index].world, place)))
            ++index;
        return index;
    }

    /// As near as single precision tells in a scene of that size.
    static bool isNear(const osg::Matrixd& a, const osg::Matrixd& b) {
        const double tolerance = 1e-4 * std::max({1.0, a.getTrans().length(), b.getTrans().length()});
        return std::equal(a.ptr(), a.ptr() + 16, b.ptr(),
                          [=](double x, double y) { return std::abs(x - y) < tolerance; });
    }

    std::vector<Body> instances;
    std::vector<bool> isTaken;
};

/// A node of the store: the body's pose, below it the scale of the model, below that what the node holds.
osg::ref_ptr<osg::Node> makeStored(const Body& body, Renamer& renamer) {
    osg::Vec3d place, scale;
    osg::Quat turn, scaleTurn;
    body.world.decompose(place, turn, scale, scaleTurn);
    const osg::Matrixd pose = osg::Matrixd::rotate(turn) * osg::Matrixd::translate(place);

    const osg::ref_ptr<osg::MatrixTransform> stored = new osg::MatrixTransform(pose);
    stored->setName(body.name);
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

/// The bodies' nodes out of their groups. One by one that takes quadratic time where a group has many.
void takeOut(const std::vector<Body>& bodies) {
    std::unordered_set<const osg::Node*> leaving;
    std::unordered_set<osg::Group*> groups;
    for (const Body& body : bodies) {
        body.node->setUpdateCallback(nullptr); // an animation would put it back to where the file has it
        leaving.insert(body.node);
        const osg::Node::ParentList& parents = body.node->getParents();
        groups.insert(parents.begin(), parents.end());
    }
    for (osg::Group* const group : groups) {
        unsigned end = group->getNumChildren();
        while (end > 0) {
            unsigned begin = end;
            while (begin > 0 && leaving.count(group->getChild(begin - 1)) > 0)
                --begin;
            if (begin < end)
                group->removeChildren(begin, end - begin);
            end = begin > 0 ? begin - 1 : 0;
        }
    }
}

} // namespace

osg::ref_ptr<osg::Node> separateBodies(osg::Node& model, const std::vector<BodyNode>& wanted) {
    std::vector<std::string> ids;
    for (const BodyNode& body : wanted)
        ids.push_back(body.nodeId);
    std::map<std::string, Instances> instances;
    for (const auto& [id, paths] : sceneutils::findNodesById(model, ids))
        instances.emplace(id, paths);
    if (instances.empty())
        return &model;

    std::vector<Body> bodies;
    std::set<std::string> names;
    for (const BodyNode& body : wanted) {
        const auto known = instances.find(body.nodeId);
        if (known == instances.end())
            continue;
        bodies.push_back(known->second.take(body.nodeToWorld));
        bodies.back().name = body.bodyName;
        names.insert(body.bodyName);
    }
    takeOut(bodies);

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
