#pragma once

#include <dynamics/bullet/ColladaDocument.h>
#include <dynamics/bullet/ColladaMeshes.h>
#include <dynamics/bullet/ColladaNodes.h>
#include <dynamics/bullet/ColladaPhysics.h>

#include <set>
#include <string>

namespace tessarin::dynamics::bullet::collada {

/// Puts together what the physics scenes instanced by a file's `scene` hold. What can't be used is complained of and
/// left out.
class PhysicsReader {
public:
    PhysicsReader(const Document& document, const Element& root);

    Physics read();

private:
    void readScene(const Element& scene);

    /// @param instance an `instance_physics_model`, or a scene that holds `instance_rigid_body` itself.
    /// @param model what is instanced; null if it isn't there.
    void readInstances(const Element& instance, const Element* model);
    void readModelInstance(const Element& instance);
    void readBodyInstance(const Element& instance, const Element* model);

    const Element* findTargetNode(const Element& instance, const Element* body) const;
    const Element* findBody(const Element& instance, const Element* model) const;

    /// Reads a `technique_common` of a `rigid_body` or of its instance over what is known already.
    void readProperties(const Element* technique, RigidBody& body);
    void readMotion(const Element* technique, BodyInstance& instance) const;

    const Document& document;
    const Element& root;
    Nodes nodes;
    Meshes meshes;
    std::set<const Element*> openModels;
    int modelInstances = 0;
    Physics physics;
};

} // namespace tessarin::dynamics::bullet::collada
