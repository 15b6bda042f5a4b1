#include <agent/AgentNodeEventHandler.h>
#include <agent/Input.h>
#include <tests/agent/AgentTest.h>

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/MatrixTransform>
#include <osgViewer/GraphicsWindow>

#include <algorithm>
#include <map>
#include <type_traits>

namespace tessarin::agent {

namespace {

using Adapter = osgGA::GUIEventAdapter;

struct NoAction : osgGA::GUIActionAdapter {
    void requestRedraw() override {}
    void requestContinuousUpdate(bool) override {}
    void requestWarpPointer(float, float) override {}
};

/// A window of 100 by 100 pixels, in which a pixel is a unit of the scene: upright strips that belong to agents.
struct Scene {
    Scene() {
        window = viewer->setUpViewerAsEmbeddedInWindow(0, 0, 100, 100);
        viewer->getCamera()->setViewMatrixAsLookAt({0, 0, 50}, {0, 0, 0}, {0, 1, 0});
        viewer->getCamera()->setProjectionMatrixAsOrtho(0, 100, 0, 100, 1, 100);
        for (osgGA::EventQueue* const queue : {viewer->getEventQueue(), window->getEventQueue()}) {
            queue->getCurrentEventState()->setGraphicsContext(window);
            queue->getCurrentEventState()->setInputRange(0, 0, 100, 100);
            queue->getCurrentEventState()->setMouseYOrientation(Adapter::Y_INCREASING_UPWARDS);
        }
        viewer->setSceneData(root->getOsgTransform());
        components["root"] = listen(root.get(), journal, everything);
        a = add("a", 10, 5);
        b = add("b", 30, 5);
        below = add("below", 50, 5, b);
        handler = new AgentNodeEventHandler(root.get(), viewer);
        Input::instance()->setClickedNode(nullptr);
    }

    ~Scene() {
        for (const int button : {1, 2, 4})
            Input::instance()->releaseMouseButton(button);
        Input::instance()->update();
    }

    /// An agent that is hit in the ten pixels from x on, under a transform of no agent.
    AgentNode* add(const std::string& name, int x, int z, AgentNode* parent = nullptr) {
        AgentNode* const agent = (parent ? parent : root.get())->addChild(name);
        RecordingComponent* const component = listen(agent, journal, everything);
        osg::ref_ptr<osg::Geode> geode = new osg::Geode;
        geode->addDrawable(osg::createTexturedQuadGeometry({}, {10, 0, 0}, {0, 100, 0}));
        osg::ref_ptr<osg::MatrixTransform> place = new osg::MatrixTransform(osg::Matrix::translate(x, 0, z));
        place->addChild(geode);
        agent->getOsgTransform()->addChild(place);
        shapes[name] = geode;
        components[name] = component;
        return agent;
    }

    bool send(Adapter::EventType type, float x, int button = 0, AgentNodeEventHandler* to = nullptr) {
        osg::ref_ptr<Adapter> event = new Adapter;
        event->setEventType(type);
        event->setX(x);
        event->setY(40.0f);
        event->setButton(button);
        return (to ? to : handler.get())->handle(*event, action, nullptr, nullptr);
    }

    Journal frame(float x) {
        EXPECT_FALSE(send(Adapter::FRAME, x));
        return take();
    }

    Journal take() { return std::exchange(journal, {}); }

    static inline const Events everything{AgentEvent::MOUSE_PRESS,  AgentEvent::MOUSE_RELEASE, AgentEvent::MOUSE_DRAG,
                                          AgentEvent::MOUSE_ENTER,  AgentEvent::MOUSE_OVER,    AgentEvent::MOUSE_EXIT,
                                          AgentEvent::WINDOW_RESIZE};
    static constexpr float overA = 15, overB = 35, overBelow = 55, nowhere = 95;

    Journal journal;
    Owned root = std::make_unique<AgentNode>("root");
    osg::ref_ptr<osgViewer::Viewer> viewer = new osgViewer::Viewer;
    osg::ref_ptr<osgViewer::GraphicsWindowEmbedded> window;
    osg::ref_ptr<AgentNodeEventHandler> handler;
    AgentNode *a, *b, *below;
    std::map<std::string, osg::Node*> shapes;
    std::map<std::string, RecordingComponent*> components;
    NoAction action;
};

class Picking : public testing::Test, protected Scene {};

/// What a hook does to an agent, once.
enum Way { DELETE, REMOVE, MARK };

struct End {
    const char* listener;
    const char* hook;
    const char* victim;
    Way way;
};

struct EndingScene : Scene {
    explicit EndingScene(const End& newEnd) : end(newEnd) {
        frame(overA);
        components[end.listener]->actions[end.hook] = [this] { happen(); };
        for (const auto type : {Adapter::FRAME, Adapter::PUSH, Adapter::DRAG, Adapter::RELEASE, Adapter::RESIZE})
            send(type, overB);
        for (const float x : {overA, overB, overBelow, overA})
            send(Adapter::FRAME, x);
    }

