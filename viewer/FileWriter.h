#pragma once

#include <filesystem>
#include <functional>
#include <iosfwd>

namespace tessarin::viewer {

/// Writes a file whole or not at all: into a new file beside it, which takes its name once it is complete. What stood
/// there before is kept if that fails. Links lead where they led; owner and permissions stay.
///
/// What can't be replaced like that is written in place: devices and pipes, a file with several names, one that belongs
/// to somebody else, one in a folder that takes no new files. The program's own standard output is written in its turn.
/// @param print may be called twice.
/// @throws ViewerError if the file can't be written.
void writeFile(const std::filesystem::path& file, const std::function<void(std::ostream&)>& print);

} // namespace tessarin::viewer
