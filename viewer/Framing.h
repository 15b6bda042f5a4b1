#pragma once

#include <osg/BoundingBox>
#include <osg/Node>

namespace tessarin::viewer {

/// The part of a scene that a first picture should fill: everything that is drawn, but for grounds, flat things that
/// are much larger than all the rest, and for what has strayed far away from it. Invalid if nothing is drawn.
osg::BoundingBoxd findSubject(osg::Node& scene);

/// How far from the middle of a box to look at it so that it fills a picture.
/// @param direction from the box to the eye, of length 1, and not along up.
/// @param halfWidth, halfHeight tangents of half the angles of view.
double findDistance(const osg::BoundingBoxd& box, const osg::Vec3d& direction, const osg::Vec3d& up, double halfWidth,
                    double halfHeight);

} // namespace tessarin::viewer
