#pragma once

#include <set>
#include <string>

namespace tessarin::xml_parser {
class XMLNode;
}

namespace tessarin::agent {

/// One document on its way into agents: what a host asks for by one call. Where a creation hands over to a
/// modification, elements are read twice; this remembers which of them have had their faults told.
class DocumentPass {
public:
    DocumentPass();
    ~DocumentPass();
    DocumentPass(const DocumentPass&) = delete;
    DocumentPass& operator=(const DocumentPass&) = delete;

    /// True for the first fault of an element in the innermost pass.
    static bool isNewFault(const xml_parser::XMLNode& element);

private:
    DocumentPass* outer;
    std::set<const xml_parser::XMLNode*> faulty;
};

/// The element that is being carried out, for the messages about whatever it sets off.
class ElementInWork {
public:
    explicit ElementInWork(const xml_parser::XMLNode& element);
    ~ElementInWork();
    ElementInWork(const ElementInWork&) = delete;
    ElementInWork& operator=(const ElementInWork&) = delete;

private:
    const xml_parser::XMLNode* outer;
};

/// The end of a message about an element, " (crane.xml:17)"; empty if the element is of no document.
std::string placeOf(const xml_parser::XMLNode& element);

/// The same for the element in work; empty if there is none.
std::string placeInWork();

/// Puts the place of the element in work into the nested diagnostic context, for messages whose words are fixed.
class PlaceAsContext {
public:
    PlaceAsContext();
    ~PlaceAsContext();
    PlaceAsContext(const PlaceAsContext&) = delete;
    PlaceAsContext& operator=(const PlaceAsContext&) = delete;

private:
    bool isPushed;
};

} // namespace tessarin::agent
