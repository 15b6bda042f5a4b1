#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace tessarin::viewer {

/// Notices when a file is saved, in place or by a new file that takes its name.
class DocumentWatch {
public:
    /// The file may be missing.
    explicit DocumentWatch(std::filesystem::path file);

    /// True once for each time the file was saved since the last call, and at first if it is there.
    bool takeChange();

    const std::filesystem::path& getFile() const { return file; }

private:
    struct State {
        std::filesystem::file_time_type time;
        std::uintmax_t size;
    };

    std::filesystem::path file;
    std::optional<State> last;
};

} // namespace tessarin::viewer
