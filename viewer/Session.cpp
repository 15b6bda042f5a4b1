#include <viewer/Session.h>

#include <viewer/AgentEvents.h>
#include <viewer/FrameLoop.h>
#include <viewer/Hand.h>
#include <viewer/Scene.h>
#include <viewer/SimulationTime.h>
#include <viewer/ViewerError.h>
#include <viewer/Window.h>
#include <viewer/input/Bindings.h>
#include <viewer/input/WindowFocus.h>

#include <agent/AgentNode.h>
#include <agent/Input.h>
#include <logging/Log.h>
#include <logging/Logger.h>

#include <sstream>

namespace tessarin::viewer {

using agent::Input;

namespace {

constexpr int framesBetweenTexts = 6; // a person can't read faster
constexpr double messageTime = 8;

/// Commands whose keys mean something to other handlers too.
const char* const commands[] = {"pause", "step", "reload", "home", "show input", "show agent"};

bool isCommanded(const char* command) {
    return Input::instance()->wasButtonPressed(command);
}

} // namespace

Session::Session(Scene& sceneToShow, FrameLoop& loopToDrive, Window& windowToUse, const Bindings& bindings)
    : scene(sceneToShow), loop(loopToDrive), window(windowToUse), headsUp(window.getViewer()) {
    bindings.giveToInput();
    for (const char* const command : commands)
        feeder->reserve(bindings.getButton(command));
    pausedText = "Paused - " + bindings.getButton("pause") + ": go on, " + bindings.getButton("step") + ": one frame";
    window.getViewer().getEventHandlers().push_front(feeder);
    sendEventsToRoot();
}

Session::~Session() {
    window.getViewer().removeEventHandler(agentEvents);
    window.getViewer().removeEventHandler(feeder);
}

void Session::watch(const std::filesystem::path& document) {
    watched.emplace(document);
    applyWatched();
}

void Session::sendEventsToRoot() {
    if (agentEvents)
        window.getViewer().removeEventHandler(agentEvents);
    agentEvents = new AgentEvents(&scene.getRoot(), &window.getViewer());
    auto& handlers = window.getViewer().getEventHandlers();
    handlers.insert(std::next(handlers.begin()), agentEvents);
}

void Session::frame(double seconds) {
    takeEvents();
    obeyCommands();
    if (watched)
        applyWatched();
    if (isStepDue)
        loop.frame(SimulationTime::frame);
    else if (!paused)
        loop.frame(seconds);
    isStepDue = false;
    messageSeconds -= seconds;
    fitTexts();
    showTexts();
    Input::instance()->update();
    ++frameNumber;
}

void Session::takeEvents() {
    joysticks.poll();
    feeder->beginFrame();
    if (feeder->isAnythingHeld() && !window.hasFocus()) {
        feeder->releaseAll();
        Hand::instance().letGo();
    }
    window.takeEvents(loop.getTime());
}

void Session::obeyCommands() {
    if (isCommanded("pause"))
        paused = !paused;
    if (isCommanded("step")) {
        paused = true;
        isStepDue = true;
    }
    if (isCommanded("reload"))
        reload();
    if (isCommanded("home"))
        window.goHome();
    if (isCommanded("show input"))
        showsInput = !showsInput;
    if (isCommanded("show agent"))
        showsAgent = !showsAgent;
}

void Session::reload() {
    try {
        scene.reload();
        sendEventsToRoot();
        tell("Loaded again: " + scene.getFile().string());
    } catch (const ViewerError& error) {
        tell(error.what());
        TESSARIN_LOG(logging::Logger::instance()->getCategory("viewer", true), logging::Logger::errorLevel,
                     error.what());
    }
}

void Session::applyWatched() {
    if (!watched->takeChange())
        return;
    try {
        scene.apply(watched->getFile());
        tell("Applied: " + watched->getFile().string());
    } catch (const ViewerError& error) {
        tell(error.what());
        TESSARIN_LOG(logging::Logger::instance()->getCategory("viewer", true), logging::Logger::errorLevel,
                     error.what());
    }
}

void Session::tell(const std::string& text) {
    message = text;
    messageSeconds = messageTime;
}

void Session::fitTexts() {
    const osg::Viewport& viewport = *window.getViewer().getCamera()->getViewport();
    headsUp.resize(static_cast<int>(viewport.width()), static_cast<int>(viewport.height()));
}

void Session::showTexts() {
    agent::AgentNode* const pointed = Hand::instance().getPointed();
    if (pointed == described && frameNumber % framesBetweenTexts != 0)
        return;
    described = pointed;
    headsUp.showAgent(showsAgent && pointed ? describe(*pointed) : std::string());
    std::ostringstream input;
    if (showsInput)
        Input::instance()->dumpInfo(input);
    headsUp.showInput(input.str());
    headsUp.showMessage(messageSeconds > 0 ? message : paused ? pausedText : std::string());
}

} // namespace tessarin::viewer
