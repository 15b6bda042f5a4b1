#include <dynamics/bullet/DynamicsLog.h>

namespace tessarin::dynamics::bullet {

namespace {

log4cpp::Category* const category = logging::Logger::instance()->getCategory("dynamics", true);

} // namespace

log4cpp::Category* logCategory() {
    return category;
}

} // namespace tessarin::dynamics::bullet
