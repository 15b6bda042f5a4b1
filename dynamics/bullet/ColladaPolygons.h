#pragma once

#include <dynamics/bullet/Affine.h>

#include <array>
#include <vector>

namespace tessarin::dynamics::bullet::collada {

using Indices = std::vector<unsigned>;
using Triangles = std::vector<std::array<unsigned, 3>>;

/// A fan around the first of some corners.
void appendFan(const Indices& corners, std::size_t first, std::size_t count, Triangles& triangles);

/// Cuts a polygon, which may be concave, into triangles that run round as it does. The holes run any way round.
///
/// Where that can't be done, since corners aren't there or edges cross, or would take too long, it is a fan.
void appendPolygon(const std::vector<Vector3>& vertices, const Indices& outline, const std::vector<Indices>& holes,
                   Triangles& triangles);

} // namespace tessarin::dynamics::bullet::collada
