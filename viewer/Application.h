#pragma once

#include <viewer/Options.h>

#include <iosfwd>

namespace osg {
class ApplicationUsage;
}

namespace tessarin::viewer {

class FrameLoop;
class Scene;
class Session;
class Window;

/// The program from its command line to its exit status.
class Application {
public:
    /// @param out for what was asked for, the help for example.
    /// @param err for the one line that says what went wrong.
    Application(std::ostream& out, std::ostream& err);

    /// Never throws.
    /// @return the exit status: 0, or 1 if something went wrong.
    int run(int argumentCount, char** arguments);

private:
    void runTask(const Options& options, osg::ApplicationUsage& usage);
    void runScene(const Options& options, osg::ApplicationUsage& usage);
    void runFrames(const Options& options, FrameLoop& loop, Window* window, Session* session);
    void runUntilClosed(const Options& options, FrameLoop& loop, Window& window, Session& session);
    void printDigest(Scene& scene);

    std::ostream& out;
    std::ostream& err;
};

} // namespace tessarin::viewer
