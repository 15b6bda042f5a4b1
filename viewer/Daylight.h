#pragma once

#include <viewer/Standpoint.h>

#include <osg/Group>
#include <osg/Light>
#include <osg/ref_ptr>

namespace tessarin::viewer {

/// A group whose contents are lit by a sun that casts shadows and by the sky.
class Daylight {
public:
    Daylight();

    /// What is to be lit goes under this group.
    osg::Group& getGroup() { return *group; }

    /// From where the scene is looked at first: the sun stands to the left and above, and what is many times farther
    /// away than what is looked at fades into the horizon.
    void setStandpoint(const Standpoint& place);

private:
    osg::ref_ptr<osg::Group> group;
    osg::ref_ptr<osg::Light> sun;
};

} // namespace tessarin::viewer
