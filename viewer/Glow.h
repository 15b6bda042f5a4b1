#pragma once

#include <osg/Node>
#include <osg/Vec4>

namespace tessarin::viewer {

/// A tint over whatever is drawn below a node, on top of its own colours. There are two that don't disturb each other:
/// one for what the cursor is over, and one for what was hit.
enum class Glow { HIGHLIGHT, FLASH };

/// @param tint colour and strength: 0 takes the glow off, 1 hides the node's own colours.
void setGlow(osg::Node& node, Glow glow, const osg::Vec4& tint);

/// The tint that was set; of strength 0 if there is none.
osg::Vec4 getGlow(const osg::Node& node, Glow glow);

} // namespace tessarin::viewer
