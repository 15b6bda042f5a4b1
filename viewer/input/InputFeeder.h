#pragma once

#include <osgGA/GUIEventHandler>

#include <set>
#include <string>

namespace tessarin::viewer {

/// Feeds the keyboard and the wheel of a window into Input, and tells the Hand where the cursor is. Mouse buttons come
/// from AgentNodeEventHandler; this remembers which ones are held, to release them when the window loses the focus.
///
/// It has to be the first handler of its viewer, so that the agents' hooks find the Hand where the event happened. The
/// host calls beginFrame() before each event traversal.
class InputFeeder : public osgGA::GUIEventHandler {
public:
    using osgGA::GUIEventHandler::handle;

    /// A wheel turns for one frame: forgets what it did in the last one.
    void beginFrame();

    /// A key that is bound here, so that no other handler is to act on it as well.
    void reserve(const std::string& code) { reserved.insert(code); }

    /// Releases what is held, as if the person had let go.
    /// @{
    void releaseKeys();
    void releaseAll(); // mouse buttons too
    /// @}

    bool isKeyHeld() const { return !heldKeys.empty(); }
    bool isAnythingHeld() const { return !heldKeys.empty() || !heldMouseButtons.empty(); }

    bool handle(const osgGA::GUIEventAdapter& event, osgGA::GUIActionAdapter& action, osg::Object* object,
                osg::NodeVisitor* visitor) override;

protected:
    ~InputFeeder() override;

private:
    bool handleKey(const osgGA::GUIEventAdapter& event);
    void handleWheel(const osgGA::GUIEventAdapter& event);

    std::set<std::string> reserved;
    std::set<std::string> heldKeys;
    std::set<int> heldMouseButtons;
    int notches = 0;
    bool isScrolling = false;
};

} // namespace tessarin::viewer
