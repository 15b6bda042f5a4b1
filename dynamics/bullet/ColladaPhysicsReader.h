#pragma once

#include <dynamics/bullet/ColladaConstraints.h>
#include <dynamics/bullet/ColladaDocument.h>
#include <dynamics/bullet/ColladaMeshes.h>
#include <dynamics/bullet/ColladaModels.h>
#include <dynamics/bullet/ColladaNodes.h>
#include <dynamics/bullet/ColladaPhysics.h>
#include <dynamics/bullet/LoadLimits.h>

#include <set>
#include <vector>

namespace tessarin::dynamics::bullet::collada {

/// Puts together what the physics scenes instanced by a file's `scene` hold. What can't be used is complained of and
/// left out.
class PhysicsReader {
public:
    PhysicsReader(const Document& document, const Element& root, const LoadLimits& limits);

    /// @throws std::runtime_error if there would be more than the limits allow.
    Physics read();

    /// The bodies with their names and places, but without anything that they are made of.
    std::vector<BodyInstance> readBodiesAlone();

private:
    /// A node that an instance of a model is placed under, or a placement without one, in the file's own axes.
    struct Parent {
        const Element* node;
        Affine place;
    };

    /// What is being read: an instance of a model, or a scene that holds instances of bodies itself.
    struct Scope {
        /// Null if there is none.
        const Element* model;

        /// Of Models.
        int number;

        /// To the world, up-axis turned.
        Affine frame;
        std::vector<Parent> parents;
    };

    void readScenes();
    void readScene(const Element& scene);
    void readInstances(const Element& instance, const Scope& scope);
    void readModelInstance(const Element& instance, const Scope& outer);
    void readBodyInstance(const Element& instance, const Scope& scope);
    Scope enter(const Element& instance, const Element* model, const Scope& outer);
    Affine placeOf(const Element& node, const Scope& scope) const;
    const Element* findTargetNode(const Element& instance, const Element* body) const;

    /// Reads a `technique_common` of a `rigid_body` or of its instance over what is known already.
    void readProperties(const Element* technique, RigidBody& body);
    void countShapes(const RigidBody& body);
    void readMotion(const Element* technique, BodyInstance& instance) const;

    const Document& document;
    const Element& root;
    const LoadLimits limits;
    Nodes nodes;
    Meshes meshes;
    Models models;
    Constraints constraints;
    std::set<const Element*> openModels;
    std::set<const Element*> bodyNodes;
    double modelInstances = 0;
    double shapeCount = 0;
    double triangleCount = 0;
    bool readsBodiesAlone = false;
    Physics physics;
};

} // namespace tessarin::dynamics::bullet::collada
