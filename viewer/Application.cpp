#include <viewer/Application.h>

#include <viewer/Digest.h>
#include <viewer/FrameLoop.h>
#include <viewer/ModelLoader.h>
#include <viewer/Scene.h>
#include <viewer/Session.h>
#include <viewer/SimulationTime.h>
#include <viewer/Standpoint.h>
#include <viewer/Upward.h>
#include <viewer/ViewerError.h>
#include <viewer/Window.h>
#include <viewer/components/BodyOfAgent.h>
#include <viewer/input/Bindings.h>

#include <agent/AgentNode.h>
#include <dynamics/bullet/BulletBodyControl.h>
#include <logging/Logger.h>
#include <logging/PrintableText.h>

#include <osg/ApplicationUsage>
#include <osg/ArgumentParser>
#include <osg/Notify>
#include <osg/Timer>
#include <osgDB/FileNameUtils>
#include <osgDB/Registry>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <ostream>
#include <vector>

namespace tessarin::viewer {

namespace {

/// What is wrong is told in one line of our own; who wants OpenSceneGraph's messages asks for them.
void quietOpenSceneGraph() {
    if (!std::getenv("OSG_NOTIFY_LEVEL") && !std::getenv("OSGNOTIFYLEVEL"))
        osg::setNotifyLevel(osg::ALWAYS);
}

void requirePictureFormat(const std::filesystem::path& file) {
    const std::string extension = osgDB::getLowerCaseFileExtension(file.string());
    if (extension.empty() || !osgDB::Registry::instance()->getReaderWriterForExtension(extension))
        throw ViewerError(file.string() + ": no format for pictures; name it like picture.png");
}

/// Null where nothing is to be drawn, since there is no display and none is needed.
std::unique_ptr<Window> openWindow(const Options& options, Scene& scene, osg::ApplicationUsage& usage) {
    const std::string title = "tessarin_viewer - " + options.file.filename().string();
    if (const osg::ref_ptr<osg::GraphicsContext> context = Window::open(title, options.width, options.height))
        return std::make_unique<Window>(*context, scene.getGraph(), usage);
    if (!options.snapshot.empty())
        throw ViewerError("--snapshot " + options.snapshot.string() + ": there is no display to draw on");
    if (options.point)
        throw ViewerError("--point: there is no display, and so no cursor");
    if (!options.frames)
        throw ViewerError("there is no display to open a window on; --frames N runs without one");
    return nullptr;
}

void collectMovers(agent::AgentNode& agent, std::vector<osg::Transform*>& movers) {
    const dynamics::bullet::BulletBodyControl* const body = findBodyControl(&agent);
    if (body && body->isMovable() && agent.getOsgTransform())
        movers.push_back(agent.getOsgTransform());
    for (agent::AgentNode* const child : agent.getChildren())
        collectMovers(*child, movers);
}

/// Where the scene is looked at first.
Standpoint findStandpoint(Scene& scene, const Lens& lens) {
    std::vector<osg::Transform*> movers;
    collectMovers(scene.getRoot(), movers);
    return findStandpoint(scene.getGraph(), movers, lens, findUp());
}

Bindings readBindings(const Options& options) {
    Bindings bindings;
    if (!options.bindings.empty())
        bindings.read(options.bindings);
    return bindings;
}

} // namespace

Application::Application(std::ostream& output, std::ostream& errors) : out(output), err(errors) {}

int Application::run(int argumentCount, char** arguments) {
    try {
        quietOpenSceneGraph();
        osg::ArgumentParser parser(&argumentCount, arguments);
        osg::ApplicationUsage& usage = *parser.getApplicationUsage();
        Options::describe(usage);
        runTask(Options::parse(parser), usage);
        return 0;
    } catch (const std::exception& error) {
        err << "tessarin_viewer: " << logging::printableText(error.what()) << std::endl;
        return 1;
    }
}

void Application::runTask(const Options& options, osg::ApplicationUsage& usage) {
    switch (options.task) {
    case Options::Task::SHOW_HELP:
        usage.write(out, osg::ApplicationUsage::COMMAND_LINE_OPTION);
        break;
    case Options::Task::SHOW_VERSION:
        out << "tessarin_viewer " << TESSARIN_VERSION << '\n';
        break;
    case Options::Task::WRITE_BINDINGS:
        readBindings(options).write(options.bindingsToWrite);
        break;
    case Options::Task::RUN:
        runScene(options, usage);
        break;
    }
}

void Application::runScene(const Options& options, osg::ApplicationUsage& usage) {
    if (options.logLevel)
        logging::Logger::instance()->setLevel(*options.logLevel);
    if (!options.snapshot.empty())
        requirePictureFormat(options.snapshot);

    ModelLoader::instance().setLimits(ModelLimits().times(options.limits));
    const Bindings bindings = readBindings(options);
    Scene scene(options.file, options.patches);
    const std::unique_ptr<Window> window = openWindow(options, scene, usage);
    if (window)
        window->standAt(findStandpoint(scene, window->getLens()));
    else
        out << "There is no display, so nothing is drawn.\n";

    FrameLoop loop(scene);
    std::unique_ptr<Session> session;
    if (window && (!options.frames || options.point))
        session = std::make_unique<Session>(scene, loop, *window, bindings);
    if (session && !options.watched.empty())
        session->watch(options.watched);
    if (window && options.point)
        window->pointAt(options.point->x, options.point->y);
    if (options.frames)
        runFrames(options, loop, window.get(), session.get());
    else
        runUntilClosed(options, loop, *window, *session);
    if (!options.document.empty())
        scene.write(options.document);
    if (options.digest)
        printDigest(scene);
}

void Application::printDigest(Scene& scene) {
    char digits[17];
    std::snprintf(digits, sizeof(digits), "%016" PRIx64, digestOf(scene.getRoot()));
    out << digits << '\n';
}

void Application::runFrames(const Options& options, FrameLoop& loop, Window* window, Session* session) {
    const long frames = *options.frames;
    for (long frame = 1; frame <= frames; ++frame) {
        if (session)
            session->frame(SimulationTime::frame);
        else
            loop.frame(SimulationTime::frame);
        if (window && !session)
            window->ignoreEvents(loop.getTime());
        if (window && (frame < frames || options.snapshot.empty())) {
            const FrameLoop::Picture picture(loop);
            window->draw();
        }
    }
    if (!options.snapshot.empty())
        window->drawPicture(options.snapshot);
}

void Application::runUntilClosed(const Options& options, FrameLoop& loop, Window& window, Session& session) {
    if (!options.snapshot.empty()) {
        session.frame(0);
        window.drawPicture(options.snapshot);
    }
    osg::Timer_t before = osg::Timer::instance()->tick();
    while (!window.isDone()) {
        const osg::Timer_t now = osg::Timer::instance()->tick();
        session.frame(osg::Timer::instance()->delta_s(before, now));
        before = now;
        const FrameLoop::Picture picture(loop);
        window.draw();
    }
}

} // namespace tessarin::viewer
