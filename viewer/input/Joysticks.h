#pragma once

#include <memory>

namespace tessarin::viewer {

/// Feeds all joysticks and game pads of the machine into Input, through SDL. They may be plugged in and out at any
/// time.
///
/// A joystick has the lowest number that is free when it is plugged in, from 0, and keeps it. Axes and buttons have
/// SDL's numbers; values of axes go from -1 to 1. Each hat gives two axes more behind the real ones: right and up
/// are 1. A joystick that is unplugged lets go of everything: its buttons are released and its axes at 0.
///
/// A machine without joysticks, or whose SDL doesn't start (which a line at level 300 tells), simply has none.
class Joysticks {
public:
    Joysticks();
    ~Joysticks();
    Joysticks(const Joysticks&) = delete;
    Joysticks& operator=(const Joysticks&) = delete;

    /// Takes over what has happened since the last call: once a frame.
    void poll();

private:
    class Devices;
    std::unique_ptr<Devices> devices;
};

} // namespace tessarin::viewer
