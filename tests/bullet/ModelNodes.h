#pragma once

#include <dynamics/DynamicsBody.h>

#include <osg/Node>
#include <osg/NodeVisitor>
#include <osg/Transform>
#include <osgDB/ReadFile>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <string>

namespace tessarin::dynamics::bullet {

/// Where the nodes of a model file are when OpenSceneGraph loads it; of nodes of one name, the first.
class ModelNodes {
public:
    explicit ModelNodes(const std::string& path) : model(osgDB::readRefNodeFile(path)) {
        if (model) {
            Collector collector(worldMatrices);
            model->accept(collector);
        }
    }

    bool isRead() const { return model.valid(); }
    double getRadius() const { return model->getBound().radius(); }

    /// The largest difference between an element of a body's pose and of that of its node, the node's scale left out.
    double distance(DynamicsBody& body) const {
        const auto found = worldMatrices.find(body.getName());
        if (found == worldMatrices.end()) {
            return std::numeric_limits<double>::infinity();
        }
        osg::Vec3d translation;
        osg::Vec3d scale;
        osg::Quat rotation;
        osg::Quat scaleOrientation;
        found->second.decompose(translation, rotation, scale, scaleOrientation);
        const osg::Matrixd expected = osg::Matrixd::rotate(rotation) * osg::Matrixd::translate(translation);
        gmtl::Matrix<double, 4, 4> pose;
        body.getMatrix(pose);
        double result = 0;
        for (int i = 0; i < 16; ++i) {
            const double difference = std::abs(expected.ptr()[i] - pose.getData()[i]);
            result = difference <= result ? result : difference; // keeps what is not a number
        }
        return result;
    }

private:
    using Matrices = std::map<std::string, osg::Matrixd>;

    class Collector : public osg::NodeVisitor {
    public:
        explicit Collector(Matrices& found) : NodeVisitor(TRAVERSE_ALL_CHILDREN), matrices(found) {}
        void apply(osg::Node& node) override {
            matrices.emplace(node.getName(), osg::computeLocalToWorld(getNodePath()));
            traverse(node);
        }

    private:
        Matrices& matrices;
    };

    osg::ref_ptr<osg::Node> model;
    Matrices worldMatrices;
};

} // namespace tessarin::dynamics::bullet
