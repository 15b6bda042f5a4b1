#pragma once

#include <dynamics/bullet/ColladaDocument.h>
#include <dynamics/bullet/ColladaPolygons.h>

#include <vector>

namespace tessarin::dynamics::bullet::collada {

/// Appends the triangles of a `triangles`, `polylist`, `polygons`, `tristrips` or `trifans` element, by the indices of
/// their vertices; any other element has none. Indices may be out of range; a negative one becomes the largest there
/// is.
void appendTriangles(const Element& primitives, const std::vector<Vector3>& vertices, Triangles& triangles);

} // namespace tessarin::dynamics::bullet::collada
