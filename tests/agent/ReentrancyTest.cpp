#include <tests/agent/AgentTest.h>

namespace tessarin::agent {
namespace {

/// A root with the children a, b, c and d, which all listen; what b's hook does is the test's.
struct InsideAHook : testing::Test {
    InsideAHook() {
        for (const char* const name : {"a", "b", "c", "d"})
            listener[name] = listen(root->addChild(name), journal);
    }

    AgentNode* child(const std::string& name) { return root->getChild(name); }

    void remove(const std::string& name, bool deleting = true) {
        Owned node(child(name));
        root->removeChild(node.get());
        if (!deleting)
            detached.push_back(std::move(node));
    }

    void move(const std::string& name, AgentNode* to) {
        AgentNode* const node = child(name);
        root->removeChild(node);
        to->addChild(node);
    }

    /// Whose update is called in one event, while b's hook does the action.
    std::string visited(const std::function<void()>& inHookOfB, bool replacing = true) {
        if (replacing)
            listener["b"]->actions["update"] = inHookOfB;
        root->sendEvent(AgentEvent::UPDATE);
        std::string names;
        for (const std::string& call : std::exchange(journal, {}))
            if (call.find(".update") != std::string::npos)
                names += call.substr(0, call.find('.'));
        return names;
    }

    void expectSceneGraphInOrder() {
        unsigned i = 0;
        for (AgentNode* const node : root->getChildren())
            EXPECT_EQ(root->getOsgTransform()->getChild(i++), node->getOsgTransform().get());
        EXPECT_EQ(root->getOsgTransform()->getNumChildren(), i);
    }

