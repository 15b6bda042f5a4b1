#pragma once

#include <xml_parser/Export.h>

#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tessarin::xml_parser {

/// One element of an XML document: its tag, its attributes, its character content and its child elements in order.
///
/// All strings are UTF-8. The text is the element's whole character content as one string: where it stood between the
/// children isn't kept.
///
/// A node owns the children that were added to it: deleting a node frees its whole branch, however deep, without
/// recursion, and takes the node out of the children of its parent. Nodes are not copied.
class TESSARIN_XML_PARSER_EXPORT XMLNode {
public:
    std::string tag;
    std::string text;
    std::map<std::string, std::string> attributes;

    /// The parent, which may be null, is only what getParent() tells until addChild() has made the node a child: the
    /// parent doesn't know of the node before, and doesn't free it.
    XMLNode(const std::string& elementTag, XMLNode* parent);
    ~XMLNode();

    XMLNode(const XMLNode&) = delete;
    XMLNode& operator=(const XMLNode&) = delete;

    /// Appends a node that was made with new, and owns it from then on. A node that has a parent already moves here.
    /// Null, this node itself and a node above this one change nothing and stay the caller's.
    void addChild(XMLNode* child);

    /// Makes a node, appends it and returns it. It belongs to this node.
    XMLNode* addChild(const std::string& childTag);

    int getNumChildren() const;

    /// The child at an index from 0, in document order; null for any other index.
    XMLNode* getChild(int index) const;

    /// The first direct child with that tag, null if there is none. With exact false, upper and lower case ASCII
    /// letters count as equal.
    XMLNode* getChild(const std::string& childTag, bool exact) const;

    XMLNode* getParent() const { return _parent; }

    /// The line of the element's start tag in the document that it was read from, from 1. 0 for a node that a program
    /// has made.
    int getLine() const { return _line; }

    /// Where the element stands, for messages: "crane.xml:17", or "line 17" if nobody has named the document. Empty for
    /// a node that a program has made.
    std::string getPlace() const;

    /// Gives a node that stands for an element of a document, a copy for example, that element's place.
    void setPlaceOf(const XMLNode& element);

    /// Empty also if the attribute is missing.
    std::string getAttributeValue(const std::string& name) const;

    /// False, with the value left as it was, if the attribute is missing.
    bool getAttributeValueString(const std::string& name, std::string& value) const;

    /// Prints the branch as XML in UTF-8 without a declaration: one element a line, indented by two blanks a level, the
    /// first one by indent levels. An XMLNodeCreator that neither prunes nor makes attributes reads the same tags,
    /// texts, attributes and order of children back.
    ///
    /// What XML cannot hold is replaced, with one line at level 300 for the whole call: in texts and attribute values,
    /// control characters other than tab, line feed and carriage return, U+FFFE, U+FFFF and each byte that is not part
    /// of valid UTF-8 by U+FFFD; in tags and names of attributes, each character that no XML name has there by '_'.
    ///
    /// A branch that is deeper than readers take (AbstractXMLReader::defaultMaxDepth) is printed too, with a line at
    /// level 300.
    void printBranch(std::ostream& stream, int indent) const;

private:
    friend class XMLNodeCreator;

    void detach();
    bool isBelow(const XMLNode* node) const;

    std::vector<XMLNode*> _children;
    XMLNode* _parent;
    std::shared_ptr<const std::string> _source; // one for all nodes of a document
    int _line = 0;
    bool _isOwned = false;
};

} // namespace tessarin::xml_parser
