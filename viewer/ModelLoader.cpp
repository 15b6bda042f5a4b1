#include <viewer/ModelLoader.h>

#include <viewer/BodyNodes.h>
#include <viewer/ColladaFile.h>
#include <viewer/ModelReading.h>
#include <viewer/ViewerError.h>

#include <dynamics/bullet/LoadLimits.h>

#include <osg/Geometry>
#include <osg/LightSource>
#include <osg/Math>
#include <osgDB/FileNameUtils>
#include <osgUtil/SmoothingVisitor>

#include <vector>

namespace tessarin::viewer {

namespace {

/// Puts plain groups in the place of lights, and gives normals to what has none, since it is lit by them.
class Tidy : public osg::NodeVisitor {
public:
    Tidy() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}

    void apply(osg::LightSource& light) override {
        lights.push_back(&light);
        traverse(light);
    }

    void apply(osg::Geometry& geometry) override {
        const double crease = 35 * osg::PI / 180;
        if (!geometry.getNormalArray() && geometry.getVertexArray())
            osgUtil::SmoothingVisitor::smooth(geometry, crease);
    }

    void replaceLights() {
        for (const osg::ref_ptr<osg::LightSource>& light : lights) {
            const osg::ref_ptr<osg::Group> group = new osg::Group;
            group->setName(light->getName());
            group->setUserDataContainer(light->getUserDataContainer());
            for (unsigned i = 0; i < light->getNumChildren(); ++i)
                group->addChild(light->getChild(i));
            for (osg::Group* parent : osg::Node::ParentList(light->getParents()))
                parent->replaceChild(light, group);
        }
    }

private:
    std::vector<osg::ref_ptr<osg::LightSource>> lights;
};

void tidy(osg::Node& model) {
    Tidy visitor;
    model.accept(visitor);
    visitor.replaceLights();
}

bool isCollada(const std::string& path) {
    return osgDB::getLowerCaseFileExtension(path) == "dae";
}

} // namespace

ModelLoader& ModelLoader::instance() {
    static ModelLoader loader;
    return loader;
}

osg::ref_ptr<osg::Node> ModelLoader::loadModel(const std::string& path) {
    if (!isCollada(path) || !findFault(path).empty()) {
        const osg::ref_ptr<osg::Node> model = PlainModelLoader::loadModel(path);
        if (model)
            tidy(*model);
        return model;
    }
    try {
        const ColladaFile file(path, limits);
        const osg::ref_ptr<osg::Node> model = file.readModel();
        tidy(*model);
        return separateBodies(*model, file.readBodyNodes());
    } catch (const ViewerError&) {
        return nullptr; // the path was checked before; whoever asks for the model sees that there is none
    }
}

void ModelLoader::check(const std::filesystem::path& path) {
    requireFile(path);
    if (const std::string fault = findFault(path.string()); !fault.empty())
        throw ViewerError(fault);
    readPicture(path.string(), nullptr);
    if (!isCollada(path.string()))
        return;
    if (const std::string excess = dynamics::bullet::findExcess(path.string(), limits.ofPhysics()); !excess.empty())
        throw ViewerError(path.string() + ": " + excess);
}

osg::ref_ptr<osg::Node> ModelLoader::readPicture(const std::string& path, const osgDB::Options* options) {
    if (isCollada(path))
        return ColladaFile(path, limits).readPicture();
    return readInChild(path, limits, [&, whole = std::filesystem::absolute(path).string()] {
        return PlainModelLoader::readModel(whole, options);
    });
}

osg::ref_ptr<osg::Node> ModelLoader::readModel(const std::string& path, const osgDB::Options* options) {
    if (isReadingChild())
        return PlainModelLoader::readModel(path, options);
    try {
        return readPicture(path, options);
    } catch (const ViewerError& error) {
        tell(error.what());
        return nullptr;
    }
}

void ModelLoader::tell(const std::string& line) {
    if (isReadingChild())
        tellParent(line);
    else
        PlainModelLoader::tell(line);
}

} // namespace tessarin::viewer
