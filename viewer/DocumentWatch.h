#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <optional>

namespace tessarin::viewer {

/// Notices when a file is saved, in place or by a new file that takes its name.
class DocumentWatch {
public:
    /// The file may be missing.
    explicit DocumentWatch(std::filesystem::path file);

    /// True once for each time the file was saved, or could be read again, since the last call, and at first if it is
    /// there.
    bool takeChange();

    bool isThere() const;

    const std::filesystem::path& getFile() const { return file; }

private:
    struct State {
        timespec time;
        off_t size;
        ino_t number; // of the file itself, whatever bears its name
        bool isReadable;

        bool operator==(const State& other) const;
    };

    std::optional<State> look() const;

    std::filesystem::path file;
    std::optional<State> last;
};

} // namespace tessarin::viewer
