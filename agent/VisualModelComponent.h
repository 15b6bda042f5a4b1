#pragma once

#include <agent/AbstractAccessor.h>
#include <agent/Component.h>
#include <agent/Export.h>
#include <agent/SimObjectFactory.h>

#include <osg/Node>
#include <osg/ref_ptr>

#include <iosfwd>
#include <map>
#include <string>

namespace tessarin::agent {

/// Brings a model file into an agent. The file's path is the field "filePath", so that documents can name it;
/// initialize() reads it.
///
/// The model doesn't enter the scene through this component. It is a store from which the GeometryComponents of this
/// agent and of those below it take their nodes, by the names of their agents, when a document names them.
///
/// For a COLLADA file (extension dae in any case) the dynamics world reads the file's physics too: each rigid body
/// becomes a child agent of the body's name with a RigidBodyComponent, each joint a JointComponent on this agent. They
/// belong to the tree, not to this component.
///
/// A host sets a model loader, and for COLLADA files AgentNode::dynamicsWorld, before the first model is loaded.
class TESSARIN_AGENT_EXPORT VisualModelComponent : public Component {
public:
    /// Names itself "VisualModelComponent": the name by which documents and geometry find it.
    VisualModelComponent();
    VisualModelComponent(const VisualModelComponent&) = default;
    VisualModelComponent& operator=(const VisualModelComponent&) = default;
    ~VisualModelComponent() override;

    const char* getClassName() override;

    /// Reads the file that the path names. Blocks as long as that takes. A second call on a COLLADA file makes a second
    /// set of agents and joints. A file that can't be read leaves the model null; a missing loader, and a missing world
    /// for a COLLADA file, are logged at level 300.
    /// @return null if the component has been deleted meanwhile, by a hook, the loader or the world.
    Component* initialize() override;

    bool getSupportedEvents(std::list<AgentEvent::_AgentEventEnum>& events) override;
    AccessorWithObject getAccessor(const std::string& fieldName) override;
    void getFieldNames(std::list<std::string>& names) override;

    /// Writes each field as name=value, with a comma behind it.
    virtual void printValues(std::ostream& stream);

    /// Stores the path; only the next initialize() reads it.
    void setFilePath(std::string path);

    /// Null before initialize() and if the file couldn't be read.
    osg::ref_ptr<osg::Node> getModel() { return model; }

    /// Sets the loader of all instances. It isn't owned and stays valid as long as it is set; null takes it away.
    static void setModelLoader(VisualModelComponentModelLoader* loader);

    /// Builds the field table. Called once, when the library is loaded.
    static void initAccessors(VisualModelComponent* object);

protected:
    static VisualModelComponentModelLoader* modelLoader;

private:
    static void loadPhysics(const std::string& path, AgentNodeHandle agent);

    std::string filePath;
    osg::ref_ptr<osg::Node> model;

    static std::map<std::string, AbstractAccessor*>* _accessors;
};

/// Makes a VisualModelComponent for SimObjectDB.
class TESSARIN_AGENT_EXPORT SimObjectFactoryVisualModelComponent final : public SimObjectFactory {
public:
    SimObject* create() override;
};

} // namespace tessarin::agent
