#pragma once

#include <osg/Camera>
#include <osg/ref_ptr>
#include <osgText/Text>

#include <string>

namespace osgViewer {
class Viewer;
}
namespace tessarin::agent {
class AgentNode;
}

namespace tessarin::viewer {

/// Text over the picture: about an agent at the upper left, at the upper right the state of the input, and a line for
/// messages at the lower left. Text that stays as it is costs nothing.
class HeadsUp {
public:
    /// Draws into the viewer's window, over everything else.
    explicit HeadsUp(osgViewer::Viewer& viewer);

    /// @name Texts
    /// The empty text shows nothing.
    /// @{
    void showAgent(const std::string& text);
    void showInput(const std::string& text);
    void showMessage(const std::string& text);
    /// @}

    /// Fits the texts to the size of the window.
    void resize(int width, int height);

private:
    osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    osg::ref_ptr<osgText::Text> agent;
    osg::ref_ptr<osgText::Text> input;
    osg::ref_ptr<osgText::Text> message;
    int width = 0;
    int height = 0;
};

/// Names an agent with its components and their fields, in lines.
std::string describe(agent::AgentNode& agent);

} // namespace tessarin::viewer
