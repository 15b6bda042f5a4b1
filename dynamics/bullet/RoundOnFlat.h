#pragma once

#include <btBulletCollisionCommon.h>

namespace tessarin::dynamics::bullet {

/// The contacts of a cylinder or a capsule with a plane or a side of a box that it lies on.
///
/// The engine finds one point at a time there, at one end and then at the other, so that what rolls rocks and gains
/// speed by it. Here a body on its side has both ends of the line that it lies on, and one that stands has four points
/// of its rim, exactly. What only touches an edge is left to the engine's general search.
class RoundOnFlat : public btCollisionAlgorithm {
public:
    /// Makes these for pairs of a round shape and a flat one, in this order or, where m_swapped says so, in the other.
    struct CreateFunc : public btCollisionAlgorithmCreateFunc {
        /// @param generalAlgorithm for what only touches an edge; outlives this.
        CreateFunc(bool isFlatFirst, btCollisionAlgorithmCreateFunc& generalAlgorithm);

        btCollisionAlgorithm* CreateCollisionAlgorithm(btCollisionAlgorithmConstructionInfo& info,
                                                       const btCollisionObjectWrapper* first,
                                                       const btCollisionObjectWrapper* second) override;

        btCollisionAlgorithmCreateFunc& general;
    };

    RoundOnFlat(const btCollisionAlgorithmConstructionInfo& info, const btCollisionObjectWrapper* first,
                const btCollisionObjectWrapper* second, bool isFlatFirst, btCollisionAlgorithmCreateFunc& general);
    ~RoundOnFlat() override;

    RoundOnFlat(const RoundOnFlat&) = delete;
    RoundOnFlat& operator=(const RoundOnFlat&) = delete;

    void processCollision(const btCollisionObjectWrapper* first, const btCollisionObjectWrapper* second,
                          const btDispatcherInfo& info, btManifoldResult* result) override;
    btScalar calculateTimeOfImpact(btCollisionObject* first, btCollisionObject* second, const btDispatcherInfo& info,
                                   btManifoldResult* result) override;
    void getAllContactManifolds(btManifoldArray& manifolds) override;

private:
    void searchGenerally(const btCollisionObjectWrapper* first, const btCollisionObjectWrapper* second,
                         const btDispatcherInfo& info, btManifoldResult* result);

    btPersistentManifold* manifold;
    const bool ownsManifold;
    const bool isFlatFirst;
    btCollisionAlgorithmCreateFunc& general;
    btCollisionAlgorithm* search = nullptr;
};

} // namespace tessarin::dynamics::bullet
