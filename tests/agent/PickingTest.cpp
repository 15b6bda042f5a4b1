#include <agent/AgentNodeEventHandler.h>
#include <agent/Input.h>
#include <tests/agent/AgentTest.h>

#include <osg/Geode>
#include <osg/Geometry>
#include <osgViewer/GraphicsWindow>

#include <array>

namespace tessarin::agent {
namespace {

using Adapter = osgGA::GUIEventAdapter;

constexpr float overA = 15, overB = 35, overBelow = 55, overC = 75, nowhere = 95;

/// A window of 100 by 100 pixels, in which a pixel is a unit of the scene: upright strips that belong to agents.
struct Picking : testing::Test {
    Picking() {
        osgViewer::GraphicsWindowEmbedded* const window = viewer->setUpViewerAsEmbeddedInWindow(0, 0, 100, 100);
        viewer->getCamera()->setViewMatrixAsLookAt({0, 0, 50}, {0, 0, 0}, {0, 1, 0});
        viewer->getCamera()->setProjectionMatrixAsOrtho(0, 100, 0, 100, 1, 100);
        Adapter& state = *viewer->getEventQueue()->getCurrentEventState();
        state.setGraphicsContext(window);
        state.setInputRange(0, 0, 100, 100);
        state.setMouseYOrientation(Adapter::Y_INCREASING_UPWARDS);
        viewer->setSceneData(root->getOsgTransform());
        a = add("a", 10, 5);
        b = add("b", 30, 5);
        add("below", 50, 5, b);
        handler = new AgentNodeEventHandler(root.get(), viewer);
    }

    /// An agent that is hit in the ten pixels from x on, under a transform of no agent.
    AgentNode* add(const std::string& name, int x, int z, AgentNode* parent = nullptr) {
        AgentNode* const agent = (parent ? parent : root.get())->addChild(name);
        listeners[name] = listen(agent, journal, everything);
        osg::ref_ptr<osg::MatrixTransform> place = new osg::MatrixTransform(osg::Matrix::translate(x, 0, z));
        place->addChild(shapes[name] = new osg::Geode);
        shapes[name]->asGeode()->addDrawable(osg::createTexturedQuadGeometry({}, {10, 0, 0}, {0, 100, 0}));
        agent->getOsgTransform()->addChild(place);
        return agent;
    }

    /// Whether the handler has used the event, what the agents heard of it, and whether the button is down.
    std::string send(Adapter::EventType type, float x, int button = 0) {
        osg::ref_ptr<Adapter> event = new Adapter;
        event->setEventType(type);
        event->setX(x);
        event->setY(40.75f);
        event->setButton(button);
        const bool used = handler->handle(*event, *elsewhere, nullptr, nullptr);
        const bool isDown = input.isButtonCodePressed("mouse " + std::to_string(button));
        return (used ? "used " : "") + take(journal) + (isDown ? " down" : "");
    }

    /// What is heard in frames with the cursor at these places.
    template <class... Places>
    std::string frame(Places... places) {
        std::string heard;
        for (const float x : {float(places)...}) {
            const std::string now = send(Adapter::FRAME, x, -1);
            heard += (heard.empty() || now.empty() ? "" : " ") + now;
        }
        return heard;
    }

    std::string position() {
        int x = 0, y = 0;
        input.getMouse(x, y);
        return std::to_string(x) + ' ' + std::to_string(y);
    }

    static inline const Events everything{AgentEvent::MOUSE_PRESS,  AgentEvent::MOUSE_RELEASE, AgentEvent::MOUSE_DRAG,
                                          AgentEvent::MOUSE_ENTER,  AgentEvent::MOUSE_OVER,    AgentEvent::MOUSE_EXIT,
                                          AgentEvent::WINDOW_RESIZE};

