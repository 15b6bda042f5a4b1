#include <agent/BehaviourComponent.h>

namespace tessarin::agent {

BehaviourComponent::~BehaviourComponent() = default;

} // namespace tessarin::agent
