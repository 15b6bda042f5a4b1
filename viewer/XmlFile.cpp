#include <viewer/XmlFile.h>

#include <viewer/FileWriter.h>

#include <xml_parser/XMLNode.h>

#include <ostream>

namespace tessarin::viewer {

void writeXmlFile(const xml_parser::XMLNode& root, const std::filesystem::path& file) {
    writeFile(file, [&](std::ostream& stream) {
        stream << "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
        root.printBranch(stream, 0);
        stream << '\n';
    });
}

} // namespace tessarin::viewer
