#pragma once

#include <dynamics/bullet/ColladaDocument.h>
#include <dynamics/bullet/ColladaPhysics.h>

#include <optional>

namespace tessarin::dynamics::bullet::collada {

/// The material that an element instances or holds itself; none if it has none or if that isn't there, which has been
/// complained of.
std::optional<Material> readMaterial(const Document& document, const Element* owner);

} // namespace tessarin::dynamics::bullet::collada
