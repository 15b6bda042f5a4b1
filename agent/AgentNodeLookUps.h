#pragma once

#include <agent/AgentNode.h>
#include <agent/NameIndex.h>
#include <sceneutils/NodeIndex.h>

#include <osg/Node>
#include <osg/ref_ptr>

#include <memory>
#include <string>
#include <unordered_map>

namespace tessarin::agent {

/// Looks up by name what one pass over a document asks for again and again. Each answer is that of a plain walk at that
/// moment; where walks have become dear, from an index that lives as long as the outermost pass.
///
/// What hooks do to the lists and names of agents and components is told to the indexes. Nobody tells of changes in a
/// model, so its index counts only until the host is called again.
struct AgentNode::LookUps {
    /// A pass; they nest.
    class Pass {
    public:
        Pass() { ++passes; }
        ~Pass() {
            if (--passes == 0)
                end();
        }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
    };

    static AgentNode* findChild(const AgentNode& agent, const std::string& name);
    static Component* findComponent(const AgentNode& agent, const std::string& name);
    static osg::Node* findNode(osg::Node& model, const std::string& name);

    /// @name What the agents tell
    /// Before an entry leaves a list, and after one was appended.
    /// @{
    static void appended(const AgentNode& agent, AgentNode* child);
    static void appended(const AgentNode& agent, Component* component);
    static void leaving(const AgentNode& agent, AgentNode* child);
    static void leaving(const AgentNode& agent, Component* component);
    /// @}

    /// The lists are taken over from another agent, or the agent ends.
    static void forget(const AgentNode& agent);

private:
    template <class T>
    struct OfList {
        std::size_t steps = 0; ///< that walks have taken
        std::unique_ptr<NameIndex<T>> index;

        T* find(const std::list<T*>& list, const std::string& name);
    };

    struct OfAgent {
        OfList<AgentNode> children;
        OfList<Component> components;
    };

    struct OfModel {
        osg::ref_ptr<osg::Node> model; // so that no other comes to stand at its address
        unsigned long askedAt = 0;     // what is known holds as long as the host isn't called
        int walks = 0;
        std::unique_ptr<sceneutils::NodeIndex> index;
    };

    struct Tables {
        std::unordered_map<const AgentNode*, OfAgent> agents;
        std::unordered_map<const osg::Node*, OfModel> models;
    };

    static Tables& get();
    static OfAgent* known(const AgentNode& agent);
    static void renaming(SimObject& object, const std::string& newName);
    static void end();

    static unsigned passes;
    static Tables* tables; // null as long as there is nothing to remember
};

} // namespace tessarin::agent
