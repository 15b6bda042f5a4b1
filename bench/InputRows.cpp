// The agent under the cursor beside OpenSceneGraph's ray alone, and questions to the input beside look-ups in a table.

#include <bench/Row.h>

#include <agent/AgentNode.h>
#include <agent/AgentNodeEventHandler.h>
#include <agent/Input.h>

#include <osg/Geode>
#include <osg/ShapeDrawable>
#include <osgViewer/GraphicsWindow>
#include <osgViewer/Viewer>

#include <map>
#include <string>

namespace tessarin::bench {

using agent::AgentNode;
using agent::Input;
using agent::VirtualInput;

namespace {

constexpr int windowSize = 1000;
constexpr int boxesPerSide = 100;

/// Ten thousand boxes side by side, an agent each, in a window that shows them all.
struct BoxedWindow {
    BoxedWindow() {
        osgViewer::GraphicsWindowEmbedded* const window =
            viewer->setUpViewerAsEmbeddedInWindow(0, 0, windowSize, windowSize);
        window->getEventQueue()->windowResize(0, 0, windowSize, windowSize);
        viewer->getCamera()->setViewMatrixAsLookAt({0, 0, 10}, {0, 0, 0}, {0, 1, 0});
        viewer->getCamera()->setProjectionMatrixAsOrtho(0, boxesPerSide, 0, boxesPerSide, 1, 20);
        const osg::ref_ptr<osg::Geode> box = new osg::Geode;
        box->addDrawable(new osg::ShapeDrawable(new osg::Box({0.5f, 0.5f, 0}, 0.9f)));
        for (int i = 0; i < boxesPerSide * boxesPerSide; ++i) {
            AgentNode* const agent = root.addChild("box " + std::to_string(i));
            agent->setPosition({double(i % boxesPerSide), double(i / boxesPerSide), 0});
            agent->getOsgTransform()->addChild(box);
        }
        viewer->setSceneData(root.getOsgTransform());
        viewer->getSceneData()->getBound();
        osgGA::GUIEventAdapter& state = *viewer->getEventQueue()->getCurrentEventState();
        state.setGraphicsContext(window);
        state.setInputRange(0, 0, windowSize, windowSize);
        state.setMouseYOrientation(osgGA::GUIEventAdapter::Y_INCREASING_UPWARDS);
    }

    static BoxedWindow& get() {
        static auto* const window = new BoxedWindow;
        return *window;
    }

    AgentNode root;
    osg::ref_ptr<osgViewer::Viewer> viewer = new osgViewer::Viewer;
};

struct NoAction : osgGA::GUIActionAdapter {
    void requestRedraw() override {}
    void requestContinuousUpdate(bool) override {}
    void requestWarpPointer(float, float) override {}
};

constexpr float cursor = windowSize / 3.0f;

void findAgentOnFrame(benchmark::State& state) {
    BoxedWindow& window = BoxedWindow::get();
    NoAction action;
    static const osg::ref_ptr<agent::AgentNodeEventHandler> handler =
        new agent::AgentNodeEventHandler(&window.root, window.viewer);
    const osg::ref_ptr<osgGA::GUIEventAdapter> event = new osgGA::GUIEventAdapter;
    event->setEventType(osgGA::GUIEventAdapter::FRAME);
    event->setX(cursor);
    event->setY(cursor);
    for (auto _ : state) {
        handler->handle(*event, action, nullptr, nullptr);
    }
    if (!Input::instance()->getClickedNode()) {
        state.SkipWithError("No agent was found.");
    }
}

void computeIntersections(benchmark::State& state) {
    BoxedWindow& window = BoxedWindow::get();
    for (auto _ : state) {
        osgUtil::LineSegmentIntersector::Intersections hits;
        if (!window.viewer->computeIntersections(cursor, cursor, hits)) {
            state.SkipWithError("The ray hits nothing.");
            break;
        }
        benchmark::DoNotOptimize(hits);
    }
}

constexpr int codes = 1000;

std::string nameOf(int i) {
    return "virtual input " + std::to_string(i);
}

std::string codeOf(int i) {
    return "key " + std::to_string(i);
}

Input& fullInput() {
    static Input* const input = [] {
        for (int i = 0; i < codes; ++i) {
            VirtualInput virtualInput;
            virtualInput.name = nameOf(i);
            virtualInput.pos = codeOf(i);
            Input::instance()->addVirtualInput(virtualInput);
            Input::instance()->pressButton(virtualInput.pos);
        }
        return Input::instance();
    }();
    return *input;
}

void isButtonPressed(benchmark::State& state) {
    const Input& input = fullInput();
    const std::string name = nameOf(codes / 3);
    for (auto _ : state) {
        benchmark::DoNotOptimize(input.isButtonPressed(name));
    }
}

void findTwice(benchmark::State& state) {
    std::map<std::string, VirtualInput> inputs;
    std::map<std::string, agent::InputStatus> buttons;
    for (int i = 0; i < codes; ++i) {
        inputs[nameOf(i)].pos = codeOf(i);
        buttons[codeOf(i)].isPressed = true;
    }
    const std::string name = nameOf(codes / 3);
    for (auto _ : state) {
        benchmark::DoNotOptimize(buttons.find(inputs.find(name)->second.pos)->second.isPressed);
    }
}

void updateInput(benchmark::State& state) {
    Input& input = fullInput();
    for (auto _ : state) {
        input.update();
    }
}

void clearFlags(benchmark::State& state) {
    std::map<std::string, agent::InputStatus> buttons;
    for (int i = 0; i < codes; ++i) {
        buttons[codeOf(i)].isPressed = true;
    }
    for (auto _ : state) {
        for (auto& [code, status] : buttons) {
            status.wasPressed = false;
            status.wasReleased = false;
        }
        benchmark::ClobberMemory();
    }
}

const RowRegistration rows[] = {
    RowRegistration({"pick", 1.02, findAgentOnFrame, computeIntersections}),
    RowRegistration({"input_query", 1.0, isButtonPressed, findTwice}),
    RowRegistration({"input_update", 1.0, updateInput, clearFlags, codes}),
};

} // namespace

} // namespace tessarin::bench
