#pragma once

#include <xml_parser/XMLNodeCreator.h>

#include <istream>
#include <string>

namespace tessarin::agent {

/// Reads one agent document: every element stays an element, empty ones and those that hold only text included.
class DocumentReader {
public:
    /// @param sourceName names the document in messages; empty for one without a name.
    explicit DocumentReader(const std::string& sourceName = {}) {
        creator.setSourceName(sourceName);
        creator.setPruneEmptyTags(false);
        creator.setCreateAttributesFromPrimitiveChildren(false);
    }

    /// The root of the document, which goes with the reader; null if the text is no document.
    /// @{
    xml_parser::XMLNode* read(std::istream& stream) {
        creator.parse(stream);
        return creator.getRoot();
    }

    xml_parser::XMLNode* read(const std::string& text) {
        creator.parse(text, true);
        return creator.getRoot();
    }
    /// @}

private:
    xml_parser::XMLNodeCreator creator;
};

} // namespace tessarin::agent
