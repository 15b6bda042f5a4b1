#include <viewer/Glow.h>

#include <osg/StateSet>
#include <osg/Uniform>

namespace tessarin::viewer {

namespace {

/// As the fragment shader of Daylight knows them.
const char* nameOf(Glow glow) {
    return glow == Glow::HIGHLIGHT ? "highlight" : "flash";
}

} // namespace

void setGlow(osg::Node& node, Glow glow, const osg::Vec4& tint) {
    if (tint.a() > 0)
        node.getOrCreateStateSet()->getOrCreateUniform(nameOf(glow), osg::Uniform::FLOAT_VEC4)->set(tint);
    else if (node.getStateSet())
        node.getStateSet()->removeUniform(nameOf(glow));
}

osg::Vec4 getGlow(const osg::Node& node, Glow glow) {
    osg::Vec4 tint(0, 0, 0, 0);
    if (node.getStateSet())
        if (const osg::Uniform* const uniform = node.getStateSet()->getUniform(nameOf(glow)))
            uniform->get(tint);
    return tint;
}

} // namespace tessarin::viewer
