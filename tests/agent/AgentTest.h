#pragma once

#include <agent/AgentNode.h>
#include <agent/GeometryComponent.h>
#include <agent/JointComponent.h>
#include <agent/RigidBodyComponent.h>
#include <agent/SceneGraphModifierComponent.h>
#include <agent/SimObjectDB.h>
#include <agent/SimObjectFactory.h>
#include <agent/VisualModelComponent.h>
#include <tests/doubles/LogCapture.h>
#include <tests/doubles/ModelLoaderDouble.h>
#include <tests/doubles/PhysicsDoubles.h>
#include <tests/doubles/RecordingComponent.h>

#include <gmtl/MatrixOps.h>
#include <gmtl/QuatOps.h>
#include <gmtl/VecOps.h>
#include <osg/MatrixTransform>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <locale>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace tessarin::agent {

using doubles::BodyDouble;
using doubles::JointDouble;
using doubles::Journal;
using doubles::LogCapture;
using doubles::RecordingComponent;
using testing::ElementsAre;
using testing::IsEmpty;
using Owned = std::unique_ptr<AgentNode>;
using Events = RecordingComponent::Events;

/// Attaches a component that writes into the journal under the agent's name.
inline RecordingComponent* listen(AgentNode* node, Journal& journal,
                                  std::optional<Events> events = Events{AgentEvent::UPDATE}) {
    auto* const component = new RecordingComponent(nullptr, {}, std::move(events));
    node->addComponent(component);
    component->record(&journal, node->getName());
    return component;
}

/// What the journal holds, joined by blanks; it is empty afterwards.
inline std::string take(Journal& journal) {
    std::string lines;
    for (const std::string& line : std::exchange(journal, {}))
        lines += (lines.empty() ? "" : " ") + line;
    return lines;
}

/// What the journal holds after an event.
inline std::string send(AgentNode& node, Journal& journal, AgentEvent::_AgentEventEnum event = AgentEvent::UPDATE) {
    journal.clear();
    node.sendEvent(event);
    return take(journal);
}

inline std::string childNames(const AgentNode& node) {
    Journal names;
    for (const AgentNode* const child : node.getChildren())
        names.push_back(child->getName());
    return take(names);
}

/// The components themselves, in list order.
inline std::vector<Component*> componentsOf(AgentNode& node) {
    std::vector<Component*> components;
    node.visitComponents([&](Component* component) { components.push_back(component); });
    return components;
}

inline gmtl::Vec<double, 3> vec(double x, double y, double z) {
    return {x, y, z};
}

/// Whether the node stands in the group, and how often.
inline long entriesIn(AgentNode& node, const osg::Node* child) {
    const osg::Node::ParentList parents = child->getParents();
    return std::count(parents.begin(), parents.end(), node.getOsgTransform().get());
}

/// As long as it lives, numbers are written in another way wherever the locale has its say.
class DecimalCommas {
public:
    ~DecimalCommas() { std::locale::global(before); }

private:
    struct Numbers : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Numbers));
};

/// Makes the objects of the class "Recorder", which write into the journal once the test has prepared them.
struct RecorderFactory final : SimObjectFactory {
    SimObject* create() override {
        auto* const made =
            new RecordingComponent(&journal, {}, Events{AgentEvent::AGENT_CREATED, AgentEvent::AGENT_MODIFIED});
        if (prepare)
            prepare(*made);
        return made;
    }

    Journal journal;
    std::function<void(RecordingComponent&)> prepare;
};

/// Registers the factory and forgets what the test before has left in it.
inline RecorderFactory& recorder() {
    static RecorderFactory factory;
    SimObjectDB::instance()->registerFactory(&factory, "Recorder");
    factory.journal.clear();
    factory.prepare = nullptr;
    return factory;
}

} // namespace tessarin::agent
