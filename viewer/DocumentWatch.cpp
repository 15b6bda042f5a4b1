#include <viewer/DocumentWatch.h>

#include <system_error>
#include <utility>

namespace tessarin::viewer {

DocumentWatch::DocumentWatch(std::filesystem::path watched) : file(std::move(watched)) {}

bool DocumentWatch::takeChange() {
    std::error_code timeError, sizeError;
    const State now{std::filesystem::last_write_time(file, timeError), std::filesystem::file_size(file, sizeError)};
    // Missing while it is being replaced.
    if (timeError || sizeError || (last && last->time == now.time && last->size == now.size))
        return false;
    last = now;
    return true;
}

} // namespace tessarin::viewer
