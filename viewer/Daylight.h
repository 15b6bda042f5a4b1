#pragma once

#include <osg/BoundingSphere>
#include <osg/Group>
#include <osg/ref_ptr>

namespace tessarin::viewer {

/// A group whose contents are lit by a sun that casts shadows and by the sky.
class Daylight {
public:
    Daylight();

    /// What is to be lit goes under this group.
    osg::Group& getGroup() { return *group; }

    /// Where the scene's subject is: what is many times farther away fades into the horizon.
    void setSubject(const osg::BoundingSphered& subject);

private:
    osg::ref_ptr<osg::Group> group;
};

} // namespace tessarin::viewer
