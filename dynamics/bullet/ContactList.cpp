#include <dynamics/bullet/ContactList.h>

#include <dynamics/bullet/BulletBody.h>

#include <algorithm>

namespace tessarin::dynamics::bullet {

namespace {

gmtl::Vec<double, 3> toGmtl(const btVector3& a) {
    return {a.x(), a.y(), a.z()};
}

} // namespace

void ContactList::start() {
    ++listNumber; // what bodies know of their contacts no longer counts
    contacts.clear();
    links.clear();
    touches.clear();
}

bool ContactList::mergeManifold(const btPersistentManifold& manifold, Touch& touch) {
    bool isTouching = false;
    for (int i = 0; i < manifold.getNumContacts(); ++i) {
        const btManifoldPoint& point = manifold.getContactPoint(i);
        if (!(point.m_appliedImpulse > 0 || point.getDistance() <= 0)) {
            continue;
        }
        isTouching = true;
        touch.impulse += point.m_appliedImpulse;
        if (point.m_appliedImpulse > touch.hardest) {
            touch.hardest = point.m_appliedImpulse;
            touch.point = point.m_positionWorldOnB;
            touch.normal = point.m_normalWorldOnB;
        }
    }
    return isTouching;
}

void ContactList::gather(const btDispatcher& constDispatcher, double massUnit) {
    auto& dispatcher = const_cast<btDispatcher&>(constDispatcher); // asking it changes nothing
    for (int i = 0; i < dispatcher.getNumManifolds(); ++i) {
        const btPersistentManifold& manifold = *dispatcher.getManifoldByIndexInternal(i);
        const btCollisionObject& a = *manifold.getBody0();
        const btCollisionObject& b = *manifold.getBody1();
        Touch touch;
        if (!(a.isActive() || b.isActive()) || !mergeManifold(manifold, touch)) {
            continue;
        }
        touch.impulse *= massUnit;
        touch.first = static_cast<BulletBody*>(a.getUserPointer());
        touch.second = static_cast<BulletBody*>(b.getUserPointer());
        if (touch.second->getNumber() < touch.first->getNumber()) {
            std::swap(touch.first, touch.second);
            touch.normal = -touch.normal;
        }
        touch.pair = {touch.first->getNumber(), touch.second->getNumber()};
        touch.order = touches.size();
        touches.push_back(touch);
    }
}

void ContactList::join() {
    std::sort(touches.begin(), touches.end(),
              [](const Touch& a, const Touch& b) { return a.pair != b.pair ? a.pair < b.pair : a.order < b.order; });
    std::size_t count = 0;
    for (const Touch& touch : touches) {
        if (count == 0 || touches[count - 1].pair != touch.pair) {
            touches[count] = touch;
            touches[count].order = count;
            ++count;
            continue;
        }
        Touch& sum = touches[count - 1];
        sum.impulse += touch.impulse;
        if (touch.hardest > sum.hardest) {
            sum.hardest = touch.hardest;
            sum.point = touch.point;
            sum.normal = touch.normal;
        }
    }
    touches.resize(count);
}

void ContactList::finish() {
    auto before = known.begin();
    for (const Touch& touch : touches) {
        while (before != known.end() && before->pair < touch.pair) {
            ++before;
        }
        BulletContact contact;
        contact.first = touch.first;
        contact.second = touch.second;
        contact.firstUserData = touch.first->getUserData();
        contact.secondUserData = touch.second->getUserData();
        contact.point = toGmtl(touch.point);
        contact.normal = toGmtl(touch.normal);
        contact.impulse = touch.impulse;
        contact.began = before == known.end() || before->pair != touch.pair;
        contacts.push_back(contact);
        link(contacts.size() - 1);
    }
    updateKnown();
}

void ContactList::link(std::size_t index) {
    auto& first = static_cast<BulletBody&>(*contacts[index].first);
    auto& second = static_cast<BulletBody&>(*contacts[index].second);
    links.push_back({firstOf(first), firstOf(second)});
    first.contactLink = {listNumber, static_cast<std::int64_t>(2 * index)};
    second.contactLink = {listNumber, static_cast<std::int64_t>(2 * index + 1)};
}

std::int64_t ContactList::firstOf(const BulletBody& body) const {
    return body.contactLink.list == listNumber ? body.contactLink.first : -1;
}

void ContactList::updateKnown() {
    std::sort(goneBodies.begin(), goneBodies.end());
    nextKnown.clear();
    auto touch = touches.begin();
    for (const Known& pair : known) {
        for (; touch != touches.end() && touch->pair < pair.pair; ++touch) {
            nextKnown.push_back({touch->pair, touch->first, touch->second});
        }
        const bool isListed = touch != touches.end() && touch->pair == pair.pair;
        // Two that lie asleep touch as they did.
        if (!isListed && !isGone(pair.pair.first) && !isGone(pair.pair.second) && !pair.first->isAwake() &&
            !pair.second->isAwake()) {
            nextKnown.push_back(pair);
        }
    }
    for (; touch != touches.end(); ++touch) {
        nextKnown.push_back({touch->pair, touch->first, touch->second});
    }
    known.swap(nextKnown);
    goneBodies.clear();
}

bool ContactList::isGone(std::uint64_t number) const {
    return std::binary_search(goneBodies.begin(), goneBodies.end(), number);
}

template <class Change>
void ContactList::forEachOf(BulletBody& body, Change change) {
    for (std::int64_t i = firstOf(body); i >= 0;) {
        const auto index = static_cast<std::size_t>(i / 2);
        const auto side = static_cast<std::size_t>(i % 2);
        i = links[index][side];
        change(contacts[index], side);
    }
}

void ContactList::forget(BulletBody& body) {
    goneBodies.push_back(body.getNumber());
    forEachOf(body, [](BulletContact& contact, std::size_t) {
        contact.first = contact.second = nullptr;
        contact.firstUserData = contact.secondUserData = nullptr;
    });
}

void ContactList::updateUserData(BulletBody& body) {
    forEachOf(body, [&](BulletContact& contact, std::size_t side) {
        if (contact.first) {
            (side == 0 ? contact.firstUserData : contact.secondUserData) = body.getUserData();
        }
    });
}

} // namespace tessarin::dynamics::bullet
