#pragma once

#include <osg/GraphicsContext>

namespace tessarin::viewer {

/// Where keys go that are pressed now.
enum class Focus {
    HERE,         ///< To the window, or that can't be found out.
    UNDER_CURSOR, ///< To whatever is under the cursor, which isn't the window.
    ELSEWHERE
};

/// Asks the display server, so it is a question for when it matters.
Focus findFocus(osg::GraphicsContext& window);

} // namespace tessarin::viewer
