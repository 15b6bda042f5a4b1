#pragma once

#include <agent/BehaviourComponent.h>
#include <agent/Export.h>
#include <agent/SimObject.h>

#include <type_traits>

namespace tessarin::agent {

/// Makes objects of one class for SimObjectDB. Factories are static objects: they stay valid as long as they are
/// registered, which is to the end of the process, and nobody deletes them.
class TESSARIN_AGENT_EXPORT SimObjectFactory {
public:
    /// A new object on the heap, made by the default constructor of its class. It belongs to the caller.
    virtual SimObject* create() = 0;

protected:
    // Not virtual: a factory is never deleted through this base.
    ~SimObjectFactory() = default;
};

/// The factory of a host's class T, so that a host need not write one:
/// @code
/// static tessarin::agent::SimObjectFactoryFor<Spinner> spinnerFactory;
/// tessarin::agent::SimObjectDB::instance()->registerFactory(&spinnerFactory, "Spinner");
/// @endcode
template <class T>
class SimObjectFactoryFor final : public SimObjectFactory {
public:
    SimObject* create() override {
        T* const object = new T();
        if constexpr (std::is_base_of_v<BehaviourComponent, T>)
            return object->asComponent();
        else
            return object;
    }
};

} // namespace tessarin::agent