    Journal journal;
    Owned root = std::make_unique<AgentNode>("root");
    std::vector<Owned> detached;
    std::map<std::string, RecordingComponent*> listener;
};

struct Moves {
    // "b-c+e*a" is a hook of b's that takes c out, appends e, which may have been there, and lists a once more.
    const char *hooks, *visited;
};

struct MovesInsideHooks : InsideAHook, testing::WithParamInterface<std::tuple<Moves, bool>> {};

// A child taken out in the pass is not visited afterwards, an appended one is, and nobody is visited twice.
TEST_P(MovesInsideHooks, VisitEachChildThatIsThereOnce) {
    const auto& [moves, deleting] = GetParam();
    std::istringstream hooks(moves.hooks);
    for (std::string hook; hooks >> hook;)
        listener[hook.substr(0, 1)]->actions["update"] = [this, hook, deleting = deleting] {
            for (std::size_t i = 1; i < hook.size(); i += 2) {
                const std::string name = hook.substr(i + 1, 1);
                const bool returns = hook.find('+' + name) != std::string::npos;
                const auto taken = std::find_if(detached.begin(), detached.end(),
                                                [&](const Owned& node) { return node && node->getName() == name; });
                if (hook[i] == '*')
                    root->addChild(child(name));
                else if (hook[i] == '-' && child(name))
                    remove(name, deleting && !returns);
                else if (hook[i] == '+' && taken != detached.end())
                    root->addChild(taken->release());
                else if (hook[i] == '+')
                    listen(root->addChild(name), journal);
            }
        };
    EXPECT_EQ(visited([] {}, false), moves.visited);
    expectSceneGraphInOrder();
}

INSTANTIATE_TEST_SUITE_P(
    All, MovesInsideHooks,
    testing::Combine(testing::Values(Moves{"b-b", "abcd"}, Moves{"b-c", "abd"}, Moves{"b-a", "abcd"},
                                     Moves{"b-d", "abc"}, Moves{"b-c-b", "abd"}, Moves{"b-c-d+e+f", "abef"},
                                     Moves{"b-b-c-d+e", "abe"}, Moves{"b-d-c-b-a+e+f", "abef"}, Moves{"b+e", "abcde"},
                                     // Brought to the end: not yet visited, being visited, and visited.
                                     Moves{"a-d+d b-d+d c-d+d", "abcd"}, Moves{"a-b+b c-b+b", "acdb"},
                                     Moves{"a-a+a b-b+b c-c+c d-d+d", "abcd"}, Moves{"b-a+a c-a+a d-a+a", "abcd"},
                                     Moves{"b-c+c c-b+b", "abdc"}, Moves{"c-a+a+e d-b+b", "abcde"},
                                     // Listed once more without having left, visited and not.
                                     Moves{"b*b*a d*d", "abcd"}, Moves{"a*d*c d+e", "abcde"}),
                     testing::Bool()));

TEST_F(InsideAHook, AMovedAgentIsVisitedWhereItStandsThen) {
    EXPECT_EQ(visited([&] {
                  move("d", child("a")); // behind the pass
                  move("a", child("c")); // before it
                  listen(child("b")->addChild("x"), journal);
                  root->visitChildren([&](AgentNode*) { move("b", root.get()); }); // the outer walk has visited it
              }),
              "abxcad");
    EXPECT_EQ(childNames(*root), "c b");
    AgentNode* const b = child("b");
    b->markForRemoval();
    EXPECT_EQ(visited([&] { move("b", root.get()); }), "cadbx");
    EXPECT_EQ(childNames(*root), "c") << "it goes though it has left and come back";
}

TEST_F(InsideAHook, ComponentsComeAndGo) {
    AgentNode* const b = child("b");
    const std::unique_ptr<RecordingComponent> second(listen(b, journal));
    RecordingComponent* const third = listen(b, journal);
    EXPECT_EQ(visited([&] {
                  b->removeComponent(second.get()); // silent at once
                  delete third;                     // also without being taken off before
                  b->addComponent(new RecordingComponent(&journal, "late"));
                  child("d")->addComponent(new RecordingComponent(&journal, "new"));
                  delete listener["b"];
              }),
              "abcdnew");
    listener["b"] = listener["a"];
    EXPECT_EQ(visited([] {}), "alatecdnew");
    const std::vector<Component*> before = componentsOf(*child("d"));
    int met = 0;
    child("d")->visitComponents([&](Component* component) {
        EXPECT_EQ(component, before[0]) << "neither a later one nor one that has gone";
        if (++met == 1)
            delete before[1];
        delete child("d")->addComponent(new RecordingComponent);
        child("d")->addComponent(new RecordingComponent);
    });
    EXPECT_EQ(met, 1);
}

TEST_F(InsideAHook, TheAgentBeingDispatchedOrWalkedMayGo) {
    listen(child("b"), journal);
    listen(child("b")->addChild("below"), journal);
    EXPECT_EQ(visited([&] { remove("b"); }), "abcd") << "neither its other listener nor its child";
    std::string names;
    root->visitChildren([&](AgentNode* node) {
        names += node->getName();
        if (node->getName() == "a")
            remove("c");
        remove(node->getName());
    });
    EXPECT_EQ(names, "ad");
    AgentNode* const last = root->addChild("e");
    for (const char* const className : {"JointComponent", "GeometryComponent"})
        last->addComponent(className);
    last->visitComponents([&](Component*) { remove("e"); });
    root->visitChildren(sigc::slot<void, AgentNode*>()); // an empty slot isn't called
    listener["b"] = listen(root->addChild("f"), journal);
    root->addChild("g");
    EXPECT_EQ(visited([&] { root.reset(); }), "f");
}

TEST_F(InsideAHook, ANestedEventSweepsOnlyWhatNobodyIsIn) {
    AgentNode* const deep = child("b")->addChild("deep");
    listen(deep, journal, Events{AgentEvent::MOUSE_PRESS})->actions["mousePress"] = [&] {
        for (AgentNode* const node : {deep, child("b"), child("a")})
            node->markForRemoval();
        for (int i = 0; i < 20; ++i)
            root->addChild("many")->markForRemoval();
        root->sendEvent(AgentEvent::UPDATE);
        EXPECT_EQ(childNames(*root) + childNames(*child("b")), "b c ddeep");
        EXPECT_EQ(root->getOsgTransform()->getNumChildren(), 3u);
        journal.emplace_back("end");
    };
    EXPECT_EQ(send(*deep, journal, AgentEvent::MOUSE_PRESS),
              "deep.mousePress a.update b.update c.update d.update a.deleted end");
    EXPECT_EQ(send(*root, journal, AgentEvent::RESERVED), "deep.deleted b.deleted");

    listener["b"] = listener["c"];
    EXPECT_EQ(visited([&] {
                  listener["c"]->actions.clear();
                  child("c")->markForRemoval();
                  root->sendEvent(AgentEvent::UPDATE);
                  EXPECT_NE(child("c"), nullptr);
              }),
              "ccdd");
    EXPECT_EQ(childNames(*root), "d") << "the outer event sweeps what the nested one had to leave";
}

// It is hung below its own child, which sweeps while the agent above it is still being dispatched.
TEST_F(InsideAHook, AnAgentIsKeptUntilItsDispatchIsOver) {
    for (const bool above : {false, true}) {
        Journal calls;
        AgentNode* const top = root->addChild("top");
        AgentNode* const x = above ? top->addChild("x") : top;
        AgentNode* const y = x->addChild("y");
        listen(top, calls, Events{});
        listen(y, calls, Events{AgentEvent::MOUSE_PRESS})->actions["mousePress"] = [=] {
            x->removeChild(y);
            root->removeChild(top);
            y->addChild(top);
            top->markForRemoval();
        };
        x->sendEvent(AgentEvent::MOUSE_PRESS);
        EXPECT_EQ(take(calls), "y.mousePress");
        EXPECT_EQ(send(*y, calls, AgentEvent::RESERVED), "top.deleted");
        delete y;
    }
}

TEST_F(InsideAHook, TheEndOfAnAgentMayChangeWhatTheSweepTakes) {
    child("c")->markForRemoval();
    listener["c"]->actions["deleted"] = [&] { child("a")->markForRemoval(); }; // behind the sweep
    root->sendEvent(AgentEvent::RESERVED);
    EXPECT_EQ(childNames(*root), "b d");
    EXPECT_EQ(visited([&] {
                  listener["b"]->actions.clear();
                  for (int i = 0; i < 10; ++i)
                      root->addChild("m" + std::to_string(i))->markForRemoval();
                  root->addChild("e");
                  listen(child("m0"), journal)->actions["deleted"] = [&] { move("b", child("m1")); };
                  root->sendEvent(AgentEvent::RESERVED);
                  EXPECT_EQ(childNames(*root), "d m1 e");
                  expectSceneGraphInOrder();
                  journal.clear();
              }),
              "db");
    EXPECT_EQ(childNames(*root), "d e") << "b is no longer visited";
}

TEST_F(InsideAHook, DocumentsMayBeAppliedAndMadeAndTheirAgentsAndComponentsGo) {
    EXPECT_EQ(visited([&] {
                  child("b")->modifyWithXml("<AgentNode name='B'><AgentNode name='new'/></AgentNode>");
                  root->addChild(AgentNode::createFromXmlString("<AgentNode name='e'/>"));
                  listen(child("e"), journal);
              }),
              "abcde");
    EXPECT_EQ(childNames(*child("B")), "new");
    RecordingComponent* const modified = listen(child("c"), journal, Events{AgentEvent::AGENT_MODIFIED});
    modified->actions["onAgentModified"] = [&] { remove("c"); };
    child("c")->modifyWithXml("<AgentNode/>");
    EXPECT_EQ(childNames(*root), "a B d e");

    const std::string document = "<AgentNode name='x'><Component class='Recorder'/><AgentNode name='y'/></AgentNode>";
    const int before = RecordingComponent::alive;
    for (const std::string hook : {"attached", "initialize", "onAgentCreated"}) {
        SCOPED_TRACE(hook);
        const auto inHook = [&](auto action) {
            recorder().prepare = [=](RecordingComponent& made) { made.actions[hook] = [=, &made] { action(made); }; };
        };
        inHook([](RecordingComponent& made) { delete made.getAgentNode(); });
        EXPECT_EQ(AgentNode::createFromXmlString(document), nullptr);
        const AgentNodeHandle agent(new AgentNode("m")), parent(new AgentNode("p"));
        agent->modifyWithXml(document);
        EXPECT_EQ(agent.get() != nullptr, hook == "onAgentCreated") << "of which no modification tells";
        delete agent.get();
        inHook([](RecordingComponent& made) { delete &made; });
        const Owned bare(AgentNode::createFromXmlString(document)), empty(new AgentNode);
        EXPECT_EQ(componentsOf(*bare).size() + bare->getChildren().size(), 1u);
        EXPECT_EQ(empty->getOrAddComponent("Recorder", "name") == nullptr, hook == "attached");
        inHook([&](RecordingComponent&) { delete parent.get(); }); // and with it the child that it was to have
        parent->modifyWithXml("<AgentNode>" + document + "</AgentNode>");
        EXPECT_FALSE(parent);
    }
    EXPECT_EQ(RecordingComponent::alive, before);
}

/// All of them stand at one address, one after the other. The first one deletes itself in a hook, and a second one
/// comes to the agent.
struct Phoenix : RecordingComponent {
    explicit Phoenix(bool first) {
        setName(first ? "first" : "second");
        if (first)
            actions[hook] = [this] {
                AgentNode* const agent = getAgentNode();
                delete this;
                agent->addComponent(new Phoenix(false));
            };
        else
            actions["initialize"] = [] { ADD_FAILURE() << "the second one is not the one that was made"; };
    }
    static void* operator new(std::size_t) { return place; }
    static void operator delete(void*) {}

