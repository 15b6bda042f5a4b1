#pragma once

#include <xml_parser/XMLNodeCreator.h>

#include <filesystem>

namespace tessarin::viewer {

/// Reads a whole XML file into a tree as agents' documents are read, and reports what is wrong with it to its caller
/// alone: nothing is logged.
class QuietReader : public xml_parser::XMLNodeCreator {
public:
    /// @throws ViewerError that names the file, and the line and column where there is one.
    explicit QuietReader(const std::filesystem::path& file);
};

/// @throws ViewerError if there is no such file, or no regular one.
void requireFile(const std::filesystem::path& file);

} // namespace tessarin::viewer
