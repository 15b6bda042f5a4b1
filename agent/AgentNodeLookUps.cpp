#include <agent/AgentNodeLookUps.h>

#include <agent/AgentNodeOsgUserData.h>
#include <agent/Component.h>
#include <sceneutils/FindNodeVisitor.h>

#include <osg/Transform>

namespace tessarin::agent {

unsigned AgentNode::LookUps::passes = 0;
AgentNode::LookUps::Tables* AgentNode::LookUps::tables = nullptr;

namespace {

/// Below that, a walk costs less than to remember anything.
constexpr std::size_t shortList = 32;

/// How many walks over a whole list an index may cost.
constexpr std::size_t walksPerIndex = 4;

/// The same for models, of which a walk finds what it seeks half-way.
constexpr int searchesPerIndex = 8;

bool isOfAgent(const osg::Node& node) {
    return dynamic_cast<const AgentNodeOsgUserData*>(node.getUserData()) != nullptr;
}

} // namespace

template <class T>
T* AgentNode::LookUps::OfList<T>::find(const std::list<T*>& list, const std::string& name) {
    if (index && !index->isUsable())
        index.reset();
    if (index)
        return index->find(name);
    if (steps > walksPerIndex * list.size()) {
        steps = 0;
        index = std::make_unique<NameIndex<T>>(list);
        SimObject::renaming = renaming;
        return index->find(name);
    }
    for (T* const object : list) {
        ++steps;
        if (object->getName() == name)
            return object;
    }
    return nullptr;
}

AgentNode* AgentNode::LookUps::findChild(const AgentNode& agent, const std::string& name) {
    if (agent.children.size() <= shortList)
        return NameIndex<AgentNode>::walk(agent.children, name);
    return get().agents[&agent].children.find(agent.children, name);
}

Component* AgentNode::LookUps::findComponent(const AgentNode& agent, const std::string& name) {
    if (agent.components.size() <= shortList)
        return NameIndex<Component>::walk(agent.components, name);
    return get().agents[&agent].components.find(agent.components, name);
}

osg::Node* AgentNode::LookUps::findNode(osg::Node& model, const std::string& name) {
    OfModel& known = get().models[&model];
    known.model = &model;
    if (known.askedAt != hostCalls) {
        known.askedAt = hostCalls;
        known.walks = 0;
        known.index.reset();
    }
    if (!known.index && known.walks++ == searchesPerIndex)
        known.index = std::make_unique<sceneutils::NodeIndex>(model, isOfAgent);
    if (known.index && known.index->isComplete())
        return known.index->find(name);
    sceneutils::FindNodeVisitor finder(name);
    model.accept(finder);
    return finder.getFirst();
}

void AgentNode::LookUps::appended(const AgentNode& agent, AgentNode* child) {
    if (OfAgent* const of = known(agent); of && of->children.index)
        of->children.index->appended(child);
}

void AgentNode::LookUps::appended(const AgentNode& agent, Component* component) {
    if (OfAgent* const of = known(agent); of && of->components.index)
        of->components.index->appended(component);
}

void AgentNode::LookUps::leaving(const AgentNode& agent, AgentNode* child) {
    if (OfAgent* const of = known(agent); of && of->children.index)
        of->children.index->leaving(child);
}

void AgentNode::LookUps::leaving(const AgentNode& agent, Component* component) {
    if (OfAgent* const of = known(agent); of && of->components.index)
        of->components.index->leaving(component);
}

void AgentNode::LookUps::forget(const AgentNode& agent) {
    if (tables)
        tables->agents.erase(&agent);
}

AgentNode::LookUps::Tables& AgentNode::LookUps::get() {
    if (!tables)
        tables = new Tables;
    return *tables;
}

AgentNode::LookUps::OfAgent* AgentNode::LookUps::known(const AgentNode& agent) {
    if (!tables)
        return nullptr;
    const auto found = tables->agents.find(&agent);
    return found == tables->agents.end() ? nullptr : &found->second;
}

void AgentNode::LookUps::renaming(SimObject& object, const std::string& newName) {
    if (object.getName() == newName)
        return;
    const auto tell = [&](auto* named, OfList<std::remove_pointer_t<decltype(named)>> OfAgent::*list) {
        const Listing& place = named->listing;
        const std::vector<AgentNode*> holders =
            place.hasMoreAgents() ? place.getAgents() : std::vector<AgentNode*>{place.getFirstAgent()};
        for (const AgentNode* const holder : holders) {
            OfAgent* const of = holder ? known(*holder) : nullptr;
            if (!of || !(of->*list).index)
                continue;
            if (place.isRepeated())
                (of->*list).index.reset(); // how often it is in the list only a walk could tell
            else
                (of->*list).index->renaming(named, newName);
        }
    };
    if (auto* const agent = dynamic_cast<AgentNode*>(&object))
        tell(agent, &OfAgent::children);
    else if (auto* const component = dynamic_cast<Component*>(&object))
        tell(component, &OfAgent::components);
}

void AgentNode::LookUps::end() {
    SimObject::renaming = nullptr;
    delete std::exchange(tables, nullptr);
}

} // namespace tessarin::agent
