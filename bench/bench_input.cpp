// The agent under the cursor beside the rays of OpenSceneGraph alone, and questions to the input beside a look-up in a
// table.

#include <agent/AgentNode.h>
#include <agent/AgentNodeEventHandler.h>
#include <agent/Input.h>

#include <osg/Geode>
#include <osg/Geometry>
#include <osgViewer/GraphicsWindow>
#include <osgViewer/Viewer>

#include <benchmark/benchmark.h>

#include <cmath>
#include <map>
#include <string>

using namespace tessarin::agent;

namespace {

constexpr int windowSize = 1000;

/// Agents in a square, each with a tile that fills a part of the window, so that one is under the cursor.
class TiledWindow {
public:
    explicit TiledWindow(std::int64_t count) {
        osgViewer::GraphicsWindowEmbedded* const window =
            viewer->setUpViewerAsEmbeddedInWindow(0, 0, windowSize, windowSize);
        window->getEventQueue()->windowResize(0, 0, windowSize, windowSize);
        const auto perRow = static_cast<int>(std::sqrt(static_cast<double>(count)));
        viewer->getCamera()->setViewMatrixAsLookAt({0, 0, 10}, {0, 0, 0}, {0, 1, 0});
        viewer->getCamera()->setProjectionMatrixAsOrtho(0, perRow, 0, perRow, 1, 20);
        for (int i = 0; i < perRow * perRow; ++i) {
            AgentNode* const agent = root.addChild("tile");
            agent->setPosition({double(i % perRow), double(i / perRow), 0});
            const osg::ref_ptr<osg::Geode> tile = new osg::Geode;
            tile->addDrawable(osg::createTexturedQuadGeometry({}, {1, 0, 0}, {0, 1, 0}));
            agent->getOsgTransform()->addChild(tile);
        }
        viewer->setSceneData(root.getOsgTransform());
        viewer->getSceneData()->getBound();
        osgGA::GUIEventAdapter& state = *viewer->getEventQueue()->getCurrentEventState();
        state.setGraphicsContext(window);
        state.setInputRange(0, 0, windowSize, windowSize);
        state.setMouseYOrientation(osgGA::GUIEventAdapter::Y_INCREASING_UPWARDS);
    }

    AgentNode root;
    osg::ref_ptr<osgViewer::Viewer> viewer = new osgViewer::Viewer;
};

struct NoAction : osgGA::GUIActionAdapter {
    void requestRedraw() override {}
    void requestContinuousUpdate(bool) override {}
    void requestWarpPointer(float, float) override {}
};

void agentCounts(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(100)->Arg(10000)->Unit(benchmark::kMicrosecond);
}

void floorComputeIntersections(benchmark::State& state) {
    TiledWindow window(state.range(0));
    for (auto _ : state) {
        osgUtil::LineSegmentIntersector::Intersections hits;
        if (!window.viewer->computeIntersections(windowSize / 3.0f, windowSize / 3.0f, hits))
            state.SkipWithError("the ray hits nothing");
        benchmark::DoNotOptimize(hits);
    }
}
BENCHMARK(floorComputeIntersections)->Apply(agentCounts);

void frameFindsAgentUnderCursor(benchmark::State& state) {
    TiledWindow window(state.range(0));
    NoAction action;
    const osg::ref_ptr<AgentNodeEventHandler> handler = new AgentNodeEventHandler(&window.root, window.viewer);
    const osg::ref_ptr<osgGA::GUIEventAdapter> event = new osgGA::GUIEventAdapter;
    event->setEventType(osgGA::GUIEventAdapter::FRAME);
    event->setX(windowSize / 3.0f);
    event->setY(windowSize / 3.0f);
    for (auto _ : state)
        handler->handle(*event, action, nullptr, nullptr);
    if (!Input::instance()->getClickedNode())
        state.SkipWithError("no agent is found");
}
BENCHMARK(frameFindsAgentUnderCursor)->Apply(agentCounts);

constexpr int inputs = 30;

std::string nameOf(int i) {
    return "virtual input " + std::to_string(i);
}

void floorMapLookup(benchmark::State& state) {
    std::map<std::string, VirtualInput> table;
    for (int i = 0; i < inputs; ++i)
        table[nameOf(i)].name = nameOf(i);
    const std::string name = nameOf(inputs / 3);
    for (auto _ : state)
        benchmark::DoNotOptimize(table.find(name));
}
BENCHMARK(floorMapLookup);

/// By a name with a button: two tables are asked.
void isButtonPressed(benchmark::State& state) {
    Input& input = *Input::instance();
    for (int i = 0; i < inputs; ++i) {
        VirtualInput virtualInput;
        virtualInput.name = nameOf(i);
        virtualInput.pos = "key " + std::to_string(i);
        input.addVirtualInput(virtualInput);
        input.pressButton(virtualInput.pos);
    }
    const std::string name = nameOf(inputs / 3);
    for (auto _ : state)
        benchmark::DoNotOptimize(input.isButtonPressed(name));
}
BENCHMARK(isButtonPressed);

} // namespace
