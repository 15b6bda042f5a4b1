#pragma once

#include <logging/Logger.h>

#include <filesystem>
#include <set>
#include <string>

namespace tessarin::viewer {

/// Counts the lines of faults, those of level 300 and worse, that are logged while a file is read, and lets each
/// through once: a document is applied twice, and would tell its faults as often.
class FaultCount {
public:
    FaultCount();
    ~FaultCount();
    FaultCount(const FaultCount&) = delete;
    FaultCount& operator=(const FaultCount&) = delete;

    /// Logs how many there were so far, if there were any, and in which file.
    /// @return their number.
    int tell(const std::filesystem::path& file) const;

private:
    bool isNew(const logging::Logger::Message& message);

    std::set<std::string> told;
    logging::Logger::Filter before;
};

} // namespace tessarin::viewer
