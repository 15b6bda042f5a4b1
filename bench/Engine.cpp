#include <bench/Engine.h>

#include <agent/SimObjectDB.h>
#include <agent/SimObjectFactory.h>

#include <cstddef>

namespace tessarin::bench {

agent::AccessorWithObject Engine::getAccessor(const std::string& fieldName) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
    static agent::Accessor<double> accessor(offsetof(Engine, power));
#pragma GCC diagnostic pop
    if (fieldName == "power") {
        return {&accessor, this};
    }
    return Component::getAccessor(fieldName);
}

void Engine::registerClass() {
    static agent::SimObjectFactoryFor<Engine> factory;
    static const bool isRegistered = [] {
        agent::SimObjectDB::instance()->registerFactory(&factory, "Engine");
        return true;
    }();
    static_cast<void>(isRegistered);
}

} // namespace tessarin::bench
