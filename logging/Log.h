#pragma once

#include <logging/Logger.h>

#include <locale>
#include <sstream>

namespace tessarin::logging {

/// Puts a message together with a function that writes it to a stream, and logs it. What goes wrong meanwhile, a lack
/// of memory say, costs the message and nothing else.
template <typename Write>
void writeLog(log4cpp::Category* category, int level, const char* file, int line, const Write& write) noexcept {
    try {
        std::ostringstream text;
        text.imbue(std::locale::classic());
        write(text);
        Logger::log(category, level, file, line, text.str());
    } catch (...) {
    }
}

} // namespace tessarin::logging

/// Logs what is inserted, as in TESSARIN_LOG(category, Logger::errorLevel, "no body for " << name). The message is only
/// put together where it is enabled.
#define TESSARIN_LOG(category, level, message)                                                                         \
    do {                                                                                                               \
        if (::tessarin::logging::Logger::isEnabled(category, level)) {                                                 \
            ::tessarin::logging::writeLog(category, level, __FILE__, __LINE__,                                         \
                                          [&](std::ostream& tessarinLogText) { tessarinLogText << message; });         \
        }                                                                                                              \
    } while (false)
