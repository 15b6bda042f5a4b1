#pragma once

#include <osg/BoundingBox>
#include <osg/Node>
#include <osg/Transform>
#include <osg/Vec3d>

#include <vector>

namespace tessarin::viewer {

/// What a camera shows to either side of its middle: tangents of half the angles of view.
struct Lens {
    double halfWidth = 1;
    double halfHeight = 1;
};

/// Where a camera stands, and what it looks at.
struct Standpoint {
    osg::Vec3d eye;
    osg::Vec3d centre;
    osg::Vec3d up;

    /// Of what there is to be seen about the centre.
    double radius = 0;
};

/// Before something and a little above it, so far away that it fills the picture.
/// @param subject may be invalid, if there is nothing to be seen.
Standpoint standBefore(const osg::BoundingBoxd& subject, const Lens& lens, const osg::Vec3d& up = osg::Vec3d(0, 0, 1));

/// For the first picture of a scene: as standBefore, unless from there too much of what moves is hidden by what
/// doesn't. Then it is another side, higher up perhaps, and where no side will do, a place within.
/// @param movers the transforms of what moves.
Standpoint findStandpoint(osg::Node& scene, const std::vector<osg::Transform*>& movers, const Lens& lens,
                          const osg::Vec3d& up);

} // namespace tessarin::viewer
