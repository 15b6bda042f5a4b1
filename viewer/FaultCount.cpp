#include <viewer/FaultCount.h>

#include <logging/Log.h>

#include <utility>

namespace tessarin::viewer {

using logging::Logger;

FaultCount::FaultCount()
    : before(Logger::instance()->setFilter([this](const Logger::Message& message) { return isNew(message); })) {}

FaultCount::~FaultCount() {
    Logger::instance()->setFilter(std::move(before));
}

int FaultCount::tell(const std::filesystem::path& file) const {
    const int count = static_cast<int>(told.size());
    if (count > 0)
        TESSARIN_LOG(Logger::instance()->getCategory("viewer", true), Logger::errorLevel,
                     file.string() << ": while it was read " << count
                                   << (count == 1 ? " line of a fault was" : " lines of faults were") << " logged");
    return count;
}

bool FaultCount::isNew(const Logger::Message& message) {
    return message.level > Logger::errorLevel ||
           told.insert(message.category.getName() + ": " + message.text + " (" + message.context + ')').second;
}

} // namespace tessarin::viewer
