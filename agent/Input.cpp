#include <agent/Input.h>

#include <logging/Log.h>

#include <ostream>

namespace tessarin::agent {

using logging::Logger;

static log4cpp::Category* const category = Logger::instance()->getCategory("input", true);

Input* Input::_instance = nullptr;

namespace {

constexpr float axisEdgeThreshold = 0.11f;

bool isOutsideEdgeZone(float value) {
    return value > axisEdgeThreshold || value < -axisEdgeThreshold;
}

template <class Map>
auto findIn(Map& map, const std::string& key) -> decltype(&map.find(key)->second) {
    const auto found = map.find(key);
    return found == map.end() ? nullptr : &found->second;
}

void writeFlags(std::ostream& stream, const InputStatus& status) {
    if (status.wasPressed)
        stream << " wasPressed";
    if (status.wasReleased)
        stream << " wasReleased";
    if (status.isPressed)
        stream << " isPressed";
}

bool hasFlags(const InputStatus& status) {
    return status.wasPressed || status.wasReleased || status.isPressed;
}

} // namespace

Input::Input() = default;

Input::Input(const Input& other)
    : enabled(other.enabled), mouseX(other.mouseX), mouseY(other.mouseY), mouseScrollDelta(other.mouseScrollDelta),
      mouseScrolling(other.mouseScrolling), clickedNode(other.clickedNode) {}

Input& Input::operator=(const Input&) {
    return *this;
}

Input::~Input() = default;

Input* Input::instance() {
    if (!_instance)
        _instance = new Input;
    return _instance;
}

void Input::update() {
    for (auto& [code, status] : buttonStatus)
        status.wasPressed = status.wasReleased = false;
    for (auto& [key, status] : joystickAxes)
        status.wasPressed = status.wasReleased = false;
    for (auto& [key, moves] : axisMoves)
        moves.clear();
}

void Input::pressButton(const std::string& code) {
    if (!enabled)
        return;
    TESSARIN_LOG(category, Logger::infoLevel, "Press \"" << code << '"');
    InputStatus& status = buttonStatus[code];
    if (!status.isPressed)
        status.wasPressed = true;
    status.isPressed = true;
}

void Input::releaseButton(const std::string& code) {
    if (!enabled)
        return;
    TESSARIN_LOG(category, Logger::infoLevel, "Release \"" << code << '"');
    InputStatus& status = buttonStatus[code];
    if (status.isPressed)
        status.wasReleased = true;
    status.isPressed = false;
}

void Input::pressJoystickButton(int joyNum, int button) {
    if (enabled)
        pressButton(createJoystickCode(joyNum, button));
}

void Input::releaseJoystickButton(int joyNum, int button) {
    if (enabled)
        releaseButton(createJoystickCode(joyNum, button));
}

void Input::pressMouseButton(int button) {
    if (enabled)
        pressButton(createMouseCode(button));
}

void Input::releaseMouseButton(int button) {
    if (enabled)
        releaseButton(createMouseCode(button));
}

void Input::setJoystickAxisValue(int joyNum, int axis, float value) {
    const AxisKey key(joyNum, axis);
    InputStatus& status = joystickAxes[key];
    const bool wasOutside = isOutsideEdgeZone(status.value);
    const bool isOutside = isOutsideEdgeZone(value);
    if (!wasOutside && isOutside)
        status.wasPressed = true;
    if (wasOutside && !isOutside)
        status.wasReleased = true;
    axisMoves[key].add(status.value, value);
    status.isPressed = isOutside;
    status.value = value;
}

void Input::setMouse(int x, int y) {
    mouseX = x;
    mouseY = y;
}

void Input::updateMouseScrollDelta(int delta) {
    mouseScrollDelta = delta;
    mouseScrolling = delta != 0;
}

void Input::setClickedNode(osg::Node* node) {
    if (clickedNode.get() != node)
        clickedNode = node;
}

void Input::addVirtualInput(const VirtualInput& input) {
    TESSARIN_LOG(category, Logger::infoLevel,
                 "Adding virtual input " << input.name << "\n  axis   " << input.axis << "\n  joyNum " << input.joyNum
                                         << "\n  pos    " << input.pos << "\n  neg    " << input.neg << "\n  dead   "
                                         << input.dead);
    virtualInputs.emplace(input.name, input);
}

VirtualInput& Input::getVirtualInput(const std::string& name) {
    return virtualInputs[name];
}

std::list<std::string> Input::getVirtualInputNames() const {
    std::list<std::string> names;
    for (const auto& [name, input] : virtualInputs)
        names.push_back(name);
    return names;
}

const VirtualInput* Input::getVirtualInputPtr(const std::string& name) const {
    return findIn(virtualInputs, name);
}

VirtualInput* Input::getVirtualInputPtr(const std::string& name) {
    return findIn(virtualInputs, name);
}

const InputStatus* Input::getInputStatus(const std::string& code) const {
    return findIn(buttonStatus, code);
}

InputStatus* Input::getInputStatus(const std::string& code) {
    return findIn(buttonStatus, code);
}

bool Input::askCode(const std::string& code, bool InputStatus::*flag) const {
    return enabled && !code.empty() && buttonStatus[code].*flag;
}

bool Input::isButtonCodePressed(const std::string& code) const {
    return askCode(code, &InputStatus::isPressed);
}

bool Input::wasButtonCodePressed(const std::string& code) const {
    return askCode(code, &InputStatus::wasPressed);
}

bool Input::wasButtonCodeReleased(const std::string& code) const {
    return askCode(code, &InputStatus::wasReleased);
}

bool Input::isButtonPressed(const std::string& name) const {
    if (!enabled)
        return false;
    const VirtualInput* const input = getVirtualInputPtr(name);
    if (!input)
        return isButtonCodePressed(name);
    if (input->axis != -1 && getJoystickAxis(input->joyNum, input->axis).value > input->dead)
        return true;
    return isButtonCodePressed(input->pos);
}

/// What the axis of a virtual input did in this frame; null if it has none or the axis hasn't moved yet.
const AxisMoves* Input::findMoves(const VirtualInput& input) const {
    if (input.axis == -1)
        return nullptr;
    getJoystickAxis(input.joyNum, input.axis);
    const auto found = axisMoves.find({input.joyNum, input.axis});
    return found == axisMoves.end() ? nullptr : &found->second;
}

bool Input::wasButtonPressed(const std::string& name) const {
    if (!enabled)
        return false;
    const VirtualInput* const input = getVirtualInputPtr(name);
    if (!input)
        return wasButtonCodePressed(name);
    const AxisMoves* const moves = findMoves(*input);
    return (moves && moves->roseAbove(input->dead)) || wasButtonCodePressed(input->pos);
}

bool Input::wasButtonReleased(const std::string& name) const {
    if (!enabled)
        return false;
    const VirtualInput* const input = getVirtualInputPtr(name);
    if (!input)
        return wasButtonCodeReleased(name);
    const AxisMoves* const moves = findMoves(*input);
    return (moves && moves->cameBackTo(input->dead)) || wasButtonCodeReleased(input->pos);
}

bool Input::isAxis(const std::string& name) const {
    const VirtualInput* const input = getVirtualInputPtr(name);
    return input && input->axis != -1;
}

float Input::getAxis(const std::string& name) const {
    const VirtualInput* const input = enabled ? getVirtualInputPtr(name) : nullptr;
    if (!input)
        return 0.0f;
    if (input->axis != -1) {
        const float value = getJoystickAxis(input->joyNum, input->axis).value;
        if (!input->inDeadZone(value))
            return value * input->scale;
    }
    if (isButtonPressed(input->pos))
        return 1.0f;
    return isButtonPressed(input->neg) ? -1.0f : 0.0f;
}

const InputStatus& Input::getJoystickAxis(int joyNum, int axis) const {
    return joystickAxes[AxisKey(joyNum, axis)];
}

void Input::getMouse(int& x, int& y) {
    x = mouseX;
    y = mouseY;
}

bool Input::isMouseScrolling() {
    return enabled && mouseScrolling;
}

void Input::getMouseScrollDelta(double& delta) {
    delta = mouseScrollDelta;
}

osg::Node* Input::getClickedNode() {
    return clickedNode.get();
}

void Input::dumpInfo(std::ostream& stream) const {
    for (const auto& [name, input] : virtualInputs)
        stream << ',' << name << '=' << getAxis(name);
    for (const auto& [code, status] : buttonStatus) {
        if (!hasFlags(status))
            continue;
        stream << ',' << code << ' ';
        writeFlags(stream, status);
    }
    for (const auto& [key, status] : joystickAxes) {
        const bool outside = isOutsideEdgeZone(status.value);
        if (!outside && !hasFlags(status))
            continue;
        stream << ", joy " << key.first << ':' << key.second << ' ';
        if (outside)
            stream << ' ' << status.value;
        writeFlags(stream, status);
    }
}

std::string Input::createJoystickCode(int joyNum, int button) {
    if (joyNum == -1)
        return "joystick button " + std::to_string(button);
    return "joystick " + std::to_string(joyNum) + " button " + std::to_string(button);
}

std::string Input::createMouseCode(int button) {
    return "mouse " + std::to_string(button);
}

} // namespace tessarin::agent
