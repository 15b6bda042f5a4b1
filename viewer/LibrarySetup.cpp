#include <viewer/LibrarySetup.h>

#include <viewer/ModelLoader.h>
#include <viewer/components/DragComponent.h>
#include <viewer/components/FlashComponent.h>
#include <viewer/components/HighlightComponent.h>
#include <viewer/components/MotorBehaviour.h>
#include <viewer/components/PushComponent.h>
#include <viewer/components/SpinBehaviour.h>

#include <agent/SimObjectDB.h>
#include <agent/SimObjectFactory.h>
#include <agent/VisualModelComponent.h>

namespace tessarin::viewer {

namespace {

template <class Class>
void registerClass(const char* name) {
    static agent::SimObjectFactoryFor<Class> factory;
    agent::SimObjectDB::instance()->registerFactory(&factory, name);
}

} // namespace

void setUpLibrary() {
    agent::VisualModelComponent::setModelLoader(&ModelLoader::instance());

    registerClass<DragComponent>("DragComponent");
    registerClass<FlashComponent>("FlashComponent");
    registerClass<HighlightComponent>("HighlightComponent");
    registerClass<MotorBehaviour>("MotorBehaviour");
    registerClass<PushComponent>("PushComponent");
    registerClass<SpinBehaviour>("SpinBehaviour");
}

} // namespace tessarin::viewer
