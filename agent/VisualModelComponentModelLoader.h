#pragma once

#include <agent/Export.h>

#include <osg/Node>
#include <osg/ref_ptr>

#include <string>

namespace tessarin::agent {

/// How VisualModelComponents read their models. A host installs one with VisualModelComponent::setModelLoader before
/// the first model is loaded: this one, which reads whatever OpenSceneGraph reads, or one of its own derived from it,
/// to look elsewhere, cache or prepare models.
///
/// What OpenSceneGraph reads includes scripts, which it runs, and addresses of servers, which it asks. Where documents
/// come from others, a host installs PlainModelLoader instead.
class TESSARIN_AGENT_EXPORT VisualModelComponentModelLoader {
public:
    VisualModelComponentModelLoader() = default;
    VisualModelComponentModelLoader(const VisualModelComponentModelLoader&) = default;
    VisualModelComponentModelLoader& operator=(const VisualModelComponentModelLoader&) = default;
    virtual ~VisualModelComponentModelLoader();

    /// The model of a file, read by osgDB with the options of its registry; null if it can't be read.
    virtual osg::ref_ptr<osg::Node> loadModel(const std::string& path);
};

} // namespace tessarin::agent
