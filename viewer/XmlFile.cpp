#include <viewer/XmlFile.h>

#include <viewer/ViewerError.h>

#include <xml_parser/XMLNode.h>

#include <cerrno>
#include <cstring>
#include <fstream>

namespace tessarin::viewer {

void writeXmlFile(const xml_parser::XMLNode& root, const std::filesystem::path& file) {
    errno = 0;
    std::ofstream stream(file, std::ios::binary);
    if (stream) {
        stream << "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
        root.printBranch(stream, 0);
        stream << '\n';
        stream.flush();
    }
    if (!stream)
        throw ViewerError(file.string() + ": can't be written" +
                          (errno != 0 ? std::string(": ") + std::strerror(errno) : std::string()));
}

} // namespace tessarin::viewer
