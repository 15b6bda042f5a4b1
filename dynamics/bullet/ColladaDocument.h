#pragma once

#include <xml_parser/XMLNode.h>
#include <xml_parser/XMLNodeCreator.h>

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tessarin::dynamics::bullet::collada {

using Element = xml_parser::XMLNode;

/// A COLLADA file as a tree of elements that can be found by their ids, and the place where complaints about it go.
///
/// Tags are compared without a namespace prefix. References lead to elements of the same file only.
class Document {
public:
    enum Voice { LOGGED, SILENT };

    /// @param voice what is silent writes no messages.
    explicit Document(std::string filePath, Voice voice = LOGGED);

    /// Null, with one message, if the file can't be read or isn't COLLADA.
    const Element* load();

    /// What an url or a target like "#id" leads to; the sign may be missing, and the name of this file may stand before
    /// it. Null if there is no such element with the tag asked for. An empty tag fits all.
    const Element* find(std::string_view reference, std::string_view tag = {}) const;

    /// One message at level 300: the element by its tag and what names it, the reason, and the file with the line.
    void complain(const Element& element, const std::string& reason) const;

    /// One message at level 600.
    void tell(const std::string& label, const std::string& text) const;

    const std::string& getPath() const { return path; }

private:
    void indexIds();
    const Element* findId(const std::string& id, std::string_view tag) const;

    std::string path;
    Voice voice;
    xml_parser::XMLNodeCreator reader;
    std::unordered_map<std::string, const Element*> elementsById;
};

std::string_view localTag(const Element& element);

/// The first child with that tag, or null. A null element has no children.
const Element* childOf(const Element* element, std::string_view tag);

std::vector<const Element*> childrenOf(const Element* element, std::string_view tag);

/// All children, in document order.
std::vector<const Element*> childrenOf(const Element* element);

/// The steps of a path of sids such as "./left/wheel", without those that lead nowhere and the sign of a reference.
std::vector<std::string> stepsOf(std::string_view reference);

/// With the "%20" of an URL as the characters that they stand for.
std::string unescaped(std::string_view text);

/// Without white space around it and the sign of a reference at its begin.
std::string_view withoutSign(std::string_view reference);

/// The element's tag with the first of its attributes url, target, body, id, sid and name that it has. If it has none,
/// or a sid, the nearest element around it that has one comes first.
std::string describe(const Element& element);

/// Takes over what a child with that tag says; one that says neither true nor false is complained of.
void readFlag(const Document& document, const Element* parent, std::string_view tag, bool& flag);

/// Of an element with one finite number in it.
std::optional<double> numberIn(const Element* element);

} // namespace tessarin::dynamics::bullet::collada
