#include <agent/SimObject.h>

namespace tessarin::agent {

SimObject::~SimObject() = default;

} // namespace tessarin::agent
