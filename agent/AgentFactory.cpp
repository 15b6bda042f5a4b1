#include <agent/AgentFactory.h>

#include <agent/AgentNode.h>

namespace tessarin::agent {

AgentNodeHandle AgentFactory::rootAgent;
osg::ref_ptr<osg::Group> AgentFactory::sceneData;

AgentFactory::AgentFactory(const std::string& newFactoryName, const std::string& newAgentName)
    : factoryName(newFactoryName), agentName(newAgentName) {}

AgentFactory::~AgentFactory() = default;

AgentNode* AgentFactory::createAgent() {
    return new AgentNode(agentName);
}

AgentNode* AgentFactory::createAndAddAgent() {
    return addAgent(createAgent());
}

const std::string& AgentFactory::getFactoryName() const {
    return factoryName;
}

AgentNode* AgentFactory::addAgent(AgentNode* agent) {
    return agent;
}

AgentNode* AgentFactory::getRootAgent() {
    return rootAgent;
}

void AgentFactory::setRootAgent(AgentNode* agent) {
    rootAgent = agent;
}

osg::ref_ptr<osg::Group> AgentFactory::getSceneData() {
    return sceneData;
}

void AgentFactory::setSceneData(osg::ref_ptr<osg::Group> group) {
    sceneData = group;
}

} // namespace tessarin::agent
