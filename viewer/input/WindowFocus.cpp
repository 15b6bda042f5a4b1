#include <viewer/input/WindowFocus.h>

#include <osgViewer/api/X11/GraphicsWindowX11>

namespace tessarin::viewer {

namespace {

bool isUnderCursor(Display* display, Window window) {
    // From the root down, since another window may lie over this one.
    Window root = None, under = DefaultRootWindow(display);
    int x = 0, y = 0;
    unsigned int mask = 0;
    while (under != None && under != window)
        if (XQueryPointer(display, under, &root, &under, &x, &y, &x, &y, &mask) == False)
            return false;
    return under == window;
}

} // namespace

Focus findFocus(osg::GraphicsContext& window) {
    auto* const x11 = dynamic_cast<osgViewer::GraphicsWindowX11*>(&window);
    if (!x11 || !x11->getDisplay())
        return Focus::HERE;
    Window focused = None;
    int revertTo = 0;
    XGetInputFocus(x11->getDisplay(), &focused, &revertTo);
    if (focused == x11->getWindow())
        return Focus::HERE;
    // As under simple window managers, and without any.
    if (focused == PointerRoot || focused == DefaultRootWindow(x11->getDisplay()))
        return isUnderCursor(x11->getDisplay(), x11->getWindow()) ? Focus::HERE : Focus::UNDER_CURSOR;
    return Focus::ELSEWHERE;
}

} // namespace tessarin::viewer
