#pragma once

namespace tessarin::agent {

/// The state of one physical input, a button of any kind or one joystick axis, as Input keeps it.
struct InputStatus {
    /// Since the last Input::update the button went down, or the axis left its edge zone.
    bool wasPressed = false;

    /// Since the last Input::update the button came up, or the axis came back into its edge zone.
    bool wasReleased = false;

    /// The button is down, or the axis is outside its edge zone.
    bool isPressed = false;

    /// The last value of an axis; 0 for buttons.
    float value = 0.0f;
};

} // namespace tessarin::agent
