#pragma once

#include <agent/HookGuard.h>

#include <list>
#include <string>
#include <unordered_map>

namespace tessarin::agent {

/// Answers what a walk over a list of agents or components finds: the first one of a name. It is told of all that
/// comes, goes and is renamed. What it isn't told of is a new order of the list, so between objects of one name it
/// decides by a walk, whose result holds until the host is called again.
template <class T>
class NameIndex {
public:
    explicit NameIndex(const std::list<T*>& indexed) : list(indexed), size(indexed.size()) {
        bearers.reserve(size);
        for (T* const object : list)
            enter(object, object->getName());
    }

    /// False if the list has been changed behind everybody's back.
    bool isUsable() const { return size == list.size(); }

    T* find(const std::string& name) {
        const auto found = bearers.find(name);
        if (found == bearers.end())
            return nullptr;
        Bearers& known = found->second;
        if (!known.first || (known.count > 1 && known.foundAt != hostCalls)) {
            known.first = walk(list, name);
            known.foundAt = hostCalls;
        }
        return known.first;
    }

    void appended(T* object) {
        ++size;
        enter(object, object->getName());
    }

    /// One entry of the object is about to leave the list.
    void leaving(T* object) {
        --size;
        leave(object, object->getName());
    }

    /// The only entry of an object in the list is about to get a new name.
    void renaming(T* object, const std::string& newName) {
        leave(object, object->getName());
        Bearers& known = enter(object, newName);
        if (known.count > 1)
            known.first = nullptr; // it may stand before the others
    }

    static T* walk(const std::list<T*>& list, const std::string& name) {
        for (T* const object : list)
            if (object->getName() == name)
                return object;
        return nullptr;
    }

private:
    struct Bearers {
        T* first = nullptr; ///< null if it has to be found out
        std::size_t count = 0;
        unsigned long foundAt = 0;
    };

    Bearers& enter(T* object, const std::string& name) {
        Bearers& known = bearers[name];
        if (++known.count == 1) {
            known.first = object;
            known.foundAt = hostCalls;
        }
        return known;
    }

    void leave(const T* object, const std::string& name) {
        const auto found = bearers.find(name);
        if (found == bearers.end())
            return;
        if (--found->second.count == 0)
            bearers.erase(found);
        else if (found->second.first == object)
            found->second.first = nullptr;
    }

    const std::list<T*>& list;
    std::size_t size;
    std::unordered_map<std::string, Bearers> bearers;
};

} // namespace tessarin::agent
