#pragma once

#include <dynamics/bullet/ColladaDocument.h>

#include <set>

namespace tessarin::dynamics::bullet::collada {

/// Says that animations of the physics have no effect, and those of nodes that bodies move: one line for either.
/// @param bodyNodes the nodes that bodies move.
void complainOfAnimations(const Document& document, const Element& root, const std::set<const Element*>& bodyNodes);

} // namespace tessarin::dynamics::bullet::collada