    struct Factory final : SimObjectFactory {
        SimObject* create() override { return new Phoenix(true); }
    };
    static inline std::string hook;
    alignas(std::max_align_t) static inline char place[4096];
};

TEST(Components, ANewOneAtTheAddressOfADeletedOneIsNotTakenForIt) {
    static Phoenix::Factory factory;
    static_assert(sizeof(Phoenix) <= sizeof(Phoenix::place));
    SimObjectDB::instance()->registerFactory(&factory, "Phoenix");
    for (const char* const hook : {"attached", "getSupportedEvents", "initialize"}) {
        SCOPED_TRACE(Phoenix::hook = hook);
        const std::string element = "<AgentNode><Component class='Phoenix' name='Phoenix'/></AgentNode>";
        const std::function<void(Owned&)> ways[] = {
            [&](Owned& agent) { agent.reset(AgentNode::createFromXmlString(element)); },
            [&](Owned& agent) { agent->modifyWithXml(element); },
            [](Owned& agent) { EXPECT_EQ(agent->addComponent("Phoenix"), nullptr); },
            [](Owned& agent) { EXPECT_EQ(agent->getOrAddComponent("Phoenix"), nullptr); },
            [](Owned& agent) { EXPECT_EQ(agent->getOrAddComponent("Phoenix", "name"), nullptr); },
        };
        const std::size_t documents = 2, all = std::size(ways);
        for (std::size_t way = 0; way < (hook == std::string("initialize") ? documents : all); ++way) {
            Owned agent = std::make_unique<AgentNode>();
            ways[way](agent);
            ASSERT_EQ(componentsOf(*agent).size(), 1u) << way;
            EXPECT_EQ(componentsOf(*agent).front()->getName(), "second") << way;
        }
    }
}

/// A host's own class for bodies, with which something happens at each step of its making.
struct FrailBody final : RigidBodyComponent {
    void attached() override { strike("attached"); }

