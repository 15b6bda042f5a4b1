#include "AgentTest.h"

#include <agent/AgentNodeHandle.h>

#include <functional>

namespace tessarin::agent {
namespace {

/// A root with the children a, b, c and d, which all listen; what b's hook does is the test's.
class InsideAHook : public testing::Test {
protected:
    InsideAHook() {
        root = std::make_unique<AgentNode>("root");
        for (const char* const name : {"a", "b", "c", "d"})
            listener[name] = listen(root->addChild(name), journal);
    }

    AgentNode* child(const std::string& name) { return root->getChild(name); }

    void remove(const std::string& name, bool deleting) {
        AgentNode* const node = child(name);
        root->removeChild(node);
        if (deleting)
            delete node;
        else
            detached.emplace_back(node);
    }

    /// What is called in one UPDATE, "deleted" left out.
    std::string visited(const std::function<void()>& inHookOfB) {
        listener["b"]->actions["update"] = inHookOfB;
        journal.clear();
        root->sendEvent(AgentEvent::UPDATE);
        std::string names;
        for (const std::string& call : journal)
            if (call.find(".update") != std::string::npos)
                names += call.substr(0, call.find('.'));
        return names;
    }

    Journal journal;
    Owned root;
    std::vector<Owned> detached;
    std::map<std::string, RecordingComponent*> listener;
};

struct Removal {
    std::string removed;
    std::string appended;
    std::string visited;
};

class RemovalInsideAHook : public InsideAHook, public testing::WithParamInterface<std::tuple<Removal, bool>> {};

// A child taken out in the pass is not visited afterwards, an appended one is.
TEST_P(RemovalInsideAHook, LeavesThePassInOrder) {
    const auto& [removal, deleting] = GetParam();
    EXPECT_EQ(visited([&, &test = removal, deletes = deleting] {
                  for (const char name : test.removed)
                      remove(std::string(1, name), deletes);
                  for (const char name : test.appended)
                      listen(root->addChild(std::string(1, name)), journal);
              }),
              removal.visited);
}

INSTANTIATE_TEST_SUITE_P(
    All, RemovalInsideAHook,
    testing::Combine(testing::Values(Removal{"b", "", "abcd"}, Removal{"c", "", "abd"}, Removal{"a", "", "abcd"},
                                     Removal{"d", "", "abc"}, Removal{"bc", "", "abd"}, Removal{"cb", "", "abd"},
                                     Removal{"cd", "ef", "abef"}, Removal{"bcd", "e", "abe"}, Removal{"abcd", "", "ab"},
                                     Removal{"dcba", "ef", "abef"}, Removal{"", "e", "abcde"}),
                     testing::Bool()));

TEST_F(InsideAHook, AllFourCanBeMarked) {
    EXPECT_EQ(visited([&] {
                  for (AgentNode* const node : root->getChildren())
                      node->markForRemoval();
              }),
              "abcd");
    EXPECT_THAT(childNames(*root), IsEmpty());
}

TEST_F(InsideAHook, AMovedAgentIsVisitedWhereItStands) {
    EXPECT_EQ(visited([&] {
                  AgentNode* const d = child("d");
                  root->removeChild(d);
                  child("a")->addChild(d); // behind the pass
                  AgentNode* const a = child("a");
                  root->removeChild(a);
                  child("c")->addChild(a); // before it
                  child("b")->addChild("b1")->addComponent(new RecordingComponent(&journal, "x"));
              }),
              "abxcad");
    EXPECT_THAT(childNames(*root), ElementsAre("b", "c"));
    EXPECT_EQ(root->getOsgTransform()->getNumChildren(), 2u);
}

TEST_F(InsideAHook, ComponentsComeAndGo) {
    AgentNode* const b = child("b");
    RecordingComponent* const second = listen(b, journal);
    RecordingComponent* const third = listen(b, journal);
    EXPECT_EQ(visited([&] {
                  b->removeComponent(second); // silent at once
                  delete third;               // also without being taken off before
                  b->addComponent(new RecordingComponent(&journal, "late"));
                  child("d")->addComponent(new RecordingComponent(&journal, "new"));
                  RecordingComponent* const own = listener["b"];
                  b->removeComponent(own);
                  delete own;
              }),
              "abcdnew");
    const std::unique_ptr<Component> owned(second);
    EXPECT_EQ(componentsOf(*b).size(), 1u);
    listener["b"] = listener["a"];
    EXPECT_EQ(visited([] {}), "alatecdnew");
}

TEST_F(InsideAHook, TheAgentBeingDispatchedMayGo) {
    AgentNode* const b = child("b");
    listen(b, journal);
    listen(b->addChild("below"), journal);
    const RecordingComponent* const deep = listen(b->getChild("below"), journal);
    EXPECT_NE(deep, nullptr);
    EXPECT_EQ(visited([&] { remove("b", true); }), "abcd") << "neither its other listener nor its child";
    EXPECT_THAT(childNames(*root), ElementsAre("a", "c", "d"));
    listener["b"] = listener["c"];
    EXPECT_EQ(visited([&] { root.reset(); }), "ac");
}

TEST_F(InsideAHook, ANestedEventSweepsOnlyWhatNobodyIsIn) {
    AgentNode* const deep = child("b")->addChild("deep");
    RecordingComponent* const mouse = listen(deep, journal, Events{AgentEvent::MOUSE_PRESS});
    mouse->actions["mousePress"] = [&] {
        deep->markForRemoval();
        child("b")->markForRemoval();
        child("a")->markForRemoval();
        for (int i = 0; i < 20; ++i)
            root->addChild("many")->markForRemoval();
        root->sendEvent(AgentEvent::UPDATE);
        EXPECT_THAT(childNames(*root), ElementsAre("b", "c", "d"));
        EXPECT_EQ(root->getOsgTransform()->getNumChildren(), 3u);
        EXPECT_EQ(root->getChild("b")->getChild("deep"), deep);
        journal.emplace_back("end of the hook");
    };
    deep->sendEvent(AgentEvent::MOUSE_PRESS);
    EXPECT_THAT(journal, ElementsAre("deep.mousePress", "a.update", "b.update", "c.update", "d.update", "a.deleted",
                                     "end of the hook"));
    journal.clear();
    root->sendEvent(AgentEvent::RESERVED);
    EXPECT_THAT(journal, ElementsAre("deep.deleted", "b.deleted"));
}

TEST_F(InsideAHook, AnOuterEventSweepsWhatANestedOneHadToLeave) {
    EXPECT_EQ(visited([&] {
                  listener["b"]->actions.clear();
                  child("b")->markForRemoval();
                  root->sendEvent(AgentEvent::UPDATE);
                  ASSERT_NE(child("b"), nullptr);
              }),
              "ababcdcd");
    EXPECT_THAT(childNames(*root), ElementsAre("a", "c", "d"));
}

TEST_F(InsideAHook, DocumentsCanBeAppliedAndMade) {
    LogCapture log;
    AgentNode* made = nullptr;
    EXPECT_EQ(visited([&] {
                  child("b")->modifyWithXml("<AgentNode name='B'><Component class='GeometryComponent' name='g'/>"
                                            "<AgentNode name='new'/></AgentNode>");
                  made = AgentNode::createFromXmlString("<AgentNode name='e'/>");
                  root->addChild(made);
                  listen(made, journal);
              }),
              "abcde");
    ASSERT_NE(child("B"), nullptr);
    EXPECT_NE(child("B")->getChild("new"), nullptr);

    RecordingComponent* const modified = listen(child("c"), journal, Events{AgentEvent::AGENT_MODIFIED});
    modified->actions["onAgentModified"] = [&] { remove("c", true); };
    child("c")->modifyWithXml("<AgentNode/>");
    EXPECT_EQ(child("c"), nullptr);
}

TEST_F(InsideAHook, VisitorsMayTakeEverythingAway) {
    std::string visited;
    root->visitChildren([&](AgentNode* node) {
        visited += node->getName();
        if (node->getName() == "a")
            remove("b", true);
        remove(node->getName(), true);
    });
    EXPECT_EQ(visited, "acd");
    AgentNode* const last = root->addChild("e");
    RecordingComponent* const first = listen(last, journal);
    listen(last, journal);
    int count = 0;
    last->visitComponents([&](Component* component) {
        ++count;
        EXPECT_EQ(component, first);
        remove("e", true);
    });
    EXPECT_EQ(count, 1);
    root->visitChildren(sigc::slot<void, AgentNode*>()); // an empty slot isn't called
    root->addChild("f");
    root->visitChildren([&](AgentNode*) { root.reset(); });
    EXPECT_EQ(root, nullptr);
}

TEST(InsideHooksOfCreation, TheNewAgentAndItsComponentsMayGo) {
    static Journal journal;
    static std::function<void(RecordingComponent&)> prepare;
    struct Factory final : SimObjectFactory {
        SimObject* create() override {
            auto* const made = new RecordingComponent(&journal, {}, Events{AgentEvent::AGENT_CREATED});
            prepare(*made);
            return made;
        }
    };
    static Factory factory;
    SimObjectDB::instance()->registerFactory(&factory, "Prepared");
    const std::string document = "<AgentNode name='x'><Component class='Prepared'/><AgentNode name='y'/></AgentNode>";
    const auto die = [](RecordingComponent& component, const char* hook, bool withAgent) {
        component.actions[hook] = [&component, withAgent] {
            AgentNode* const node = component.getAgentNode();
            if (withAgent) {
                delete node;
                return;
            }
            node->removeComponent(&component);
            delete &component;
        };
    };
    const int before = RecordingComponent::alive;
    for (const char* const hook : {"attached", "initialize", "onAgentCreated"}) {
        SCOPED_TRACE(hook);
        prepare = [&](RecordingComponent& component) { die(component, hook, true); };
        EXPECT_EQ(AgentNode::createFromXmlString(document), nullptr);
        prepare = [&](RecordingComponent& component) { die(component, hook, false); };
        const Owned agent(AgentNode::createFromXmlString(document));
        ASSERT_NE(agent, nullptr);
        EXPECT_THAT(componentsOf(*agent), IsEmpty());
        EXPECT_NE(agent->getChild("y"), nullptr);

        auto* const modified = new AgentNode("m");
        prepare = [&](RecordingComponent& component) { die(component, hook, true); };
        const AgentNodeHandle handle(modified);
        modified->modifyWithXml(document);
        if (std::string(hook) == "onAgentCreated")
            delete modified; // a modification tells nobody of a creation
        EXPECT_EQ(handle.get(), nullptr);
    }
    AgentNode node;
    prepare = [&](RecordingComponent& component) { die(component, "attached", false); };
    EXPECT_EQ(node.getOrAddComponent("Prepared", "name"), nullptr);
    EXPECT_EQ(AgentNode::getAgentNode("x"), nullptr);
    EXPECT_EQ(RecordingComponent::alive, before);
}

} // namespace
} // namespace tessarin::agent
