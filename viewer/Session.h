#pragma once

#include <viewer/DocumentWatch.h>
#include <viewer/HeadsUp.h>
#include <viewer/input/InputFeeder.h>
#include <viewer/input/Joysticks.h>

#include <agent/AgentNodeHandle.h>

#include <osg/Vec3d>
#include <osg/ref_ptr>

#include <functional>
#include <optional>
#include <string>

namespace tessarin::viewer {

class AgentEvents;
class Bindings;
class FrameLoop;
class Scene;
class Window;

/// A person's time with a scene: brings what the person does in the window, at keyboard, mouse and joysticks, to Input,
/// to the agents and to the few commands of the viewer itself (pause, step, reload and so on, which are virtual inputs
/// like any other), and shows texts over the picture.
///
/// The host calls frame() and draws the window after it, again and again. There is one session at a time, since there
/// is one Input.
class Session {
public:
    /// All of them are to outlive the session. The scene may be reloaded by the session alone.
    Session(Scene& scene, FrameLoop& loop, Window& window, const Bindings& bindings);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Applies a document to the root agent each time it is saved, and at once if it is there. A document that can't
    /// be applied is told on the screen and by a line in the log, and the next one is waited for.
    void watch(const std::filesystem::path& document);

    /// One frame: takes what the person did, obeys commands, and runs the scene's frame unless it is paused.
    /// @param seconds since the frame before.
    void frame(double seconds);

    bool isPaused() const { return paused; }

private:
    void sendEventsToRoot();
    void takeEvents();
    void releaseWithoutFocus();
    void obeyCommands();
    void applyWatched();
    void reload();
    void startOrStopFollowing();
    void follow();
    void fitTexts();
    void showTexts(double seconds);
    bool attempt(const std::string& success, const std::function<void()>& action);
    void tell(const std::string& text);

    Scene& scene;
    FrameLoop& loop;
    Window& window;
    Joysticks joysticks;
    osg::ref_ptr<InputFeeder> feeder = new InputFeeder;
    osg::ref_ptr<AgentEvents> agentEvents;
    osg::ref_ptr<osgGA::GUIEventHandler> help;
    HeadsUp headsUp;
    std::optional<DocumentWatch> watched;
    std::string pausedText;
    std::string message;
    double messageSeconds = 0;
    double textAge = 0;
    bool hadFocus = false; // since something is held
    bool paused = false;
    bool isStepDue = false;
    bool showsAgent = true;
    bool showsInput = false;
    agent::AgentNodeHandle described;
    agent::AgentNodeHandle followed;
    osg::Vec3d followedPlace;
};

} // namespace tessarin::viewer
