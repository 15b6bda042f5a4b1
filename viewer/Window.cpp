#include <viewer/Window.h>

#include <viewer/Sky.h>
#include <viewer/Snapshot.h>
#include <viewer/ViewerError.h>

#include <osg/ApplicationUsage>
#include <osgGA/StateSetManipulator>
#include <osgViewer/ViewerEventHandlers>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <thread>

namespace tessarin::viewer {

namespace {

/// Without the one key that it has otherwise, space.
class Trackball : public osgGA::TrackballManipulator {
public:
    void getUsage(osg::ApplicationUsage&) const override {}

protected:
    bool handleKeyDown(const osgGA::GUIEventAdapter&, osgGA::GUIActionAdapter&) override { return false; }
};

/// Without the keys for lighting and textures, which do nothing to shaders.
class DrawingModes : public osgGA::StateSetManipulator {
public:
    explicit DrawingModes(osg::StateSet* state) : osgGA::StateSetManipulator(state) {
        setKeyEventToggleLighting(0);
        setKeyEventToggleTexturing(0);
    }

    void getUsage(osg::ApplicationUsage& usage) const override {
        usage.addKeyboardMouseBinding(getKeyEventToggleBackfaceCulling(), "Toggle backface culling");
        usage.addKeyboardMouseBinding(getKeyEventCyclePolygonMode(), "Toggle faces, wires and points");
    }
};

} // namespace

osg::ref_ptr<osg::GraphicsContext> Window::open(const std::string& title, int width, int height) {
    const osg::ref_ptr<osg::GraphicsContext::Traits> traits = new osg::GraphicsContext::Traits;
    traits->readDISPLAY();
    traits->setUndefinedScreenDetailsToDefaultScreen();
    traits->windowName = title;
    traits->windowDecoration = true;
    traits->width = width;
    traits->height = height;
    traits->doubleBuffer = true;
    traits->sampleBuffers = 1;
    traits->samples = 4;
    if (traits->displayNum < 0 || !std::getenv("DISPLAY"))
        return nullptr;

    // A virtual display begins anew whenever its last client has gone, and answers nobody meanwhile.
    constexpr int mostTries = 10;
    osg::ref_ptr<osg::GraphicsContext> context = osg::GraphicsContext::createGraphicsContext(traits);
    for (int tries = 1; !context && tries < mostTries; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        if (tries == mostTries - 1)
            traits->sampleBuffers = traits->samples = 0; // a picture with rough edges is better than none
        context = osg::GraphicsContext::createGraphicsContext(traits);
    }
    return context;
}

Window::Window(osg::GraphicsContext& context, osg::Node& scene, osg::ApplicationUsage& usage)
    : trackball(new Trackball) {
    viewer.setThreadingModel(osgViewer::ViewerBase::SingleThreaded);
    viewer.setLightingMode(osg::View::NO_LIGHT); // the scene brings its sun along
    setUpCamera(context);

    const osg::ref_ptr<osg::Group> root = new osg::Group;
    daylight.getGroup().addChild(&scene);
    root->addChild(&daylight.getGroup());
    root->addChild(makeSky());
    viewer.setSceneData(root);
    viewer.setCameraManipulator(trackball, false);
    addHandlers(usage);
    viewer.realize();
    viewer.init();
}

void Window::setUpCamera(osg::GraphicsContext& context) {
    const int width = context.getTraits()->width;
    const int height = context.getTraits()->height;
    osg::Camera& camera = *viewer.getCamera();
    camera.setGraphicsContext(&context);
    camera.setViewport(0, 0, width, height);
    camera.setProjectionMatrixAsPerspective(30, double(width) / height, 1, 10000);
    if (osgViewer::GraphicsWindow* const window = dynamic_cast<osgViewer::GraphicsWindow*>(&context))
        window->getEventQueue()->getCurrentEventState()->setWindowRectangle(0, 0, width, height);
}

void Window::addHandlers(osg::ApplicationUsage& usage) {
    viewer.addEventHandler(new osgViewer::StatsHandler);
    viewer.addEventHandler(new osgViewer::WindowSizeHandler);
    viewer.addEventHandler(new osgViewer::ScreenCaptureHandler);
    viewer.addEventHandler(new DrawingModes(viewer.getCamera()->getOrCreateStateSet()));
    viewer.addEventHandler(new osgViewer::HelpHandler(&usage));
    viewer.getUsage(usage);
    usage.addKeyboardMouseBinding("escape", "End");
}

Lens Window::getLens() const {
    double vertical = 30, aspect = 1, near = 0, far = 0;
    viewer.getCamera()->getProjectionMatrixAsPerspective(vertical, aspect, near, far);
    const double halfHeight = 0.8 * std::tan(osg::DegreesToRadians(vertical) / 2);
    return {halfHeight * aspect, halfHeight};
}

void Window::standAt(const Standpoint& place) {
    double vertical = 30, aspect = 1, near = 0, far = 0;
    viewer.getCamera()->getProjectionMatrixAsPerspective(vertical, aspect, near, far);
    const double distance = (place.eye - place.centre).length();
    // Drawing fits these; rays of the first frame go by them.
    viewer.getCamera()->setProjectionMatrixAsPerspective(vertical, aspect, distance / 20, distance * 1000);
    trackball->setAutoComputeHomePosition(false);
    trackball->setHomePosition(place.eye, place.centre, place.up);
    goHome();
    daylight.setStandpoint(place);
    viewer.getSceneData()
        ->getOrCreateStateSet()
        ->getOrCreateUniform("upward", osg::Uniform::FLOAT_VEC3)
        ->set(osg::Vec3(place.up));
}

void Window::goHome() {
    trackball->home(0);
    // Rays are cast before the next picture is drawn.
    trackball->updateCamera(*viewer.getCamera());
}

void Window::shiftView(const osg::Vec3d& by) {
    trackball->setCenter(trackball->getCenter() + by);
    trackball->updateCamera(*viewer.getCamera());
}

void Window::takeEvents(double time) {
    viewer.advance(time);
    viewer.eventTraversal();
}

void Window::ignoreEvents(double time) {
    viewer.advance(time);
    auto* const window = dynamic_cast<osgViewer::GraphicsWindow*>(viewer.getCamera()->getGraphicsContext());
    if (!window)
        return;
    window->checkEvents();
    window->getEventQueue()->clear();
}

void Window::draw() {
    if (viewer.done())
        return;
    viewer.updateTraversal();
    viewer.renderingTraversals();
}

void Window::pointAt(int x, int y) {
    auto* const window = dynamic_cast<osgViewer::GraphicsWindow*>(viewer.getCamera()->getGraphicsContext());
    if (!window)
        return;
    window->requestWarpPointer(static_cast<float>(x), static_cast<float>(y));
    // A cursor that was there already doesn't move, and makes no event.
    window->getEventQueue()->mouseMotion(static_cast<float>(x), static_cast<float>(y));
}

Focus Window::findFocus() {
    return viewer::findFocus(*viewer.getCamera()->getGraphicsContext());
}

void Window::drawPicture(const std::filesystem::path& file) {
    if (isDone())
        throw ViewerError(file.string() + ": the window was closed before the picture was taken");
    const osg::ref_ptr<Snapshot> snapshot = new Snapshot(file);
    const osg::ref_ptr<osgViewer::ScreenCaptureHandler> handler = new osgViewer::ScreenCaptureHandler(snapshot, 1);
    handler->captureNextFrame(viewer);
    draw();
    if (!snapshot->isWritten())
        throw ViewerError(file.string() + ": the picture can't be written");
}

} // namespace tessarin::viewer
