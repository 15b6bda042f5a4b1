#pragma once

#include <agent/Export.h>

#include <cstdint>
#include <string>

namespace tessarin::agent {

/// An input under a name of the host's choosing, with what it is bound to: a button for the positive direction, one for
/// the negative direction and one joystick axis, each optional.
///
/// A plain record: a host fills it in and gives it to Input::addVirtualInput, or edits the stored one through
/// Input::getVirtualInput. Any number of records may be bound to the same button or axis.
class TESSARIN_AGENT_EXPORT VirtualInput {
public:
    /// The name, by which alone records are compared.
    std::string name;

    /// The button for the positive direction: a button code, or for Input::getAxis the name of another virtual input.
    std::string pos;

    /// The button for the negative direction, likewise.
    std::string neg;

    /// Factor on the axis value in Input::getAxis. What buttons give is not scaled.
    float scale = 1.0f;

    /// Half the width of the dead zone around 0, in units of the axis value.
    float dead = 0.0f;

    /// Number of the joystick axis; -1 says that none is bound.
    std::int32_t axis = -1;

    /// Number of the joystick that the axis belongs to. -1 is a number like any other.
    std::int32_t joyNum = -1;

    bool operator==(const VirtualInput& other) const { return name == other.name; }

    /// By the bytes of the names.
    bool operator<(const VirtualInput& other) const { return name < other.name; }

    /// True from minus dead to dead, both included.
    bool inDeadZone(float value) const { return !(value > dead) && !(value < -dead); }
};

} // namespace tessarin::agent
