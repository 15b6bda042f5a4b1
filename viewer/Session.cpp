#include <viewer/Session.h>

#include <viewer/AgentEvents.h>
#include <viewer/FrameLoop.h>
#include <viewer/Hand.h>
#include <viewer/Scene.h>
#include <viewer/SimulationTime.h>
#include <viewer/Window.h>
#include <viewer/input/Bindings.h>

#include <agent/AgentNode.h>
#include <agent/Input.h>
#include <logging/Log.h>
#include <logging/Logger.h>

#include <exception>
#include <sstream>
#include <utility>

namespace tessarin::viewer {

using agent::Input;

namespace {

constexpr double timeBetweenTexts = 0.1; // nobody reads faster
constexpr double messageTime = 8;

/// One thing a line: each begins with a comma. A comma with two blanks behind it is the key of that name.
std::string describeInput() {
    std::ostringstream stream;
    Input::instance()->dumpInfo(stream);
    std::string text = stream.str();
    for (std::size_t i = text.find(','); i != std::string::npos; i = text.find(',', i + 1))
        if (text.compare(i + 1, 2, "  ") != 0)
            text[i] = '\n';
    return text.erase(0, 1);
}

osg::Vec3d placeOf(agent::AgentNode& agent) {
    const osg::ref_ptr<osg::Transform> transform = agent.getOsgTransform();
    const osg::MatrixList matrices = transform ? transform->getWorldMatrices() : osg::MatrixList();
    return matrices.empty() ? osg::Vec3d() : matrices.front().getTrans();
}

/// Names the keys that lead on, as far as there are any.
std::string describePause(const Bindings& bindings) {
    std::string text = "Paused";
    for (const auto& [name, meaning] : {std::pair("pause", "go on"), std::pair("step", "one frame")}) {
        const std::string button = bindings.getButton(name);
        if (!button.empty())
            text += (text == "Paused" ? " - " : ", ") + button + ": " + meaning;
    }
    return text;
}

/// The last word on keys: as the last of the handlers it is asked after all that know a key by another meaning.
class BindingsHelp : public osgGA::GUIEventHandler {
public:
    explicit BindingsHelp(const Bindings& bindingsToTell) : bindings(bindingsToTell) {}

    void getUsage(osg::ApplicationUsage& usage) const override { bindings.describe(usage); }

private:
    const Bindings& bindings;
};

bool isCommanded(const char* command) {
    return Input::instance()->wasButtonPressed(command);
}

} // namespace

Session::Session(Scene& sceneToShow, FrameLoop& loopToDrive, Window& windowToUse, const Bindings& bindings)
    : scene(sceneToShow), loop(loopToDrive), window(windowToUse), headsUp(window.getViewer()) {
    bindings.giveToInput();
    for (const agent::VirtualInput& binding : bindings.getAll()) {
        feeder->reserve(binding.pos);
        feeder->reserve(binding.neg);
        if (binding.pos == "key escape" || binding.neg == "key escape")
            window.getViewer().setKeyEventSetsDone(0); // which no handler could keep from it
    }
    pausedText = describePause(bindings);
    window.getViewer().getEventHandlers().push_front(feeder);
    help = new BindingsHelp(bindings);
    window.getViewer().addEventHandler(help);
    sendEventsToRoot();
}

Session::~Session() {
    window.getViewer().removeEventHandler(agentEvents);
    window.getViewer().removeEventHandler(feeder);
    window.getViewer().removeEventHandler(help);
}

void Session::watch(const std::filesystem::path& document) {
    watched.emplace(document);
    if (watched->takeChange())
        applyWatched();
    else
        tell("Waiting for " + document.string());
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
    if (watched && watched->takeChange())
        applyWatched();
    if (isStepDue)
        loop.frame(SimulationTime::frame);
    else if (!paused)
        loop.frame(seconds);
    isStepDue = false;
    follow();
    messageSeconds -= seconds;
    fitTexts();
    showTexts(seconds);
    Input::instance()->update();
}

void Session::takeEvents() {
    joysticks.poll();
    feeder->beginFrame();
    releaseWithoutFocus();
    window.takeEvents(loop.getTime());
}

void Session::releaseWithoutFocus() {
    if (!feeder->isAnythingHeld()) {
        hadFocus = false;
        return;
    }
    const Focus focus = window.findFocus();
    if (focus != Focus::ELSEWHERE) {
        hadFocus = true;
        if (focus == Focus::UNDER_CURSOR)
            feeder->releaseKeys(); // a button that is held belongs to the window wherever the cursor goes
    } else if (hadFocus || feeder->isKeyHeld()) {
        // And not where a click has yet to bring the focus. Keys come only where it is.
        feeder->releaseAll();
        Hand::instance().letGo();
    }
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
    if (isCommanded("follow"))
        startOrStopFollowing();
    if (isCommanded("show input"))
        showsInput = !showsInput;
    if (isCommanded("show agent"))
        showsAgent = !showsAgent;
}

void Session::reload() {
    const bool isLoaded = attempt("Loaded again: " + scene.getFile().string(), [&] {
        scene.reload();
        sendEventsToRoot();
    });
    if (isLoaded && watched && watched->isThere())
        applyWatched();
}

void Session::applyWatched() {
    attempt("Applied: " + watched->getFile().string(), [&] { scene.apply(watched->getFile()); });
}

bool Session::attempt(const std::string& success, const std::function<void()>& action) {
    try {
        action();
        const int faults = scene.getFaultCount();
        tell(faults == 0 ? success : success + " (lines of faults in the log: " + std::to_string(faults) + ')');
        return true;
    } catch (const std::exception& error) {
        tell(error.what());
        TESSARIN_LOG(logging::Logger::instance()->getCategory("viewer", true), logging::Logger::errorLevel,
                     error.what());
        return false;
    }
}

void Session::tell(const std::string& text) {
    message = text;
    messageSeconds = messageTime;
}

void Session::startOrStopFollowing() {
    followed = followed ? nullptr : Hand::instance().getSelected();
    const FrameLoop::Picture picture(loop);
    if (followed)
        followedPlace = placeOf(*followed);
}

void Session::follow() {
    if (!followed)
        return;
    const FrameLoop::Picture picture(loop);
    const osg::Vec3d place = placeOf(*followed);
    if (place != followedPlace)
        window.shiftView(place - followedPlace);
    followedPlace = place;
}

void Session::fitTexts() {
    const osg::Viewport& viewport = *window.getViewer().getCamera()->getViewport();
    headsUp.resize(static_cast<int>(viewport.width()), static_cast<int>(viewport.height()));
}

void Session::showTexts(double seconds) {
    agent::AgentNode* const pointed = Hand::instance().getPointed();
    textAge += seconds;
    if (pointed == described && textAge < timeBetweenTexts)
        return;
    described = pointed;
    textAge = 0;
    headsUp.showAgent(showsAgent && pointed ? describe(*pointed) : std::string());
    headsUp.showInput(showsInput ? describeInput() : std::string());
    headsUp.showMessage(messageSeconds > 0 ? message : paused ? pausedText : std::string());
}

} // namespace tessarin::viewer
