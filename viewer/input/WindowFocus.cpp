#include <viewer/input/WindowFocus.h>

#include <osgViewer/api/X11/GraphicsWindowX11>

namespace tessarin::viewer {

bool hasFocus(osg::GraphicsContext& window) {
    auto* const x11 = dynamic_cast<osgViewer::GraphicsWindowX11*>(&window);
    if (!x11 || !x11->getDisplay())
        return true;
    Window focused = None;
    int revertTo = 0;
    XGetInputFocus(x11->getDisplay(), &focused, &revertTo);
    // Without a window manager the focus may be wherever the cursor is.
    return focused == x11->getWindow() || focused == PointerRoot || focused == DefaultRootWindow(x11->getDisplay());
}

} // namespace tessarin::viewer
