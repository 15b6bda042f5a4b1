#pragma once

#include <dynamics/bullet/ColladaDocument.h>
#include <dynamics/bullet/ColladaPhysics.h>

#include <vector>

namespace tessarin::dynamics::bullet::collada {

/// Gives bodies whose nodes share a name, or are the same node, names of their own. The first one keeps its name, and
/// so does every body whose name is its own; a further one gets the id of its node or, where that stands for something
/// else already, the name with a number. No name that is made up is that of a node.
///
/// The names follow from the file alone, so documents find the same bodies by them each time.
void makeNamesDiffer(const Document& document, const Element& root, std::vector<BodyInstance>& bodies);

} // namespace tessarin::dynamics::bullet::collada
