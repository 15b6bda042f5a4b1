#include <viewer/SceneCheck.h>

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/NodeVisitor>
#include <osg/PagedLOD>
#include <osg/ProxyNode>

#include <algorithm>
#include <set>
#include <unordered_map>

namespace tessarin::viewer {

namespace {

struct Size {
    double nodes = 1;
    double triangles = 0;
    int levels = 1;
};

double countTriangles(const osg::Geometry& geometry) {
    double triangles = 0;
    for (const osg::ref_ptr<osg::PrimitiveSet>& primitives : geometry.getPrimitiveSetList())
        triangles += double(primitives->getNumPrimitives()) * double(std::max(primitives->getNumInstances(), 1));
    return triangles;
}

/// Measures each node once, however often it hangs in the model.
class Measuring {
public:
    explicit Measuring(const ModelLimits& modelLimits) : limits(modelLimits) {}

    Size measure(const osg::Node& node, int level) {
        limits.check(1, 0, level); // a node that hangs below itself goes on for ever
        const auto known = sizes.find(&node);
        if (known != sizes.end())
            return known->second;
        Size size;
        if (const osg::Geometry* const geometry = node.asGeometry())
            size.triangles = countTriangles(*geometry);
        const osg::Group* const group = node.asGroup();
        for (unsigned i = 0; group && i < group->getNumChildren(); ++i) {
            const Size below = measure(*group->getChild(i), level + 1);
            size.nodes += below.nodes;
            size.triangles += below.triangles;
            size.levels = std::max(size.levels, below.levels + 1);
        }
        return sizes[&node] = size;
    }

private:
    const ModelLimits& limits;
    std::unordered_map<const osg::Node*, Size> sizes;
};

bool reachesBeyond(const osg::PrimitiveSet& primitives, unsigned vertices) {
    for (unsigned i = 0; i < primitives.getNumIndices(); ++i)
        if (primitives.index(i) >= vertices)
            return true;
    return false;
}

bool isTooShort(const osg::Array* array, unsigned vertices) {
    if (!array)
        return false;
    const bool isPerVertex = array->getBinding() == osg::Array::BIND_PER_VERTEX;
    return array->getNumElements() < (isPerVertex ? vertices : 1);
}

/// Meets each drawable once.
class Mender : public osg::NodeVisitor {
public:
    Mender() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}

    void apply(osg::Node& node) override {
        if (met.insert(&node).second)
            traverse(node);
    }
    void apply(osg::PagedLOD& node) override {
        for (unsigned i = 0; i < node.getNumFileNames(); ++i)
            node.setFileName(i, "");
        apply(static_cast<osg::Node&>(node));
    }
    void apply(osg::ProxyNode& node) override {
        for (unsigned i = 0; i < node.getNumFileNames(); ++i)
            node.setFileName(i, "");
        apply(static_cast<osg::Node&>(node));
    }
    void apply(osg::Geometry& geometry) override {
        const unsigned vertices = geometry.getVertexArray() ? geometry.getVertexArray()->getNumElements() : 0;
        for (unsigned i = geometry.getNumPrimitiveSets(); i > 0; --i)
            if (reachesBeyond(*geometry.getPrimitiveSet(i - 1), vertices)) {
                geometry.removePrimitiveSet(i - 1);
                ++removed;
            }
        if (isTooShort(geometry.getNormalArray(), vertices))
            geometry.setNormalArray(nullptr);
        if (isTooShort(geometry.getColorArray(), vertices))
            geometry.setColorArray(nullptr);
        if (isTooShort(geometry.getSecondaryColorArray(), vertices))
            geometry.setSecondaryColorArray(nullptr);
        if (isTooShort(geometry.getFogCoordArray(), vertices))
            geometry.setFogCoordArray(nullptr);
        for (unsigned unit = 0; unit < geometry.getNumTexCoordArrays(); ++unit)
            if (isTooShort(geometry.getTexCoordArray(unit), vertices))
                geometry.setTexCoordArray(unit, nullptr);
        for (unsigned i = 0; i < geometry.getNumVertexAttribArrays(); ++i)
            if (isTooShort(geometry.getVertexAttribArray(i), vertices))
                geometry.setVertexAttribArray(i, nullptr);
    }

    unsigned removed = 0;

private:
    std::set<const osg::Node*> met;
};

} // namespace

unsigned makeSafe(osg::Node& model, const ModelLimits& limits) {
    const Size size = Measuring(limits).measure(model, 1);
    limits.check(size.nodes, size.triangles, size.levels);
    Mender mender;
    model.accept(mender);
    return mender.removed;
}

} // namespace tessarin::viewer
