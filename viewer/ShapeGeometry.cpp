#include <viewer/ShapeGeometry.h>

#include <xml_parser/XMLNode.h>

#include <osg/Geode>
#include <osg/MatrixTransform>
#include <osg/ShapeDrawable>

#include <array>
#include <locale>
#include <sstream>
#include <vector>

namespace tessarin::viewer {

using xml_parser::XMLNode;

namespace {

/// The numbers that an element holds; those that it lacks are nothing.
std::array<double, 4> numbersOf(const XMLNode* element) {
    std::array<double, 4> numbers = {};
    if (element) {
        std::istringstream text(element->text);
        text.imbue(std::locale::classic());
        for (double& number : numbers)
            if (!(text >> number)) {
                number = 0;
                break;
            }
    }
    return numbers;
}

/// What stands in a file anywhere, found in one walk.
struct PhysicsElements {
    explicit PhysicsElements(const XMLNode& element) { collect(element); }

    void collect(const XMLNode& element) {
        if (element.tag == "physics_model") {
            models.emplace("#" + element.getAttributeValue("id"), &element);
        } else if (element.tag == "instance_rigid_body") {
            instances.push_back(&element);
        }
        for (int i = 0; i < element.getNumChildren(); ++i)
            collect(*element.getChild(i));
    }

    std::map<std::string, const XMLNode*> models; // by their urls
    std::vector<const XMLNode*> instances;
};

/// The bodies of a model by their sids, of several the first.
std::map<std::string, const XMLNode*> bodiesOf(const XMLNode& model) {
    std::map<std::string, const XMLNode*> bodies;
    for (int i = 0; i < model.getNumChildren(); ++i)
        if (model.getChild(i)->tag == "rigid_body")
            bodies.emplace(model.getChild(i)->getAttributeValue("sid"), model.getChild(i));
    return bodies;
}

osg::Matrixd placementOf(const XMLNode& shape) {
    osg::Matrixd matrix;
    for (int i = 0; i < shape.getNumChildren(); ++i) {
        const XMLNode& child = *shape.getChild(i);
        const auto [x, y, z, degrees] = numbersOf(&child);
        if (child.tag == "translate")
            matrix.preMultTranslate(osg::Vec3d(x, y, z));
        else if (child.tag == "rotate")
            matrix.preMultRotate(osg::Quat(osg::DegreesToRadians(degrees), osg::Vec3d(x, y, z)));
    }
    return matrix;
}

osg::ref_ptr<osg::Shape> makeShape(const XMLNode& shape) {
    // COLLADA's cylinders and capsules lie along Y, OpenSceneGraph's along Z.
    const osg::Quat upright(osg::PI_2, osg::Vec3d(-1, 0, 0));
    if (const XMLNode* const box = shape.getChild("box", true)) {
        const auto half = numbersOf(box->getChild("half_extents", true));
        return new osg::Box(osg::Vec3(), float(2 * half[0]), float(2 * half[1]), float(2 * half[2]));
    }
    if (const XMLNode* const sphere = shape.getChild("sphere", true))
        return new osg::Sphere(osg::Vec3(), float(numbersOf(sphere->getChild("radius", true))[0]));
    for (const char* tag : {"cylinder", "capsule"}) {
        const XMLNode* const round = shape.getChild(tag, true);
        if (!round)
            continue;
        const float radius = float(numbersOf(round->getChild("radius", true))[0]);
        const float height = float(numbersOf(round->getChild("height", true))[0]);
        if (std::string(tag) == "cylinder") {
            const osg::ref_ptr<osg::Cylinder> cylinder = new osg::Cylinder(osg::Vec3(), radius, height);
            cylinder->setRotation(upright);
            return cylinder;
        }
        const osg::ref_ptr<osg::Capsule> capsule = new osg::Capsule(osg::Vec3(), radius, height);
        capsule->setRotation(upright);
        return capsule;
    }
    return nullptr;
}

} // namespace

ShapeGeometry::ShapeGeometry(const XMLNode& collada) {
    const PhysicsElements elements(collada);
    std::map<const XMLNode*, std::map<std::string, const XMLNode*>> bodiesOfModels;
    for (const XMLNode* instance : elements.instances) {
        const XMLNode* const modelInstance = instance->getParent();
        const auto model = elements.models.find(modelInstance ? modelInstance->getAttributeValue("url") : "");
        if (model == elements.models.end())
            continue;
        const auto [bodies, isNew] = bodiesOfModels.try_emplace(model->second);
        if (isNew)
            bodies->second = bodiesOf(*model->second);
        const auto body = bodies->second.find(instance->getAttributeValue("body"));
        const std::string target = instance->getAttributeValue("target");
        if (body != bodies->second.end())
            bodiesByNode.emplace(target.substr(target.find('#') + 1), body->second); // all of it where there is no sign
    }
}

osg::ref_ptr<osg::Node> ShapeGeometry::make(const std::string& nodeId) const {
    const auto body = bodiesByNode.find(nodeId);
    const XMLNode* const common =
        body != bodiesByNode.end() ? body->second->getChild("technique_common", true) : nullptr;
    if (!common)
        return nullptr;

    const osg::ref_ptr<osg::Group> shapes = new osg::Group;
    for (int i = 0; i < common->getNumChildren(); ++i) {
        const XMLNode& element = *common->getChild(i);
        const osg::ref_ptr<osg::Shape> shape = element.tag == "shape" ? makeShape(element) : nullptr;
        if (!shape)
            continue;
        const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
        const osg::ref_ptr<osg::ShapeDrawable> drawable = new osg::ShapeDrawable;
        drawable->setShape(shape);
        drawable->setColor(osg::Vec4(0.72f, 0.74f, 0.78f, 1));
        geode->addDrawable(drawable);
        const osg::ref_ptr<osg::MatrixTransform> placed = new osg::MatrixTransform(placementOf(element));
        placed->addChild(geode);
        shapes->addChild(placed);
    }
    if (shapes->getNumChildren() == 0)
        return nullptr;
    return shapes;
}

} // namespace tessarin::viewer