    void happen() {
        if (std::exchange(happened, true))
            return;
        const bool isRoot = end.victim == std::string("root");
        AgentNode* const victim = isRoot ? root.get() : AgentNode::getAgentNode(end.victim);
        if (end.way == MARK)
            return victim->markForRemoval();
        if (isRoot)
            return root.reset();
        victim->getParent()->removeChild(victim);
        removed.reset(victim);
        if (end.way == DELETE)
            removed.reset();
    }

    /// Nothing may be heard of a name after its end, and only what still hangs in the tree is found.
    void check() {
        EXPECT_TRUE(happened);
        for (const auto& [name, x] : {std::pair("a", overA), {"b", overB}, {"below", overBelow}}) {
            const bool isThere = root && (root->hasAgent(name, 2));
            EXPECT_EQ(send(Adapter::PUSH, x), isThere) << name;
            const std::string label = name + std::string(".");
            const auto last = std::find_if(journal.rbegin(), journal.rend(),
                                           [&](const std::string& line) { return line.rfind(label, 0) == 0; });
            EXPECT_EQ(last != journal.rend() && *last == label + "deleted", AgentNode::getAgentNode(name) == nullptr)
                << testing::PrintToString(journal);
        }
    }

    End end;
    bool happened = false;
    Owned removed;
};

} // namespace

TEST_F(Picking, TakesTheHighestPriorityThenTheNearestThenTheDeepest) {
    AgentNode* const far = add("far", 70, 0);
    AgentNode* const parent = root->addChild("parent");
    listen(parent, journal, everything);
    AgentNode* const child = add("child", 70, 10, parent);
    struct {
        int root, parent, child, far;
        const char* found;
        const char* hit;
    } const rows[] = {
        {1, 1, 1, 1, "child", "child"}, {1, 2, 1, 1, "parent", "child"}, {1, 2, 1, 2, "parent", "child"},
        {1, 1, 1, 2, "far", "far"},     {2, 1, 1, 2, "root", "child"},   {1, 1, 0, 0, "parent", "child"},
        {0, 0, 0, 0, "child", "child"}, {-1, -1, -1, 0, "far", "far"},   {-2, -1, 0, -1, "child", "child"},
        {1, 1, 7, 7, "child", "child"}, {-1, -1, -1, -7, "", ""}};
    osg::Node* last = nullptr;
    for (const auto& row : rows) {
        root->setSelectionPriority(row.root);
        parent->setSelectionPriority(row.parent);
        child->setSelectionPriority(row.child);
        far->setSelectionPriority(row.far);
        const std::string found = row.found;
        EXPECT_EQ(send(Adapter::PUSH, 75, 1), !found.empty());
        const Journal heard = take();
        EXPECT_EQ(heard.empty() ? "" : heard.front(), found.empty() ? "" : found + ".mousePress");
        if (!found.empty())
            last = shapes[row.hit];
        EXPECT_EQ(Input::instance()->getClickedNode(), last) << "what was hit, and untouched by a search in vain";
    }
}

TEST_F(Picking, SendsButtonsAndDragsToTheBranchUnderTheCursor) {
    Input& input = *Input::instance();
    input.setMouse(1, 2);
    for (const bool finds : {true, false}) { // frames alone follow the flag
        handler->setDoFindAgentUnderCursor(finds);
        for (const int button : {1, 2, 4}) {
            const std::string code = "mouse " + std::to_string(button);
            EXPECT_TRUE(send(Adapter::PUSH, overB, button));
            EXPECT_THAT(take(), ElementsAre("b.mousePress", "below.mousePress"));
            EXPECT_TRUE(input.isButtonCodePressed(code));
            EXPECT_TRUE(send(Adapter::DRAG, overBelow, button));
            EXPECT_THAT(take(), ElementsAre("below.mouseDrag"));
            EXPECT_FALSE(send(Adapter::DRAG, nowhere, button));
            EXPECT_TRUE(send(Adapter::RELEASE, overA, button));
            EXPECT_THAT(take(), ElementsAre("a.mouseRelease"));
            EXPECT_FALSE(input.isButtonCodePressed(code));
            EXPECT_FALSE(send(Adapter::PUSH, nowhere, button));
            EXPECT_TRUE(input.isButtonCodePressed(code));
            EXPECT_FALSE(send(Adapter::RELEASE, nowhere, button));
            EXPECT_FALSE(input.isButtonCodePressed(code));
        }
    }
    input.update();
    for (const auto type : {Adapter::DOUBLECLICK, Adapter::MOVE, Adapter::KEYDOWN, Adapter::KEYUP, Adapter::SCROLL})
        EXPECT_FALSE(send(type, overA, 1));
    EXPECT_FALSE(input.wasButtonCodePressed("mouse 1") || input.isMouseScrolling());
    int x = 0, y = 0;
    input.getMouse(x, y);
    EXPECT_EQ(std::pair(x, y), std::pair(1, 2)) << "the position comes with frames";

    input.setEnabled(false);
    EXPECT_TRUE(send(Adapter::PUSH, overA, 1));
    EXPECT_THAT(take(), ElementsAre("a.mousePress"));
    input.setEnabled(true);
    EXPECT_FALSE(input.isButtonCodePressed("mouse 1"));
}

TEST_F(Picking, EntersHoversAndLeavesByTheFrame) {
    EXPECT_THAT(frame(nowhere), IsEmpty());
    EXPECT_THAT(frame(overA), ElementsAre("a.mouseEnter", "a.mouseOver"));
    EXPECT_THAT(frame(overA), ElementsAre("a.mouseOver"));
    EXPECT_THAT(frame(nowhere), IsEmpty());
    EXPECT_THAT(frame(overA), ElementsAre("a.mouseOver"));
    EXPECT_THAT(frame(nowhere), IsEmpty());
    EXPECT_THAT(frame(overBelow), ElementsAre("a.mouseExit", "below.mouseEnter", "below.mouseOver"));
    EXPECT_THAT(frame(overB),
                ElementsAre("below.mouseExit", "b.mouseEnter", "below.mouseEnter", "b.mouseOver", "below.mouseOver"));
    EXPECT_EQ(Input::instance()->getClickedNode(), shapes["b"]);

    handler->setDoFindAgentUnderCursor(false);
    EXPECT_FALSE(handler->getDoFindAgentUnderCursor());
    EXPECT_THAT(frame(overA), IsEmpty());
    send(Adapter::PUSH, overA, 1), take(); // neither reads nor changes which agent the cursor is over
    handler->setDoFindAgentUnderCursor(true);
    EXPECT_THAT(frame(overA), ElementsAre("b.mouseExit", "below.mouseExit", "a.mouseEnter", "a.mouseOver"));
    handler->clearCurrentAgentNode();
    EXPECT_THAT(take(), IsEmpty());
    EXPECT_THAT(frame(overA), ElementsAre("a.mouseEnter", "a.mouseOver"));

    EXPECT_FALSE(send(Adapter::RESIZE, overA));
    EXPECT_THAT(take(), ElementsAre("root.windowResize", "a.windowResize", "b.windowResize", "below.windowResize",
                                    "a.mouseOver"));
}

TEST_F(Picking, CutsCoordinatesTowardZero) {
    int x = 0, y = 0;
    add("edge", 0, 0); // from pixel 0 to 10
    const auto position = [&] { return Input::instance()->getMouse(x, y), std::pair(x, y); };
    EXPECT_THAT(frame(19.9f), ElementsAre("a.mouseEnter", "a.mouseOver"));
    EXPECT_EQ(position(), std::pair(19, 40));
    handler->clearCurrentAgentNode();
    EXPECT_THAT(frame(9.99f), ElementsAre("edge.mouseEnter", "edge.mouseOver")) << "the strip of a begins at 10";
    EXPECT_THAT(frame(20.75f), ElementsAre("edge.mouseExit", "a.mouseEnter", "a.mouseOver")) << "it ends at 20";
    EXPECT_EQ(position(), std::pair(20, 40));
    frame(-0.75f);
    EXPECT_EQ(position(), std::pair(0, 40));
}

TEST_F(Picking, ForgetsAMarkedAgentWithoutAnExit) {
    frame(overA);
    components["a"]->actions["mouseOver"] = [this] { a->markForRemoval(); };
    EXPECT_THAT(frame(overA), ElementsAre("a.mouseOver"));
    EXPECT_THAT(frame(overA), ElementsAre("a.mouseEnter", "a.mouseOver")) << "no event has come to its parent yet";
    root->sendEvent(AgentEvent::UPDATE);
    EXPECT_THAT(take(), ElementsAre("a.deleted"));
    EXPECT_THAT(frame(overA), IsEmpty());
    EXPECT_THAT(frame(overBelow), ElementsAre("below.mouseEnter", "below.mouseOver"));
    below->markForRemoval();
    handler->setDoFindAgentUnderCursor(false);
    EXPECT_THAT(frame(overB), IsEmpty());
    handler->setDoFindAgentUnderCursor(true);
    EXPECT_THAT(frame(overB), ElementsAre("b.mouseEnter", "below.mouseEnter", "below.deleted", "b.mouseOver"))
        << "a marked agent is forgotten, searching or not";
}

TEST(AgentsUnderTheCursor, MayEndInsideTheHooks) {
    for (const auto& [listener, hook] : {std::pair("a", "mouseExit"),
                                         {"b", "mouseEnter"},
                                         {"below", "mouseEnter"},
                                         {"b", "mouseOver"},
                                         {"b", "mousePress"},
                                         {"b", "mouseDrag"},
                                         {"b", "mouseRelease"},
                                         {"root", "windowResize"},
                                         {"b", "windowResize"}})
        for (const char* const victim : {"a", "b", "below", "root"})
            for (const Way way : {DELETE, REMOVE, MARK}) {
                SCOPED_TRACE(std::string(listener) + '.' + hook + " ends " + victim + ", way " + std::to_string(way));
                EndingScene(End{listener, hook, victim, way}).check();
            }
}

TEST_F(Picking, GoesOnInTheSameFrameWithWhatIsLeft) {
    frame(overA);
    components["a"]->actions["mouseExit"] = [this] { root->removeChild(b), delete b; };
    EXPECT_THAT(frame(overB), ElementsAre("a.mouseExit", "b.deleted", "below.deleted"));
    EXPECT_THAT(frame(overA), ElementsAre("a.mouseEnter", "a.mouseOver")) << "a has been left";
    AgentNode* const c = add("c", 70, 0);
    components["a"]->actions["mouseExit"] = [this] { root->removeChild(a), delete a; };
    EXPECT_THAT(frame(75), ElementsAre("a.mouseExit", "a.deleted", "c.mouseEnter", "c.mouseOver"));
    components["c"]->actions["mouseOver"] = [&] { root->removeChild(c), delete c; };
    EXPECT_THAT(frame(75), ElementsAre("c.mouseOver", "c.deleted"));
    EXPECT_THAT(frame(75), IsEmpty());
}

TEST_F(Picking, OutlivesItsRootAndItsViewer) {
    frame(overA);
    const osg::observer_ptr<osg::Node> hit = shapes["a"];
    root.reset();
    take();
    EXPECT_FALSE(send(Adapter::RESIZE, overB));
    EXPECT_FALSE(send(Adapter::PUSH, overA, 1));
    window = nullptr;
    viewer = nullptr;
    EXPECT_FALSE(hit.valid());
    EXPECT_EQ(Input::instance()->getClickedNode(), nullptr);
    EXPECT_FALSE(send(Adapter::RELEASE, overA, 1));
    EXPECT_TRUE(Input::instance()->wasButtonCodeReleased("mouse 1"));
    EXPECT_FALSE(send(Adapter::FRAME, 42));
    int x = 0, y = 0;
    Input::instance()->getMouse(x, y);
    EXPECT_EQ(x, 42);
    EXPECT_THAT(take(), IsEmpty());
    const osg::ref_ptr<AgentNodeEventHandler> empty = new AgentNodeEventHandler(nullptr, nullptr);
    EXPECT_FALSE(send(Adapter::RESIZE, overA, 0, empty) || send(Adapter::PUSH, overA, 0, empty));
}

TEST_F(Picking, IsCopiedWithTheAgentUnderTheCursor) {
    frame(overA);
    handler->setDoFindAgentUnderCursor(false);
    const osg::ref_ptr<AgentNodeEventHandler> copy = new AgentNodeEventHandler(*handler);
    EXPECT_FALSE(copy->getDoFindAgentUnderCursor());
    copy->setDoFindAgentUnderCursor(true);
    send(Adapter::RESIZE, overA, 0, copy);
    EXPECT_THAT(take(), ElementsAre("root.windowResize", "a.windowResize", "b.windowResize", "below.windowResize",
                                    "a.mouseOver"));
    copy->clearCurrentAgentNode();
    handler->setDoFindAgentUnderCursor(true);
    EXPECT_THAT(frame(overA), ElementsAre("a.mouseOver")) << "each goes its own way";
    EXPECT_STREQ(copy->className(), "GUIEventHandler");
    EXPECT_STREQ(copy->libraryName(), "osgGA");
    static_assert(!std::is_destructible_v<AgentNodeEventHandler>, "handlers are counted");
}

TEST_F(Picking, WorksInTheEventTraversalOfItsViewer) {
    viewer->addEventHandler(handler);
    const auto traverse = [this] {
        viewer->advance();
        viewer->eventTraversal();
        return take();
    };
    window->getEventQueue()->mouseMotion(overB, 50);
    EXPECT_THAT(traverse(), ElementsAre("b.mouseEnter", "below.mouseEnter", "b.mouseOver", "below.mouseOver"));
    window->getEventQueue()->mouseButtonPress(overB, 50, 3);
    EXPECT_THAT(traverse(), ElementsAre("b.mousePress", "below.mousePress", "b.mouseOver", "below.mouseOver"));
    EXPECT_TRUE(Input::instance()->isButtonCodePressed("mouse 4")) << "the right button's mask";
}

} // namespace tessarin::agent
