#pragma once

#include <dynamics/bullet/BulletContact.h>

#include <btBulletDynamicsCommon.h>

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

namespace tessarin::dynamics::bullet {

class BulletBody;

/// Where the chain of a body's contacts begins: twice the index of the first one, and one more if the body is its
/// second; -1 if there is none. It counts for the list of that number only.
struct ContactLink {
    std::uint64_t list = 0;
    std::int64_t first = -1;
};

/// Gathers which bodies touch while the world is stepped, and keeps the result until the next time. Once the list has
/// been as long as it gets, nothing is allocated.
class ContactList {
public:
    /// To be called before the first step of a call.
    void start();

    /// Adds what the engine's last step has found.
    /// @param massUnit what the engine counts impulses in.
    void gather(const btDispatcher& dispatcher, double massUnit);

    /// Joins what belongs to one pair, so that a call of many steps needs no more room than one.
    void join();

    /// Makes the list.
    void finish();

    /// A body's number is given to no other one: pairs are in the order of these.
    std::uint64_t nextBodyNumber() { return ++lastBodyNumber; }

    /// Turns a body that goes to null in the list.
    void forget(BulletBody& body);

    /// To be called when the user data of a body is another.
    void updateUserData(BulletBody& body);

    const std::vector<BulletContact>& get() const { return contacts; }

private:
    using Pair = std::pair<std::uint64_t, std::uint64_t>;

    struct Touch {
        Pair pair;
        std::size_t order = 0;
        BulletBody* first = nullptr;
        BulletBody* second = nullptr;
        btVector3 point;
        btVector3 normal;
        btScalar hardest = -1;
        double impulse = 0;
    };

    struct Known {
        Pair pair;
        BulletBody* first = nullptr;
        BulletBody* second = nullptr;
    };

    static bool mergeManifold(const btPersistentManifold& manifold, Touch& touch);
    bool isGone(std::uint64_t number) const;
    void link(std::size_t index);
    std::int64_t firstOf(const BulletBody& body) const;
    void updateKnown();

    template <class Change>
    void forEachOf(BulletBody& body, Change change);

    std::vector<Touch> touches;
    std::vector<BulletContact> contacts;

    /// For each contact, how the chains of its first and of its second body go on.
    std::vector<std::array<std::int64_t, 2>> links;

    /// The pairs that touched in the step before, those that have fallen asleep since included.
    std::vector<Known> known;
    std::vector<Known> nextKnown;
    std::vector<std::uint64_t> goneBodies;
    std::uint64_t lastBodyNumber = 0;
    std::uint64_t listNumber = 0;
};

} // namespace tessarin::dynamics::bullet
