// Any bytes as an agent document: applied to a tree, made into one, written, and read again. What is written is
// readable.

#include <agent/AgentNode.h>
#include <agent/VisualModelComponent.h>
#include <agent/VisualModelComponentModelLoader.h>
#include <logging/Logger.h>

#include <osg/Group>
#include <osg/MatrixTransform>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>

using namespace tessarin::agent;

namespace {

// Documents name any file; the fuzzer opens none.
class NoFileLoader : public VisualModelComponentModelLoader {
public:
    osg::ref_ptr<osg::Node> loadModel(const std::string& path) override {
        if (path.empty())
            return nullptr;
        const osg::ref_ptr<osg::Group> model = new osg::Group;
        const osg::ref_ptr<osg::MatrixTransform> part = new osg::MatrixTransform;
        part->setName("a");
        model->addChild(part);
        return model;
    }
};

NoFileLoader loader;

std::string write(AgentNode& agent) {
    std::ostringstream text;
    agent.createXml(text);
    return text.str();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    tessarin::logging::Logger::instance()->setLevel(0);
    VisualModelComponent::setModelLoader(&loader);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);

    AgentNode tree("tree");
    tree.addChild("a")->addChild("b");
    tree.modifyWithXml(text);
    tree.sendEvent(AgentEvent::UPDATE);
    tree.modifyWithXml(text);

    const std::unique_ptr<AgentNode> agent(AgentNode::createFromXmlString(text));
    if (!agent)
        return 0;
    agent->modifyWithXml(text);
    agent->sendEvent(AgentEvent::UPDATE);

    const std::string written = write(*agent);
    const std::unique_ptr<AgentNode> again(AgentNode::createFromXmlString(written));
    if (!again)
        std::abort();
    return 0;
}
