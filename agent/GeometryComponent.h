#pragma once

#include <agent/Component.h>
#include <agent/Export.h>
#include <agent/SimObjectFactory.h>

#include <osg/Node>
#include <osg/ref_ptr>

#include <iosfwd>

namespace tessarin::agent {

/// Hangs one scene graph node under its agent's transform: what makes an agent visible. Whatever the node shows moves
/// with the agent.
///
/// The node comes from the host, or from a model: a document that names the component ties it to the node of the
/// agent's name in the nearest VisualModelComponent up the tree. It may be set before the component is attached or
/// after. The component holds a reference to it, and a node may stand under other parents as well.
class TESSARIN_AGENT_EXPORT GeometryComponent : public Component {
public:
    GeometryComponent() = default;

    /// The scene graph isn't touched before the component is attached.
    explicit GeometryComponent(osg::ref_ptr<osg::Node> node);

    GeometryComponent(const GeometryComponent&) = default;
    GeometryComponent& operator=(const GeometryComponent& other);

    /// Doesn't touch the scene graph: the agent has taken the node out before.
    ~GeometryComponent() override;

    const char* getClassName() override;
    bool getSupportedEvents(std::list<AgentEvent::_AgentEventEnum>& events) override;
    AccessorWithObject getAccessor(const std::string& fieldName) override;
    void getFieldNames(std::list<std::string>& names) override;
    osg::Node* getOsgNode() override;
    virtual void printValues(std::ostream& stream);

    /// Puts a node in the place of the present one, under the agent's transform too if there is an agent. Null takes
    /// the present one away. Call it where the scene graph may be changed.
    virtual void setOsgNode(osg::ref_ptr<osg::Node> node);

private:
    osg::ref_ptr<osg::Node> osgNode;
};

/// Makes a GeometryComponent for SimObjectDB.
class TESSARIN_AGENT_EXPORT SimObjectFactoryGeometryComponent final : public SimObjectFactory {
public:
    SimObject* create() override;
};

} // namespace tessarin::agent
