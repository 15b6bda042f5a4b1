#pragma once

#include <xml_parser/AbstractXMLReader.h>
#include <xml_parser/Export.h>

#include <memory>
#include <string>

namespace tessarin::xml_parser {

class XMLNode;

/// Reads a document into a tree of XMLNode, each of which knows its place in the document.
///
/// The tree takes memory in proportion to the document's text: about seven times as much for an ordinary agent
/// document, and about fifty times for one that is nothing but empty elements with short tags.
///
/// Two settings simplify the tree; both are on until they are switched off. Pruning leaves out elements without
/// content: no attributes, no child elements left, nothing but white space as text. After that, an element that holds
/// only text becomes an attribute of its parent, by its tag, unless the parent has an attribute of that name already.
/// The root always stays an element.
class TESSARIN_XML_PARSER_EXPORT XMLNodeCreator : public AbstractXMLReader {
public:
    XMLNodeCreator();
    ~XMLNodeCreator() override;

    void setPruneEmptyTags(bool prune) { _pruneEmptyTags = prune; }
    void setCreateAttributesFromPrimitiveChildren(bool create) { _createAttributes = create; }

    /// The root of the document, null if nothing was read or the last document was not read to its end. The tree
    /// belongs to the reader, until the reader goes or reads again.
    XMLNode* getRoot() const;

protected:
    void startDocument() override;
    void startElement(std::string tag, Attributes attributes) override;
    void characters(const std::string& text) override;
    void endElement() override;
    void endDocument(bool success) override;

private:
    bool _pruneEmptyTags = true;
    bool _createAttributes = true;
    std::unique_ptr<XMLNode> _root;
    XMLNode* _current = nullptr;
    std::shared_ptr<const std::string> _source;
};

} // namespace tessarin::xml_parser
