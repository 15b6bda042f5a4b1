#include <viewer/ShapeGeometry.h>

#include <xml_parser/XMLNode.h>

#include <osg/Geode>
#include <osg/MatrixTransform>
#include <osg/ShapeDrawable>

#include <array>
#include <functional>
#include <locale>
#include <sstream>

namespace tessarin::viewer {

using xml_parser::XMLNode;

namespace {

/// The first element below this one, itself included, for which the test is true.
const XMLNode* find(const XMLNode& element, const std::function<bool(const XMLNode&)>& test) {
    if (test(element))
        return &element;
    for (int i = 0; i < element.getNumChildren(); ++i)
        if (const XMLNode* const found = find(*element.getChild(i), test))
            return found;
    return nullptr;
}

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

const XMLNode* findBody(const XMLNode& collada, const std::string& nodeId) {
    std::string bodyId, modelUrl;
    find(collada, [&](const XMLNode& instance) {
        if (instance.tag != "instance_rigid_body" || instance.getAttributeValue("target") != "#" + nodeId)
            return false;
        bodyId = instance.getAttributeValue("body");
        modelUrl = instance.getParent() ? instance.getParent()->getAttributeValue("url") : std::string();
        return true;
    });
    const XMLNode* const model = find(collada, [&](const XMLNode& element) {
        return element.tag == "physics_model" && "#" + element.getAttributeValue("id") == modelUrl;
    });
    return model ? find(*model,
                        [&](const XMLNode& element) {
                            return element.tag == "rigid_body" && element.getAttributeValue("sid") == bodyId;
                        })
                 : nullptr;
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

osg::ref_ptr<osg::Node> makeShapeGeometry(const XMLNode& collada, const std::string& nodeId) {
    const XMLNode* const body = findBody(collada, nodeId);
    const XMLNode* const common = body ? body->getChild("technique_common", true) : nullptr;
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
