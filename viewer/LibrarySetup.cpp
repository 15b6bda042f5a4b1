#include <viewer/LibrarySetup.h>

#include <viewer/FlashComponent.h>
#include <viewer/ModelLoader.h>
#include <viewer/MotorBehaviour.h>
#include <viewer/SpinBehaviour.h>

#include <agent/SimObjectDB.h>
#include <agent/SimObjectFactory.h>
#include <agent/VisualModelComponent.h>

namespace tessarin::viewer {

void setUpLibrary() {
    static ModelLoader modelLoader;
    agent::VisualModelComponent::setModelLoader(&modelLoader);

    static agent::SimObjectFactoryFor<SpinBehaviour> spinBehaviours;
    agent::SimObjectDB::instance()->registerFactory(&spinBehaviours, "SpinBehaviour");
    static agent::SimObjectFactoryFor<FlashComponent> flashComponents;
    agent::SimObjectDB::instance()->registerFactory(&flashComponents, "FlashComponent");
    static agent::SimObjectFactoryFor<MotorBehaviour> motorBehaviours;
    agent::SimObjectDB::instance()->registerFactory(&motorBehaviours, "MotorBehaviour");
}

} // namespace tessarin::viewer
