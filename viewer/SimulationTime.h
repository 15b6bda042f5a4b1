#pragma once

namespace tessarin::viewer {

/// The time that components of the viewer live in. There is one frame loop in the program, and it sets this.
struct SimulationTime {
    /// Seconds that the tick under way takes: the time between two calls of a component's prePhysicsTick.
    static inline double tick = 1.0 / 60;

    /// Seconds that the frame under way takes: the time between two calls of a component's prePhysicsUpdate.
    static inline double sinceFrame = 1.0 / 60;

    /// Seconds of a frame that is not measured by a clock.
    static constexpr double frame = 1.0 / 60;
};

} // namespace tessarin::viewer