    Input& input = *Input::instance();
    Journal journal;
    Owned root = std::make_unique<AgentNode>("root");
    osg::ref_ptr<osgViewer::Viewer> viewer = new osgViewer::Viewer, elsewhere = new osgViewer::Viewer;
    osg::ref_ptr<AgentNodeEventHandler> handler;
    std::map<std::string, RecordingComponent*> listeners{{"root", listen(root.get(), journal, everything)}};
    std::map<std::string, osg::Node*> shapes;
    AgentNode *a, *b;
};

TEST_F(Picking, TakesTheHighestPriorityThenTheNearestThenTheDeepest) {
    AgentNode* const parent = root->addChild("parent");
    listen(parent, journal, everything);
    AgentNode* const agents[] = {root.get(), parent, add("near", 70, 10, parent), add("far", 70, 0)};
    const std::tuple<std::array<int, 4>, const char*, const char*> rows[] = {
        // priorities, found, hit
        {{1, 1, 1, 1}, "near", "near"},    {{1, 2, 1, 2}, "parent", "near"}, {{1, 1, 1, 2}, "far", "far"},
        {{2, 1, 1, 2}, "root", "near"},    {{0, 0, 0, 0}, "near", "near"},   {{-1, -1, -1, 0}, "far", "far"},
        {{-2, -1, 0, -1}, "near", "near"}, {{1, 1, 7, 7}, "near", "near"},   {{-1, -1, -1, -7}, "", "near"}};
    for (const auto& [priorities, found, hit] : rows) {
        for (std::size_t i = 0; i < 4; ++i)
            agents[i]->setSelectionPriority(priorities[i]);
        const std::string heard = send(Adapter::DRAG, overC);
        EXPECT_EQ(heard.substr(0, heard.find(".mouseDrag")), *found ? std::string("used ") + found : "");
        EXPECT_EQ(input.getClickedNode(), shapes[hit]) << "what was hit, and untouched by a search in vain";
    }
}

TEST_F(Picking, SendsButtonsAndDragsToTheBranchUnderTheCursor) {
    input.setMouse(1, 2);
    for (const int button : {1, 2, 4}) {
        EXPECT_EQ(send(Adapter::PUSH, overB, button), "used b.mousePress below.mousePress down");
        EXPECT_EQ(send(Adapter::DRAG, overBelow, button), "used below.mouseDrag down");
        EXPECT_EQ(send(Adapter::RELEASE, overA, button), "used a.mouseRelease");
        for (const auto type : {Adapter::PUSH, Adapter::DRAG})
            EXPECT_EQ(send(type, nowhere, button), " down");
        EXPECT_EQ(send(Adapter::RELEASE, nowhere, button), "");
        handler->setDoFindAgentUnderCursor(button > 1); // which frames alone follow
    }
    for (const auto type : {Adapter::DOUBLECLICK, Adapter::MOVE, Adapter::KEYDOWN, Adapter::KEYUP, Adapter::SCROLL})
        EXPECT_EQ(send(type, overA, 3), "");
    EXPECT_EQ(position(), "1 2") << "the position comes with frames";
}

TEST_F(Picking, EntersHoversAndLeavesByTheFrame) {
    EXPECT_EQ(frame(nowhere, overA), "a.mouseEnter a.mouseOver");
    EXPECT_EQ(frame(nowhere, overA), "a.mouseOver") << "empty space is no leaving";
    EXPECT_EQ(frame(overBelow), "a.mouseExit below.mouseEnter below.mouseOver");
    EXPECT_EQ(frame(overB), "below.mouseExit b.mouseEnter below.mouseEnter b.mouseOver below.mouseOver");

    handler->setDoFindAgentUnderCursor(false);
    EXPECT_EQ(frame(overA), "");
    handler = new AgentNodeEventHandler(*handler); // a copy goes on where its source stood
    send(Adapter::DRAG, overA);                    // neither reads nor changes which agent the cursor is over
    EXPECT_FALSE(handler->getDoFindAgentUnderCursor());
    handler->setDoFindAgentUnderCursor(true);
    EXPECT_EQ(frame(overA), "b.mouseExit below.mouseExit a.mouseEnter a.mouseOver");
    handler->clearCurrentAgentNode();
    EXPECT_EQ(frame(19.9f), "a.mouseEnter a.mouseOver") << "coordinates are cut toward zero, and a goes from 10 to 20";
    EXPECT_EQ(frame(9.99f), "");
    EXPECT_EQ(position(), "9 40");
    EXPECT_EQ(frame(20.75f), "a.mouseOver");
    EXPECT_EQ(send(Adapter::RESIZE, overA, -1),
              "root.windowResize a.windowResize b.windowResize below.windowResize a.mouseOver");
    EXPECT_EQ(frame(-0.75f), "");
    EXPECT_EQ(position(), "0 40");
}

TEST_F(Picking, ForgetsMarkedAndDeletedAgents) {
    frame(overA);
    listeners["a"]->actions["mouseOver"] = [this] { a->markForRemoval(); };
    EXPECT_EQ(frame(overA), "a.mouseOver");
    EXPECT_EQ(frame(overA), "a.mouseEnter a.mouseOver") << "no event has come to its parent yet";
    root->sendEvent(AgentEvent::UPDATE);
    EXPECT_EQ(take(journal), "a.deleted");
    frame(overBelow);
    add("c", 70, 0);
    b->getChild("below")->markForRemoval();
    handler->setDoFindAgentUnderCursor(false);
    frame(overBelow); // forgotten, searching or not
    handler->setDoFindAgentUnderCursor(true);
    EXPECT_EQ(frame(overC, overB), "c.mouseEnter c.mouseOver c.mouseExit b.mouseEnter below.mouseEnter below.deleted "
                                   "b.mouseOver");
    listeners["b"]->actions["mouseExit"] = [this] { root->removeChild(b), delete b; };
    EXPECT_EQ(frame(overC), "b.mouseExit b.deleted c.mouseEnter c.mouseOver") << "the frame goes on with what is left";
}

TEST_F(Picking, OutlivesItsRootAndItsViewer) {
    frame(overA);
    root.reset();
    EXPECT_EQ(send(Adapter::RESIZE, overB), "root.deleted a.deleted b.deleted below.deleted");
    viewer = nullptr;
    EXPECT_EQ(input.getClickedNode(), nullptr);
    EXPECT_EQ(send(Adapter::PUSH, overA, 1), " down");
    EXPECT_EQ(send(Adapter::RELEASE, overA, 1), "");
    EXPECT_EQ(frame(42), "");
    EXPECT_EQ(position(), "42 40");
    handler = new AgentNodeEventHandler(nullptr, nullptr);
    EXPECT_EQ(send(Adapter::RESIZE, overA), "");
}

/// Whose hook ends whom, and in which way: deleted, removed or marked.
struct Ends : Picking, testing::WithParamInterface<std::tuple<std::string, std::string, char>> {};

TEST_P(Ends, InsideAHookLeaveNothingBehind) {
    const auto& [hook, victim, way] = GetParam();
    Owned removed;
    bool happened = false;
    frame(overA);
    const std::size_t dot = hook.find('.');
    listeners[hook.substr(0, dot)]->actions[hook.substr(dot + 1)] = [&, name = victim, how = way] {
        AgentNode* const agent = name == "root" ? root.get() : AgentNode::getAgentNode(name);
        if (std::exchange(happened, true))
            return;
        if (how == 'm')
            return agent->markForRemoval();
        if (agent == root.get())
            return root.reset();
        agent->getParent()->removeChild(agent);
        removed.reset(agent);
        if (how == 'd')
            removed.reset();
    };
    std::string heard;
    for (const auto type : {Adapter::FRAME, Adapter::PUSH, Adapter::DRAG, Adapter::RELEASE, Adapter::RESIZE})
        heard += send(type, overB) + ' ';
    heard += frame(overA, overB, overBelow, overA);
    EXPECT_TRUE(happened);
    for (const auto& [name, x] : {std::pair<std::string, float>("a", overA), {"b", overB}, {"below", overBelow}}) {
        EXPECT_EQ(send(Adapter::DRAG, x).empty(), !root || !root->hasAgent(name, 2)) << name;
        const std::size_t end = heard.find(name + ".deleted");
        EXPECT_EQ(end == std::string::npos, AgentNode::getAgentNode(name) != nullptr) << heard;
        EXPECT_TRUE(end == std::string::npos || heard.find(name + '.', end + 1) == std::string::npos) << heard;
    }
}

INSTANTIATE_TEST_SUITE_P(OfEach, Ends,
                         testing::Combine(testing::Values("a.mouseExit", "b.mouseEnter", "below.mouseEnter",
                                                          "b.mouseOver", "b.mousePress", "b.mouseDrag",
                                                          "b.mouseRelease", "root.windowResize", "b.windowResize"),
                                          testing::Values("a", "b", "below", "root"), testing::Values('d', 'r', 'm')));

} // namespace
} // namespace tessarin::agent
