#include <agent/VisualModelComponentModelLoader.h>

#include <osgDB/ReadFile>
#include <osgDB/Registry>

namespace tessarin::agent {

VisualModelComponentModelLoader::~VisualModelComponentModelLoader() = default;

osg::ref_ptr<osg::Node> VisualModelComponentModelLoader::loadModel(const std::string& path) {
    return osgDB::readRefNodeFile(path, osgDB::Registry::instance()->getOptions());
}

} // namespace tessarin::agent
