#pragma once

#include <agent/AgentNodeHandle.h>
#include <agent/Export.h>
#include <agent/Forward.h>

#include <osg/Group>
#include <osg/ref_ptr>

#include <string>

namespace tessarin::agent {

/// Makes agents of one name in code. A host derives its own factories to change how an agent is made, by overriding
/// createAgent, and where it goes, by overriding addAgent. SimObjectDB doesn't know of these factories.
///
/// The class also holds two values for the whole process, for the host's own use: the root agent and the scene's root
/// group. The library reads neither.
class TESSARIN_AGENT_EXPORT AgentFactory {
public:
    /// @param newFactoryName what getFactoryName gives.
    /// @param newAgentName the name of every agent that createAgent makes.
    explicit AgentFactory(const std::string& newFactoryName = "AgentFactory",
                          const std::string& newAgentName = "AgentNode");
    AgentFactory(const AgentFactory&) = default;
    AgentFactory& operator=(const AgentFactory&) = default;
    virtual ~AgentFactory();

    /// A new agent without a parent. It belongs to the caller.
    virtual AgentNode* createAgent();

    /// createAgent, handed to addAgent.
    /// @return what addAgent returns.
    virtual AgentNode* createAndAddAgent();

    virtual const std::string& getFactoryName() const;

    /// The host's root agent; null until it is set, and when the agent is gone. Not owned.
    /// @{
    static AgentNode* getRootAgent();
    static void setRootAgent(AgentNode* agent);
    /// @}

    /// The scene's root group; null until it is set.
    /// @{
    static osg::ref_ptr<osg::Group> getSceneData();
    static void setSceneData(osg::ref_ptr<osg::Group> group);
    /// @}

protected:
    /// Puts a new agent where it belongs; here, nowhere.
    /// @return its argument.
    virtual AgentNode* addAgent(AgentNode* agent);

    static AgentNodeHandle rootAgent;
    static osg::ref_ptr<osg::Group> sceneData;

private:
    std::string factoryName;
    std::string agentName;
};

} // namespace tessarin::agent
