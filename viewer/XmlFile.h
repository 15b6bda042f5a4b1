#pragma once

#include <filesystem>

namespace tessarin::xml_parser {
class XMLNode;
}

namespace tessarin::viewer {

/// Writes a branch as an XML file.
/// @throws ViewerError if the file can't be written.
void writeXmlFile(const xml_parser::XMLNode& root, const std::filesystem::path& file);

} // namespace tessarin::viewer
