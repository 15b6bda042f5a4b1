#include <agent/Accessor.h>

namespace tessarin::agent {

AbstractAccessor::~AbstractAccessor() = default;

template class Accessor<std::string>;

} // namespace tessarin::agent
