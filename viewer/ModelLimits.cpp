#include <viewer/ModelLimits.h>

#include <viewer/ViewerError.h>

#include <cstdio>
#include <string>

namespace tessarin::viewer {

namespace {

void require(double count, double limit, const std::string& what) {
    if (count <= limit)
        return;
    char text[100];
    std::snprintf(text, sizeof(text), "%.10g %s, and %.10g are allowed", count, what.c_str(), limit);
    throw ViewerError("would become " + std::string(text));
}

} // namespace

ModelLimits ModelLimits::times(double factor) const {
    return {nodes * factor, triangles * factor, physics * factor, levels};
}

dynamics::bullet::LoadLimits ModelLimits::ofPhysics() const {
    dynamics::bullet::LoadLimits limits;
    for (double* limit :
         {&limits.modelInstances, &limits.bodies, &limits.joints, &limits.shapes, &limits.triangles, &limits.meetings})
        *limit *= physics;
    return limits;
}

void ModelLimits::check(double nodeCount, double triangleCount, int levelCount) const {
    require(levelCount, levels, "levels of nodes");
    require(nodeCount, nodes, "nodes");
    require(triangleCount, triangles, "triangles");
}

} // namespace tessarin::viewer
