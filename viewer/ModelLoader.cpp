#include <viewer/ModelLoader.h>

#include <viewer/BodyNodes.h>
#include <viewer/ColladaFile.h>
#include <viewer/ViewerError.h>

#include <osg/LightSource>
#include <osgDB/FileNameUtils>
#include <osgDB/ReadFile>

#include <vector>

namespace tessarin::viewer {

namespace {

/// Finds lights and puts plain groups in their place.
class LightRemover : public osg::NodeVisitor {
public:
    LightRemover() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}

    void apply(osg::LightSource& light) override {
        lights.push_back(&light);
        traverse(light);
    }

    void replaceAll() {
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

void removeLights(osg::Node& model) {
    LightRemover visitor;
    model.accept(visitor);
    visitor.replaceAll();
}

bool isCollada(const std::string& path) {
    return osgDB::getLowerCaseFileExtension(path) == "dae";
}

} // namespace

osg::ref_ptr<osg::Node> ModelLoader::loadModel(const std::string& path) {
    try {
        if (!isCollada(path)) {
            const osg::ref_ptr<osg::Node> model = VisualModelComponentModelLoader::loadModel(path);
            if (model)
                removeLights(*model);
            return model;
        }
        const ColladaFile file(path);
        const osg::ref_ptr<osg::Node> model = file.readModel();
        if (!model)
            return nullptr;
        removeLights(*model);
        return separateBodies(*model, file.getBodyNodeIds());
    } catch (const ViewerError&) {
        return nullptr; // the path was checked before; whoever asks for the model sees that there is none
    }
}

void ModelLoader::check(const std::filesystem::path& path) {
    requireFile(path);
    if (isCollada(path.string()))
        ColladaFile{path};
}

} // namespace tessarin::viewer
