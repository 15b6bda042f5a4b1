#include <viewer/DocumentWatch.h>

#include <unistd.h>

#include <utility>

namespace tessarin::viewer {

bool DocumentWatch::State::operator==(const State& other) const {
    return time.tv_sec == other.time.tv_sec && time.tv_nsec == other.time.tv_nsec && size == other.size &&
           number == other.number && isReadable == other.isReadable;
}

DocumentWatch::DocumentWatch(std::filesystem::path watched) : file(std::move(watched)) {}

bool DocumentWatch::takeChange() {
    const std::optional<State> now = look();
    // Missing while it is being replaced.
    if (!now || now == last)
        return false;
    last = now;
    return true;
}

bool DocumentWatch::isThere() const {
    return look().has_value();
}

/// Nothing if there is no such file.
std::optional<DocumentWatch::State> DocumentWatch::look() const {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return State{status.st_mtim, status.st_size, status.st_ino, ::access(file.c_str(), R_OK) == 0};
}

} // namespace tessarin::viewer
