#pragma once

#include <agent/Export.h>
#include <agent/VisualModelComponentModelLoader.h>

#include <osg/Node>
#include <osg/ref_ptr>

#include <set>
#include <string>

namespace osgDB {
class Options;
}

namespace tessarin::agent {

/// A model loader for documents that come from others: it reads known kinds of models from plain files alone.
///
/// What a path means to OpenSceneGraph depends on its extension: it runs scripts, opens archives and asks servers for
/// files. This loader refuses whatever is no regular file with the extension of a known kind, with one line at level
/// 300 that says which kinds there are.
///
/// It holds for more than loadModel(). While a loader of this class lives, all reading of files by osgDB in this
/// program goes through it: that of VisualModelComponents, which read COLLADA files themselves too, and that of files
/// which models name. Images and fonts have to be regular files of known kinds as well; scripts, shaders and archives
/// are not read at all. A callback that the host has set before is asked for what isn't refused.
///
/// It doesn't protect from faults in OpenSceneGraph's plugins.
class TESSARIN_AGENT_EXPORT PlainModelLoader : public VisualModelComponentModelLoader {
public:
    /// @param kinds extensions in lower case, without a point.
    explicit PlainModelLoader(std::set<std::string> kinds = getUsualKinds());
    ~PlainModelLoader() override;
    PlainModelLoader(const PlainModelLoader&) = delete;
    PlainModelLoader& operator=(const PlainModelLoader&) = delete;

    /// Null if the file is refused or can't be read.
    osg::ref_ptr<osg::Node> loadModel(const std::string& path) override;

    /// The kinds that OpenSceneGraph reads as shapes and nothing else.
    static const std::set<std::string>& getUsualKinds();

    /// Why a file is refused, as a line that begins with its path; empty if it isn't.
    std::string findFault(const std::string& path) const;

protected:
    /// Reads a file that isn't refused, for loadModel() and for whoever else asks osgDB for it.
    virtual osg::ref_ptr<osg::Node> readModel(const std::string& path, const osgDB::Options* options);

    /// Tells that something was refused. Logs the line at level 300.
    virtual void tell(const std::string& line);

private:
    class Guard;

    const std::set<std::string> kinds;
    osg::ref_ptr<Guard> guard;
    std::string refused; // by others than loadModel(), which is then asked for the same
};

} // namespace tessarin::agent
