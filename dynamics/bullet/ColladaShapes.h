#pragma once

#include <dynamics/bullet/ColladaDocument.h>
#include <dynamics/bullet/ColladaMeshes.h>
#include <dynamics/bullet/ColladaPhysics.h>

#include <optional>

namespace tessarin::dynamics::bullet::collada {

/// Reads a `shape`. Nothing, with one message, if it has no geometry that can be used.
std::optional<Shape> readShape(const Document& document, const Element& element, Meshes& meshes);

} // namespace tessarin::dynamics::bullet::collada
