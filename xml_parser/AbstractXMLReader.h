#pragma once

#include <xml_parser/Export.h>

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <map>
#include <string>

namespace tessarin::xml_parser {

class ExpatParser;

/// Reads an XML document piece by piece and hands its elements and texts to a derived class, in document order.
///
/// Documents are UTF-8, UTF-16, Latin-1 or ASCII, by their declaration; what is handed on is UTF-8. White space that
/// only lays out a document, that is white space alone between two tags in an element that has child elements, is left
/// out. White space written as character references or in a CDATA section is always text, and so is that of an element
/// without child elements.
///
/// A document that is nested too deep or that declares entities is refused, and of a document type declaration nothing
/// is fetched and no default value is taken, so no more text is handed on than the document holds. A failure is logged
/// as one line at level 300 in the category "xml" and can be asked for afterwards. Nothing is thrown by parse(),
/// whatever the stream's exception mask says and whatever a derived class throws.
class TESSARIN_XML_PARSER_EXPORT AbstractXMLReader {
public:
    using Attributes = std::map<std::string, std::string>;

    /// The values of parse().
    enum Result : int {
        SUCCESS = 0,
        MALFORMED = 1,  ///< not well formed, or in an unknown encoding
        REFUSED = 2,    ///< nested too deep, or with entities
        UNREADABLE = 3, ///< the file doesn't open, or the stream fails
        ABORTED = 4     ///< out of memory, or an exception of the derived class
    };

    static constexpr int defaultMaxDepth = 1000;

    virtual ~AbstractXMLReader();

    AbstractXMLReader(const AbstractXMLReader&) = delete;
    AbstractXMLReader& operator=(const AbstractXMLReader&) = delete;

    /// Reads one document, which reaches to the end of the stream. The stream is at its end afterwards, or where
    /// reading failed.
    int parse(std::istream& stream);

    /// With isText true the string is the document's text, else the path of a file.
    int parse(const std::string& textOrPath, bool isText);

    /// How many elements may stand inside each other. At least 1.
    void setMaxDepth(int depth);
    int getMaxDepth() const { return _maxDepth; }

    /// Names the document of a stream or a text in messages. A file is named by its path.
    void setSourceName(const std::string& name) { _sourceName = name; }

    /// What was wrong with the last document: "reason (file:3:14)" by name, line and column, or "reason (line 3, column
    /// 14)" for a document without a name. Where there is no place: "file: reason". Empty after success.
    std::string getErrorMessage() const;

    /// What was wrong, without the place.
    const std::string& getErrorReason() const { return _errorReason; }

    /// From 1; 0 if there is no error, or none with a place.
    int getErrorLine() const { return _errorLine; }
    int getErrorColumn() const { return _errorColumn; }

protected:
    AbstractXMLReader();

    /// The name of the document that is being read or was read last: setSourceName's or the file's path.
    const std::string& getDocumentName() const { return _documentName; }

    /// Inside startElement(): the line of the element's start tag, from 1.
    int getCurrentLine() const;

    /// Before anything else of a document.
    virtual void startDocument() {}
    virtual void startElement(std::string tag, Attributes attributes) = 0;
    /// Part of the text of the element that is open.
    virtual void characters(const std::string& text) = 0;
    virtual void endElement() = 0;
    /// After everything else, also where reading has failed in between and elements are still open.
    virtual void endDocument(bool success) = 0;

private:
    friend class ExpatParser;
    using Source = std::function<std::size_t(char*, std::size_t)>;

    int parseSource(const Source& source, const std::string& name) noexcept;
    int parseText(const std::string& text);
    int parseFile(const std::string& path);
    int readDocument(const Source& source, const std::string& name);
    void setReason(const char* reason) noexcept;

    const ExpatParser* _parser = nullptr;
    int _maxDepth = defaultMaxDepth;
    std::string _sourceName;
    std::string _documentName;
    std::string _errorReason;
    int _errorLine = 0;
    int _errorColumn = 0;
};

} // namespace tessarin::xml_parser
