#include <agent/HookGuard.h>

#include <agent/DocumentFaults.h>
#include <logging/Log.h>

namespace tessarin::agent {

using logging::Logger;

static log4cpp::Category* const category = Logger::instance()->getCategory("agent", true);

void logHookException(const char* hook, const std::exception* exception) {
    TESSARIN_LOG(category, Logger::errorLevel,
                 "The hook " << hook << " let out an exception" << (exception ? ": " : "")
                             << (exception ? exception->what() : "") << placeInWork());
}

} // namespace tessarin::agent
