#pragma once

#include <agent/AxisMoves.h>
#include <agent/Export.h>
#include <agent/InputStatus.h>
#include <agent/VirtualInput.h>

#include <osg/Node>
#include <osg/observer_ptr>

#include <iosfwd>
#include <list>
#include <map>
#include <string>
#include <utility>

namespace tessarin::agent {

/// Where the state of all input devices of the process meets.
///
/// The host feeds keys, joystick buttons, joystick axes and the mouse wheel in; AgentNodeEventHandler feeds mouse
/// buttons, the mouse position and the node under the cursor. Whoever wants to know asks by a raw button code or by the
/// name of a VirtualInput.
///
/// Buttons are told apart by codes: createJoystickCode and createMouseCode make those of joysticks and mice, every
/// other text, those of keys for example, is the host's choice. A name that is no virtual input is taken for a code.
///
/// A frame of input is the span between two calls of update(), which the host makes: an edge is seen by everybody who
/// asks between the feeding and the next update, however often.
///
/// There are no locks, and queries write to the tables: all of it belongs to the thread of the frame loop.
class TESSARIN_AGENT_EXPORT Input {
public:
    virtual ~Input();

    /// The one object, made at the first call and never deleted.
    static Input* instance();

    /// Switches buttons and queries off and on. Off, presses and releases are lost and queries answer false or 0; axes,
    /// mouse and wheel go on, and nothing is cleared.
    void setEnabled(bool newEnabled) { enabled = newEnabled; }

    /// Begins a new frame: forgets the edges. Levels and values stay.
    void update();

    /// @name Feeding
    /// @{

    /// Repeated presses make no new edge.
    void pressButton(const std::string& code);
    void releaseButton(const std::string& code);
    void pressJoystickButton(int joyNum, int button);
    void releaseJoystickButton(int joyNum, int button);

    /// @param button for AgentNodeEventHandler the button mask of the event: 1, 2 and 4 for left, middle and right.
    void pressMouseButton(int button);
    void releaseMouseButton(int button);

    /// @param value from -1 to 1 by custom; stored as it is.
    void setJoystickAxisValue(int joyNum, int axis, float value);

    /// Position in the window, in pixels.
    void setMouse(int x, int y);
    void setMouseScrolling(bool scrolling) { mouseScrolling = scrolling; }

    /// @param delta notches of the wheel in this frame; 0 says that it has stopped.
    void updateMouseScrollDelta(int delta);

    /// The scene graph node last hit by the ray through the cursor. No reference is held.
    void setClickedNode(osg::Node* node);
    /// @}

    /// @name Virtual inputs
    /// @{

    /// Adds a copy of a record under its name. If the name is there already, the first definition holds.
    void addVirtualInput(const VirtualInput& input);

    /// The stored record, to be edited in place; made with defaults, and an empty name field, if it is missing. The
    /// reference stays valid.
    VirtualInput& getVirtualInput(const std::string& name);

    /// All names, in the order of their bytes.
    std::list<std::string> getVirtualInputNames() const;
    /// @}

    /// @name Queries
    /// @{
    bool isButtonCodePressed(const std::string& code) const;
    bool wasButtonCodePressed(const std::string& code) const;
    bool wasButtonCodeReleased(const std::string& code) const;

    /// By name: true while the axis of the virtual input is above its dead zone or its pos button is down.
    bool isButtonPressed(const std::string& name) const;

    /// By name: true in the frame in which the axis rose above the dead zone, or the pos button went down.
    bool wasButtonPressed(const std::string& name) const;

    /// By name: true in the frame in which the axis came back from above the dead zone, or the pos button came up.
    bool wasButtonReleased(const std::string& name) const;

    /// Whether the name is a virtual input with an axis.
    bool isAxis(const std::string& name) const;

    /// The value of a virtual input: that of its axis times scale, if it is outside the dead zone; else 1 if pos is
    /// pressed, -1 if neg is, and 0. pos and neg may name other virtual inputs. 0 for a name that is no virtual input.
    float getAxis(const std::string& name) const;

    /// The entry of an axis, made with zeros if it is missing. The reference stays valid.
    const InputStatus& getJoystickAxis(int joyNum, int axis) const;

    void getMouse(int& x, int& y);
    bool isMouseScrolling();
    void getMouseScrollDelta(double& delta);

    /// Null if nothing was hit yet or the node is gone.
    osg::Node* getClickedNode();

    /// Writes all virtual inputs, and the buttons and axes that are not at rest, as one piece of text for people.
    void dumpInfo(std::ostream& stream) const;
    /// @}

    /// "joystick button 3" for joystick -1, "joystick 0 button 3" for any other.
    std::string createJoystickCode(int joyNum, int button);

    /// "mouse 1".
    std::string createMouseCode(int button);

protected:
    Input();
    Input(const Input& other);
    Input& operator=(const Input& other);

    /// Null if the name is not there; makes nothing.
    /// @{
    const VirtualInput* getVirtualInputPtr(const std::string& name) const;
    VirtualInput* getVirtualInputPtr(const std::string& name);
    const InputStatus* getInputStatus(const std::string& code) const;
    InputStatus* getInputStatus(const std::string& code);
    /// @}

    static Input* _instance;

private:
    using AxisKey = std::pair<int, int>; // joystick, axis

    bool askCode(const std::string& code, bool InputStatus::*flag) const;
    const AxisMoves* findMoves(const VirtualInput& input) const;

    bool enabled = true;
    int mouseX = 0;
    int mouseY = 0;
    int mouseScrollDelta = 0;
    bool mouseScrolling = false;
    std::map<std::string, VirtualInput> virtualInputs;
    mutable std::map<std::string, InputStatus> buttonStatus;
    mutable std::map<AxisKey, InputStatus> joystickAxes;
    osg::observer_ptr<osg::Node> clickedNode;
    std::map<AxisKey, AxisMoves> axisMoves; // for the edges of virtual inputs, each at its own dead zone
};

} // namespace tessarin::agent
