#include <agent/SimObject.h>

namespace tessarin::agent {

void (*SimObject::renaming)(SimObject& object, const std::string& newName) = nullptr;

SimObject::~SimObject() = default;

} // namespace tessarin::agent
