#pragma once

#include <osg/GraphicsContext>

namespace tessarin::viewer {

/// Whether keys that are pressed now go to a window. True also where that can't be found out. Asks the display server,
/// so it is a question for when it matters.
bool hasFocus(osg::GraphicsContext& window);

} // namespace tessarin::viewer
