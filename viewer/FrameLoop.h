#pragma once

#include <viewer/DrawnPoses.h>

namespace tessarin::viewer {

class Scene;

/// Drives a scene frame by frame: steps its physics in fixed steps and sends its agents the six events of a frame.
class FrameLoop {
public:
    /// The scene is to outlive the loop; it may be reloaded meanwhile.
    explicit FrameLoop(Scene& scene);

    /// One frame: PRE_PHYSICS_UPDATE; for each fixed step that is due, PRE_PHYSICS_TICK, the step,
    /// the collisions that it has brought, and POST_PHYSICS_TICK; POST_PHYSICS_UPDATE, UPDATE and POST_UPDATE.
    ///
    /// What is left of the time counts with the next frame. A frame that took very long is cut short, so that a slow
    /// machine shows the scene slowly instead of falling behind further and further.
    /// @param seconds since the frame before.
    void frame(double seconds);

    /// Seconds of the frames so far.
    double getTime() const { return time; }

    /// As long as one lives, what moves stands where a picture is to show it: where it was one fixed step ago, which
    /// lies between the last two steps. Frames that bring whole steps each show the steps themselves. To be made around
    /// the drawing alone; everybody else is to see agents where their bodies are.
    class Picture {
    public:
        explicit Picture(FrameLoop& loop);
        ~Picture() { poses.undo(); }
        Picture(const Picture&) = delete;
        Picture& operator=(const Picture&) = delete;

    private:
        DrawnPoses& poses;
    };

private:
    int takeDueSteps(double seconds);

    Scene& scene;
    double time = 0;
    double backlog = 0;
    double partDrawn = 1; // of the last step
    DrawnPoses drawnPoses;
};

} // namespace tessarin::viewer
