#pragma once

#include <tests/doubles/Counted.h>

#include <agent/Component.h>

#include <osg/Node>
#include <osg/ref_ptr>

#include <functional>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tessarin::doubles {

using Journal = std::vector<std::string>;

/// Writes every call of a hook into a journal, as "label.hook", and then does what the test has put under the hook's
/// name. It wants the events that it is given, UPDATE alone by default; without a list it leaves the question open.
class RecordingComponent : public agent::Component, public Counted<RecordingComponent> {
public:
    using Events = std::list<agent::AgentEvent::_AgentEventEnum>;

    explicit RecordingComponent(Journal* newJournal = nullptr, std::string newLabel = {},
                                std::optional<Events> wanted = Events{agent::AgentEvent::UPDATE})
        : events(std::move(wanted)), label(std::move(newLabel)), journal(newJournal) {}
    RecordingComponent(const RecordingComponent&) = default;
    RecordingComponent& operator=(const RecordingComponent&) = default;
    ~RecordingComponent() override { happen("deleted"); }

    const char* getClassName() override { return "RecordingComponent"; }
    Component* initialize() override { return happen("initialize"), this; }
    bool getSupportedEvents(Events& list) override {
        happen("getSupportedEvents");
        if (events)
            list.insert(list.end(), events->begin(), events->end());
        return events.has_value();
    }
    void setAgentNode(agent::AgentNode* node) override {
        Component::setAgentNode(node);
        happen(node ? "setAgentNode" : "setAgentNode null");
    }
    osg::Node* getOsgNode() override { return osgNode.get(); }

    void onAgentCreated() override { happen("onAgentCreated"); }
    void onAgentModified() override { happen("onAgentModified"); }
    void prePhysicsUpdate() override { happen("prePhysicsUpdate"); }
    void prePhysicsTick() override { happen("prePhysicsTick"); }
    void postPhysicsTick() override { happen("postPhysicsTick"); }
    void postPhysicsUpdate() override { happen("postPhysicsUpdate"); }
    void update() override { happen("update"); }
    void postUpdate() override { happen("postUpdate"); }
    void mousePress() override { happen("mousePress"); }
    void mouseRelease() override { happen("mouseRelease"); }
    void mouseDrag() override { happen("mouseDrag"); }
    void mouseEnter() override { happen("mouseEnter"); }
    void mouseOver() override { happen("mouseOver"); }
    void mouseExit() override { happen("mouseExit"); }
    void windowResize() override { happen("windowResize"); }
    void attached() override { happen("attached"); }
    void onCollision(agent::CollisionData&) override { happen("onCollision"); }

    void record(Journal* newJournal, std::string newLabel) {
        journal = newJournal;
        label = std::move(newLabel);
    }

    std::optional<Events> events;
    std::map<std::string, std::function<void()>> actions; // by hook
    osg::ref_ptr<osg::Node> osgNode;

private:
    void happen(const std::string& hook) {
        if (journal)
            journal->push_back(label.empty() ? hook : label + '.' + hook);
        const auto found = actions.find(hook);
        if (found == actions.end())
            return;
        const std::function<void()> action = found->second; // it may delete this component
        action();
    }

    std::string label;
    Journal* journal;
};

} // namespace tessarin::doubles