    struct Factory final : SimObjectFactory {
        SimObject* create() override { return strike("made"), new FrailBody; }
    };
    static inline std::function<void(const std::string&)> strike;
};

// The component, or the agent with it, goes while a class of the host's is made, attached or initialised, in the world,
// or in the loader.
TEST(VisualModelComponent, MayGoWhileItLoadsAndItsAgentToo) {
    using Joint = JointDouble<dynamics::DynamicsRevoluteJoint>;
    static FrailBody::Factory factory;
    static SimObjectFactoryRigidBodyComponent standard;
    SimObjectDB::instance()->registerFactory(&factory, "RigidBodyComponent");
    doubles::ModelLoaderDouble loader;
    doubles::WorldDouble world;
    AgentNode::dynamicsWorld = &world;
    loader.models["m.dae"] = new osg::Group;
    loader.whileLoading = [] { FrailBody::strike("loader"); };
    world.scene = [](dynamics::DynamicsBodyFunctor& functor) {
        for (const char* const name : {"a", "b"}) {
            functor.visitBody(new BodyDouble(name));
            functor.visitJoint(new Joint(name));
            FrailBody::strike("world");
        }
    };
    const std::string document = "<AgentNode name='m'><Component class='VisualModelComponent'><field name='filePath' "
                                 "value='m.dae'/></Component><AgentNode name='last'/></AgentNode>";
    const std::function<void()> directly = [] {
        auto* const component = new VisualModelComponent;
        component->setFilePath("m.dae");
        AgentNode* const agent = new AgentNode("m");
        agent->addComponent(component);
        EXPECT_EQ(component->initialize(), nullptr);
    };
    const std::function<void()> byDocument = [&] { AgentNode::createFromXmlString(document); };
    const std::function<void()> byPatch = [&] { (new AgentNode("m"))->modifyWithXml(document); };
    for (const std::string moment : {"made", "attached", "world", "loader"}) {
        for (const bool withAgent : {false, true}) {
            for (const auto& load : {directly, byDocument, byPatch}) {
                SCOPED_TRACE(moment + (withAgent ? " with its agent" : ""));
                FrailBody::strike = [&](const std::string& now) {
                    AgentNode* const agent = AgentNode::getAgentNode("m");
                    if (now != moment || !agent)
                        return;
                    if (withAgent)
                        delete agent;
                    else
                        delete agent->getComponent("VisualModelComponent");
                };
                load();
                const Owned agent(AgentNode::getAgentNode("m"));
                EXPECT_EQ(agent == nullptr, withAgent);
                if (agent) {
                    EXPECT_EQ(agent->getComponent("VisualModelComponent"), nullptr);
                    EXPECT_NE(agent->getChild("b"), nullptr) << "what comes in belongs to the tree";
                }
                EXPECT_EQ(BodyDouble::alive + Joint::alive, agent ? 4 : 0);
            }
        }
    }
    SimObjectDB::instance()->registerFactory(&standard, "RigidBodyComponent");
    AgentNode::dynamicsWorld = nullptr;
    EXPECT_EQ(BodyDouble::alive + Joint::alive, 0);
}

// The fields of a new component are set before it is on an agent, those of an old one while it is.
TEST(Documents, AnAgentOrAComponentMayGoWhileAFieldIsSet) {
    struct Field final : AbstractAccessor {
        std::string getAsString(void*) override { return {}; }
        void setAsString(void*, const std::string&) override { action(); }
        void setValue(void*, void*) override {}
        void getValue(void*, void*) override {}
        std::function<void()> action;
    };
    static Field field;
    struct Setter : RecordingComponent {
        AccessorWithObject getAccessor(const std::string&) override { return {&field, this}; }
    };
    static SimObjectFactoryFor<Setter> factory;
    SimObjectDB::instance()->registerFactory(&factory, "Setter");
    const std::string document = "<AgentNode name='m'><Component class='Setter' name='s'><field name='a'/><field "
                                 "name='b'/></Component><AgentNode name='last'/></AgentNode>";
    const int before = RecordingComponent::alive;
    field.action = [] { delete AgentNode::getAgentNode("m"); };
    EXPECT_EQ(AgentNode::createFromXmlString(document), nullptr);
    (new AgentNode("m"))->modifyWithXml(document);
    auto* const agent = new AgentNode("m");
    agent->addComponent(new Setter)->setName("s");
    agent->modifyWithXml(document);
    EXPECT_EQ(AgentNode::getAgentNode("m"), nullptr);
    AgentNode other("m");
    other.addComponent(new Setter)->setName("s");
    field.action = [&] { delete other.getComponent("s"); };
    other.modifyWithXml(document);
    EXPECT_EQ(childNames(other), "last");
    EXPECT_EQ(RecordingComponent::alive, before);
}

} // namespace
} // namespace tessarin::agent
