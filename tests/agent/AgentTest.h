#pragma once

#include <agent/AgentNode.h>
#include <agent/Component.h>
#include <agent/SimObjectDB.h>
#include <agent/SimObjectFactory.h>
#include <tests/doubles/LogCapture.h>
#include <tests/doubles/RecordingComponent.h>

#include <gmtl/MatrixOps.h>
#include <gmtl/QuatOps.h>
#include <gmtl/VecOps.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace tessarin::agent {

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

inline std::vector<std::string> childNames(const AgentNode& node) {
    std::vector<std::string> names;
    for (const AgentNode* const child : node.getChildren())
        names.push_back(child->getName());
    return names;
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
inline int entriesIn(AgentNode& node, const osg::Node* child) {
    int entries = 0;
    for (unsigned i = 0; i < node.getOsgTransform()->getNumChildren(); ++i)
        entries += node.getOsgTransform()->getChild(i) == child;
    return entries;
}

} // namespace tessarin::agent
