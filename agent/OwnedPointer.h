#pragma once

#include <memory>
#include <utility>

namespace tessarin::agent {

/// A pointer to an object that its holder owns and that copies of the holder only see: the holder deletes the object,
/// and then all copies read null.
template <class T>
class OwnedPointer {
public:
    OwnedPointer() = default;
    OwnedPointer(const OwnedPointer& other) : object(other.object) {}
    ~OwnedPointer() { destroy(); }

    /// Sees what the other holds. What was owned before belongs to the caller, and copies of this holder read null,
    /// since nobody tells them when the caller deletes it. Nothing changes if both hold the same object.
    OwnedPointer& operator=(const OwnedPointer& other) {
        if (object == other.object)
            return *this;
        if (isOwner())
            *object = nullptr;
        object = other.object;
        owner = false;
        return *this;
    }

    T* get() const { return object ? *object : nullptr; }

    /// True if there is an object and it is this holder's to delete.
    bool isOwner() const { return owner && get(); }

    /// Deletes the present object, if it is owned, and owns the new one, which may be null.
    void reset(T* newObject) {
        std::shared_ptr<T*> next = newObject ? std::make_shared<T*>(newObject) : nullptr;
        destroy();
        object = std::move(next);
        owner = true;
    }

private:
    void destroy() {
        if (!owner || !object)
            return;
        const std::shared_ptr<T*> held = std::move(object);
        object.reset();
        delete std::exchange(*held, nullptr);
    }

    std::shared_ptr<T*> object;
    bool owner = false;
};

} // namespace tessarin::agent
