#include "AgentTest.h"

#include <agent/AgentNodeHandle.h>
#include <agent/SceneGraphModifierComponent.h>

#include <osg/MatrixTransform>

#include <new>

namespace tessarin::agent {
namespace {

/// An agent whose place in memory can be given to another one.
class ReusedPlace {
public:
    ReusedPlace() = default;
    ReusedPlace(const ReusedPlace&) = delete;
    ReusedPlace& operator=(const ReusedPlace&) = delete;
    ~ReusedPlace() { agent->~AgentNode(); }

    void replace(const std::string& name) {
        agent->~AgentNode();
        agent = new (&place) AgentNode(name);
    }
    AgentNode* get() { return agent; }

private:
    alignas(AgentNode) unsigned char place[sizeof(AgentNode)]{};
    AgentNode* agent = new (&place) AgentNode("old");
};

TEST(Handles, ANewAgentAtTheOldAddressIsAnotherOne) {
    ReusedPlace place;
    AgentNode orphan("orphan");
    place.get()->addChild(&orphan);
    place.get()->removeChild(&orphan);
    const osg::ref_ptr<osg::Transform> transform = place.get()->getOsgTransform();
    const osg::ref_ptr<osg::Transform> second = new osg::MatrixTransform(*transform->asMatrixTransform());
    AgentNodeHandle handle(place.get());
    const AgentNodeHandle copy(handle);
    AgentNode waiting("waiting");
    AgentNode* const unlisted = waiting.addChild("unlisted");
    auto* const modifier = new SceneGraphModifierComponent;
    waiting.addComponent(modifier);
    modifier->scheduleAddChild(place.get(), unlisted);
    modifier->scheduleRemoveChild(&waiting, place.get());
    modifier->scheduleAddChild(nullptr, nullptr);
    modifier->scheduleRemoveChild(&waiting, unlisted);

    place.replace("new");
    EXPECT_EQ(orphan.getParent(), nullptr);
    EXPECT_EQ(AgentNode::getAgentNode(transform), nullptr);
    EXPECT_EQ(AgentNode::getAgentNode(second), nullptr) << "a copied transform shares the link";
    EXPECT_EQ(handle.get(), nullptr);
    EXPECT_EQ(copy.get(), nullptr);
    EXPECT_EQ(AgentNode::getAgentNode("old"), nullptr);
    waiting.sendEvent(AgentEvent::UPDATE);
    const Owned owned(unlisted);
    EXPECT_THAT(childNames(*place.get()), IsEmpty());
    EXPECT_THAT(childNames(waiting), IsEmpty()) << "the rest is carried out";

    handle = place.get();
    handle = handle;
    EXPECT_EQ(handle->getName(), "new");
    handle = copy;
    EXPECT_EQ(handle.get(), nullptr);
}

TEST(Handles, AreNullWhileTheAgentEnds) {
    Journal journal;
    auto root = std::make_unique<AgentNode>("root");
    RecordingComponent* const child = listen(root->addChild("child"), journal);
    const AgentNodeHandle handle(root.get());
    AgentNodeHandle late;
    child->actions["deleted"] = [&, transform = root->getOsgTransform(), dying = root.get()] {
        EXPECT_EQ(handle.get(), nullptr);
        EXPECT_EQ(AgentNode::getAgentNode(transform), nullptr);
        EXPECT_EQ(AgentNode::getAgentNode("root"), nullptr);
        late = dying;
    };
    root.reset();
    EXPECT_THAT(journal, ElementsAre("child.deleted"));
    EXPECT_EQ(late.get(), nullptr);
}

} // namespace
} // namespace tessarin::agent
