#pragma once

#include <agent/Component.h>
#include <agent/KeepsLookUps.h>

#include <osg/Vec3d>

namespace tessarin::viewer {

/// Lets a person drag its agent's body with the left mouse button: a damped spring pulls the place that was seized to
/// the ray through the cursor, as far from the eye as it was. It holds until the button comes up, wherever the cursor
/// is then.
///
/// The spring's strength goes by the mass of the body, so heavy ones follow as light ones do. A static body, and an
/// agent without a body, stay where they are.
///
/// Fields: `frequency`, of the spring, in 1/s; 2 unless it is given.
class DragComponent : public agent::Component, public agent::KeepsLookUps {
public:
    ~DragComponent() override;

    const char* getClassName() override { return "DragComponent"; }
    bool getSupportedEvents(std::list<agent::AgentEvent::_AgentEventEnum>& events) override;
    void setAgentNode(agent::AgentNode* node) override;
    void mousePress() override;
    void prePhysicsTick() override;
    agent::AccessorWithObject getAccessor(const std::string& fieldName) override;
    void getFieldNames(std::list<std::string>& names) override;

private:
    struct Fields {
        double frequency = 2;
    };

    void seize(const osg::Vec3d& place);
    void letGo();

    Fields fields;
    osg::Vec3d grip; // where it is seized, in the frame of the body
    double depth = 0;
};

} // namespace tessarin::viewer
