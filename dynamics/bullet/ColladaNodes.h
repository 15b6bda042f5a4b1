#pragma once

#include <dynamics/bullet/Affine.h>
#include <dynamics/bullet/ColladaDocument.h>

#include <cstddef>
#include <string>
#include <unordered_map>

namespace tessarin::dynamics::bullet::collada {

/// The placement that the transform elements among an element's children add up to, in their order, as OpenSceneGraph's
/// COLLADA plugin understands them: it takes a lookat for the matrix of the view, and it passes over an element with
/// the wrong number of numbers.
Affine placementOf(const Document& document, const Element& element);

/// The turn that the plugin puts above the scene: Y_UP, which is also the default, by +90 degrees about X, X_UP by +90
/// degrees about Y.
Matrix3 upAxisTurn(const Element& root);

/// Where the nodes of a file's visual model are in the world, up-axis turned.
class Nodes {
public:
    /// Looks at the scene that is instanced first, then at whatever else holds nodes, so that a node's place is that of
    /// its first instance in the picture.
    Nodes(const Document& document, const Element& root);

    /// The node element that a rigid body's target means: by id, else by name or sid, else by a path of an id and the
    /// sids below it. Null if there is none.
    const Element* find(const std::string& target) const;

    /// From the node to the world, scale included; also of a whole scene.
    Affine nodeToWorld(const Element& node) const;

    /// True if the node is the other one or stands below it.
    bool isWithin(const Element& node, const Element& other) const;

    /// The name that the plugin gives to the node.
    static std::string nameOf(const Element& node);

private:
    const Element* findByPath(const std::string& target) const;
    void visitAll(const Element* root, const Affine& toWorld);
    void visit(const Element& node, const Affine& parentToWorld);

    const Document& document;
    struct Place {
        Affine toWorld;
        Place* parent = nullptr;

        /// In the order of the visit, from 1 on, and that of the last one below it; 0 for a scene.
        std::size_t number = 0;
        std::size_t last = 0;
    };

    std::unordered_map<const Element*, Place> places;
    std::unordered_map<std::string, const Element*> nodesByName;
};

} // namespace tessarin::dynamics::bullet::collada
