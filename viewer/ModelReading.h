#pragma once

#include <viewer/ModelLimits.h>

#include <osg/Node>
#include <osg/ref_ptr>

#include <filesystem>
#include <functional>
#include <string>

namespace tessarin::viewer {

/// Reads a model in a child process, so that a plugin of OpenSceneGraph that crashes, hangs or grows beyond measure on
/// a file costs the file alone. What comes back has images and further files in it and is safe to walk and to draw.
/// @param file is what messages name.
/// @param read makes the model. It runs in the child, with the file's folder as the present one; what it changes is
/// lost.
/// @throws ViewerError that names the file.
osg::ref_ptr<osg::Node> readInChild(const std::filesystem::path& file, const ModelLimits& limits,
                                    const std::function<osg::ref_ptr<osg::Node>()>& read);

/// True in such a child.
bool isReadingChild();

/// Keeps a line for the log of the process that started this child, once however often it comes.
void tellParent(const std::string& line);

/// While one of these stands, a model is read once however often it is asked for.
class ModelPass {
public:
    ModelPass();
    ~ModelPass();
    ModelPass(const ModelPass&) = delete;
    ModelPass& operator=(const ModelPass&) = delete;
};

} // namespace tessarin::viewer
