#pragma once

#include <logging/Log.h>

namespace tessarin::dynamics::bullet {

/// The category "dynamics".
log4cpp::Category* logCategory();

} // namespace tessarin::dynamics::bullet
