#include <xml_parser/AbstractXMLReader.h>
#include <xml_parser/ExpatParser.h>

#include <logging/Log.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <istream>
#include <stdexcept>
#include <system_error>

namespace tessarin::xml_parser {

namespace {

using logging::Logger;

log4cpp::Category* const category = Logger::instance()->getCategory("xml", true);

/// Reads past the stream's state and its exception mask, which are the host's.
std::size_t readFrom(std::istream& stream, char* buffer, std::size_t size) {
    try {
        return static_cast<std::size_t>(stream.rdbuf()->sgetn(buffer, static_cast<std::streamsize>(size)));
    } catch (const std::exception& exception) {
        throw std::runtime_error(std::string("cannot be read: ") + exception.what());
    }
}

void open(std::ifstream& file, const std::string& path) {
    errno = 0;
    file.open(path, std::ios_base::binary);
    if (!file) {
        throw std::runtime_error("cannot be opened: " + std::generic_category().message(errno));
    }
}

} // namespace

AbstractXMLReader::AbstractXMLReader() = default;

AbstractXMLReader::~AbstractXMLReader() = default;

void AbstractXMLReader::setMaxDepth(int depth) {
    _maxDepth = std::max(depth, 1);
}

int AbstractXMLReader::parse(std::istream& stream) {
    const int result = parseSource(
        [&stream](char* buffer, std::size_t size) {
            if (!stream.rdbuf() || stream.fail()) {
                throw std::runtime_error("cannot be read: the stream has failed before");
            }
            return readFrom(stream, buffer, size);
        },
        _sourceName);
    try {
        stream.setstate(result == UNREADABLE ? std::ios_base::badbit : std::ios_base::eofbit);
    } catch (const std::ios_base::failure&) {
        // The host's exception mask speaks here; the state is set all the same.
    }
    return result;
}

int AbstractXMLReader::parse(const std::string& textOrPath, bool isText) {
    return isText ? parseText(textOrPath) : parseFile(textOrPath);
}

int AbstractXMLReader::parseText(const std::string& text) {
    std::size_t position = 0;
    return parseSource(
        [&text, &position](char* buffer, std::size_t size) {
            const std::size_t count = text.copy(buffer, size, position);
            position += count;
            return count;
        },
        _sourceName);
}

int AbstractXMLReader::parseFile(const std::string& path) {
    std::ifstream file;
    return parseSource(
        [&path, &file](char* buffer, std::size_t size) {
            if (!file.is_open()) {
                open(file, path);
            }
            return readFrom(file, buffer, size);
        },
        path);
}

int AbstractXMLReader::parseSource(const Source& source, const std::string& name) noexcept {
    int result = ABORTED;
    try {
        result = readDocument(source, name);
    } catch (const std::exception& exception) {
        setReason(exception.what());
    } catch (...) {
        setReason("exception while reading");
    }
    _parser = nullptr;
    try {
        endDocument(result == SUCCESS);
    } catch (...) {
        result = ABORTED;
        setReason("exception after reading");
    }
    if (result != SUCCESS) {
        TESSARIN_LOG(category, Logger::errorLevel, getErrorMessage());
    }
    return result;
}

int AbstractXMLReader::readDocument(const Source& source, const std::string& name) {
    _errorLine = 0;
    _errorColumn = 0;
    _documentName = name;
    startDocument();
    ExpatParser parser(*this);
    _parser = &parser;
    const int result = parser.read(source);
    _errorReason = parser.getReason();
    _errorLine = parser.getLine();
    _errorColumn = parser.getColumn();
    return result;
}

int AbstractXMLReader::getCurrentLine() const {
    return _parser ? _parser->getCurrentLine() : 0;
}

void AbstractXMLReader::setReason(const char* reason) noexcept {
    try {
        _errorReason = reason;
    } catch (...) {
    }
}

std::string AbstractXMLReader::getErrorMessage() const {
    if (_errorReason.empty()) {
        return std::string();
    }
    if (_errorLine == 0) {
        return (_documentName.empty() ? "XML document" : _documentName) + ": " + _errorReason;
    }
    const std::string line = std::to_string(_errorLine);
    const std::string column = std::to_string(_errorColumn);
    return _errorReason + " (" +
           (_documentName.empty() ? "line " + line + ", column " + column : _documentName + ':' + line + ':' + column) +
           ')';
}

} // namespace tessarin::xml_parser
