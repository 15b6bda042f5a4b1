#pragma once

#include <dynamics/DynamicsWorld.h>
#include <dynamics/bullet/BulletContact.h>
#include <dynamics/bullet/Export.h>
#include <dynamics/bullet/LoadLimits.h>

#include <gmtl/Vec.h>

#include <memory>
#include <vector>

namespace tessarin::dynamics::bullet {

class WorldCore;

/// A dynamics world on the Bullet engine that reads the physics of COLLADA files.
///
/// Lengths are in whatever unit the files use: the unit of a file is never applied, its up-axis is turned to +Z, just
/// as OpenSceneGraph's COLLADA plugin does, so that bodies and pictures agree. Time is in seconds.
///
/// The host makes one world, loads files into it and calls step() from its frame loop. Bodies and joints
/// belong to whoever got them from loadScene and may be deleted in any order at any time outside step(), also after the
/// world: what the engine needs of a world goes with the last of them. A world with all that it gave belongs to one
/// thread at a time. The same files and the same calls give bit-equal poses.
class TESSARIN_DYNAMICS_BULLET_EXPORT BulletDynamicsWorld : public DynamicsWorld {
public:
    /// An empty world without gravity, with a fixed step of 1/60 s.
    BulletDynamicsWorld();
    ~BulletDynamicsWorld() override;

    BulletDynamicsWorld(const BulletDynamicsWorld&) = delete;
    BulletDynamicsWorld& operator=(const BulletDynamicsWorld&) = delete;

    /// Reports one body per `instance_rigid_body` of the instanced physics scenes of a COLLADA file, in document order,
    /// then one joint per `instance_rigid_constraint`: a DynamicsRevoluteJoint where one rotation is left free, a
    /// DynamicsPrismaticJoint where it is one translation, else a DynamicsD6Joint, and a BulletJoint all of them.
    ///
    /// A body has the name and the world pose of its target node in the visual model, with `placement` on top; scale is
    /// taken out of the pose and applied to the shapes. Gravity of a file becomes the world's: of several files, that
    /// of the last one that names one; it is turned with the file's up-axis and not by `placement`. The time step of a
    /// file becomes the world's fixed step likewise. What is wrong in a
    /// file is logged at level 300 in the category "dynamics" and left out; the rest comes in. Of a path that leads to
    /// no regular file, and of a file that would become more than the limits allow, nothing comes in, and one line says
    /// so.
    void loadScene(const std::string& filePath, const gmtl::Matrix<double, 4, 4>& placement,
                   DynamicsBodyFunctor& functor) override;

    /// What files may become from now on.
    void setLoadLimits(const LoadLimits& limits) { loadLimits = limits; }
    const LoadLimits& getLoadLimits() const { return loadLimits; }

    /// Runs as many whole fixed steps as fit into the time given plus what earlier calls left over.
    ///
    /// step(getFixedStep()) runs exactly one step, each time. Time that is negative or not a number counts as none.
    /// @return how many fixed steps were run.
    int step(double seconds);

    /// Seconds that one step takes.
    double getFixedStep() const;

    /// Takes effect with the next step(); the time left over is kept.
    /// @param seconds more than zero.
    void setFixedStep(double seconds);

    /// The acceleration of all dynamic bodies, per second squared. None until a file or the host sets one.
    gmtl::Vec<double, 3> getGravity() const;

    /// Wakes every body. Numbers that are not finite change nothing.
    void setGravity(const gmtl::Vec<double, 3>& gravity);

    /// The pairs of bodies that touched during the last step(), in the order in which the bodies were loaded. Pairs
    /// that lie asleep, and those of two bodies that can't move, are not among them.
    ///
    /// The list stays where it is until the next step() that runs a fixed step; a body that is deleted meanwhile turns
    /// to null in it. So bodies may be deleted while it is gone through.
    const std::vector<BulletContact>& getContacts() const;

private:
    std::shared_ptr<WorldCore> core;
    LoadLimits loadLimits;
};

} // namespace tessarin::dynamics::bullet
