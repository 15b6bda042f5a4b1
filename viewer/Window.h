#pragma once

#include <viewer/Daylight.h>
#include <viewer/Standpoint.h>
#include <viewer/input/WindowFocus.h>

#include <osg/GraphicsContext>
#include <osg/Node>
#include <osg/ref_ptr>
#include <osgGA/TrackballManipulator>
#include <osgViewer/Viewer>

#include <filesystem>
#include <string>

namespace osg {
class ApplicationUsage;
}

namespace tessarin::viewer {

/// The window in which a scene is shown, with the camera and the keys that OpenSceneGraph's users know. Drawing is done
/// by the caller's thread alone, since agents belong to one thread.
class Window {
public:
    /// Opens a window, still without a scene.
    /// @return null if there is no display to open it on.
    static osg::ref_ptr<osg::GraphicsContext> open(const std::string& title, int width, int height);

    /// @param context of a window.
    /// @param usage what the help screen shows; the keys are added to it.
    Window(osg::GraphicsContext& context, osg::Node& scene, osg::ApplicationUsage& usage);

    /// What a picture is to be filled with, which leaves a margin.
    Lens getLens() const;

    /// Puts the camera there, now and whenever the person asks for home. Sun and sky are above by what is up there.
    void standAt(const Standpoint& place);

    /// Puts the camera back there.
    void goHome();

    /// Moves the camera and what it turns about.
    void shiftView(const osg::Vec3d& by);

    /// Begins a frame: passes what the person has done since the last one on to the event handlers.
    /// @param time of the simulation, in seconds.
    void takeEvents(double time);

    /// Begins a frame and takes no notice of the person.
    void ignoreEvents(double time);

    /// Ends a frame: shows the scene as it stands.
    void draw();

    /// As draw(), and leaves a picture of it.
    /// @throws ViewerError if the picture can't be written, or the window is closed.
    void drawPicture(const std::filesystem::path& file);

    /// Moves the cursor, in pixels from the upper left corner, as if the person did.
    void pointAt(int x, int y);

    /// Where keys go that are pressed now.
    Focus findFocus();

    /// True when the person has closed the window.
    bool isDone() const { return viewer.done(); }

    osgViewer::Viewer& getViewer() { return viewer; }

private:
    void setUpCamera(osg::GraphicsContext& context);
    void addHandlers(osg::ApplicationUsage& usage);

    osgViewer::Viewer viewer;
    Daylight daylight;
    osg::ref_ptr<osgGA::TrackballManipulator> trackball;
};

} // namespace tessarin::viewer
