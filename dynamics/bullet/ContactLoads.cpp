#include <dynamics/bullet/ContactLoads.h>

namespace tessarin::dynamics::bullet {

namespace {

btScalar loadOf(const btPersistentManifold& manifold) {
    btScalar load = 0;
    for (int i = 0; i < manifold.getNumContacts(); ++i) {
        load += manifold.getContactPoint(i).m_appliedImpulse;
    }
    return load;
}

void addLoad(btPersistentManifold& manifold, btScalar load) {
    const auto isUnloaded = [](const btManifoldPoint& point) { return !(point.m_appliedImpulse > 0); };
    int count = 0;
    for (int i = 0; i < manifold.getNumContacts(); ++i) {
        count += isUnloaded(manifold.getContactPoint(i)) ? 1 : 0;
    }
    for (int i = 0; i < manifold.getNumContacts(); ++i) {
        btManifoldPoint& point = manifold.getContactPoint(i);
        if (isUnloaded(point)) {
            point.m_appliedImpulse = load / static_cast<btScalar>(count);
        }
    }
}

} // namespace

void ContactLoads::note(btDispatcher& dispatcher) {
    loads.clear();
    for (int i = 0; i < dispatcher.getNumManifolds(); ++i) {
        btPersistentManifold& manifold = *dispatcher.getManifoldByIndexInternal(i);
        const bool isAwake = manifold.getBody0()->isActive() || manifold.getBody1()->isActive();
        const btScalar load = isAwake ? loadOf(manifold) : 0;
        // A number that the engine leaves to others, and that is 0 in a new manifold.
        manifold.m_companionIdA = 0;
        if (load > 0) {
            loads.push_back(load);
            manifold.m_companionIdA = static_cast<int>(loads.size());
        }
    }
}

void ContactLoads::passOn(btDispatcher& dispatcher) const {
    if (loads.empty()) {
        return;
    }
    for (int i = 0; i < dispatcher.getNumManifolds(); ++i) {
        btPersistentManifold& manifold = *dispatcher.getManifoldByIndexInternal(i);
        if (manifold.m_companionIdA == 0) {
            continue;
        }
        const btScalar lost = loads[static_cast<std::size_t>(manifold.m_companionIdA - 1)] - loadOf(manifold);
        if (lost > 0) {
            addLoad(manifold, lost);
        }
    }
}

} // namespace tessarin::dynamics::bullet
