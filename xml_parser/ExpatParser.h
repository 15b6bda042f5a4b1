#pragma once

#include <xml_parser/AbstractXMLReader.h>

#include <expat.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace tessarin::xml_parser {

/// One run of expat over one document, for an AbstractXMLReader.
///
/// Handlers are called through expat's C code, which no exception may cross: each is caught, stops the run and becomes
/// its result.
class ExpatParser {
public:
    explicit ExpatParser(AbstractXMLReader& reader) : _reader(reader) {}
    ~ExpatParser();

    ExpatParser(const ExpatParser&) = delete;
    ExpatParser& operator=(const ExpatParser&) = delete;

    /// Reads until the source gives nothing more. The source fills in up to a number of bytes and tells how many.
    AbstractXMLReader::Result read(const std::function<std::size_t(char*, std::size_t)>& source);

    const std::string& getReason() const { return _reason; }
    int getLine() const { return _line; }
    int getColumn() const { return _column; }

    /// The line of what is being reported, from 1.
    int getCurrentLine() const;

private:
    /// An element that is open: its name ends _openNames when no further one is open.
    struct OpenElement {
        std::size_t nameBegin;
        int line;
    };

    static void XMLCALL onXmlDeclaration(void* self, const XML_Char* version, const XML_Char* encoding, int standalone);
    static void XMLCALL onStartElement(void* self, const XML_Char* name, const XML_Char** attributes);
    static void XMLCALL onEndElement(void* self, const XML_Char* name);
    static void XMLCALL onCharacters(void* self, const XML_Char* text, int length);
    static void XMLCALL onStartCdata(void* self);
    static void XMLCALL onEndCdata(void* self);
    static void XMLCALL onStartDoctype(void* self, const XML_Char* name, const XML_Char* systemId,
                                       const XML_Char* publicId, int hasInternalSubset);
    static void XMLCALL onEntityDeclaration(void* self, const XML_Char* name, int isParameterEntity,
                                            const XML_Char* value, int valueLength, const XML_Char* base,
                                            const XML_Char* systemId, const XML_Char* publicId,
                                            const XML_Char* notation);
    static void XMLCALL onSkippedEntity(void* self, const XML_Char* name, int isParameterEntity);

    template <typename Call>
    static void guarded(void* self, const Call& call) noexcept;

    bool createParser();
    void startElement(const XML_Char* name, const XML_Char** attributes);
    void addCharacters(const XML_Char* text, std::size_t length);
    void passTextOn(bool isBlankKept);
    std::string getSourceOfEvent() const;
    std::string getSource(int count) const;
    std::string findUnknownEntity() const;
    AbstractXMLReader::Result finishWithExpatError();
    std::string describeError(XML_Error error) const;
    std::string describeInnermost() const;
    void stop(AbstractXMLReader::Result result, const char* reason) noexcept;

    AbstractXMLReader& _reader;
    XML_Parser _parser = nullptr;

    std::vector<OpenElement> _open;
    std::string _openNames;
    std::string _encoding;
    bool _isAfterStartTag = false;
    bool _isInCdata = false;
    bool _hasDoctype = false;

    // The characters since the last tag, and whether any of them is more than layout.
    std::string _text;
    bool _isSignificant = false;

    AbstractXMLReader::Result _result = AbstractXMLReader::SUCCESS;
    std::string _reason;
    int _line = 0;
    int _column = 0;
};

} // namespace tessarin::xml_parser
