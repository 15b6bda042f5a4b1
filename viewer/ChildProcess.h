#pragma once

#include <viewer/ViewerError.h>

#include <cstddef>
#include <functional>
#include <string>

namespace tessarin::viewer {

/// What a child process may take before it is ended.
struct ChildLimits {
    double seconds = 30;

    /// Of memory, beside what this process has already.
    std::size_t bytes = std::size_t(1) << 30;
};

/// How a child process ended that brought no result, as the rest of a sentence: "crashed (Segmentation fault)".
class ChildFailure : public ViewerError {
public:
    using ViewerError::ViewerError;
};

/// Runs a task in a copy of this process and gives back its result: whatever the task does, crash, hang or grow,
/// happens to the copy alone. It writes nothing to the standard streams and leaves no core file.
///
/// The copy has one thread, this one, so the task is not to wait for others.
/// @throws ChildFailure
/// @throws ViewerError with what the task threw, or if no process can be started.
std::string runInChild(const std::function<std::string()>& task, const ChildLimits& limits);

} // namespace tessarin::viewer
