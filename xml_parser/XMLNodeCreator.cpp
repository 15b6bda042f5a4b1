#include <xml_parser/XMLNode.h>
#include <xml_parser/XMLNodeCreator.h>
#include <xml_parser/XMLText.h>

#include <utility>

namespace tessarin::xml_parser {

XMLNodeCreator::XMLNodeCreator() = default;

XMLNodeCreator::~XMLNodeCreator() = default;

XMLNode* XMLNodeCreator::getRoot() const {
    return _current ? nullptr : _root.get();
}

void XMLNodeCreator::startDocument() {
    _root.reset();
    _current = nullptr;
    _source = getDocumentName().empty() ? nullptr : std::make_shared<const std::string>(getDocumentName());
}

void XMLNodeCreator::startElement(std::string tag, Attributes attributes) {
    auto node = std::make_unique<XMLNode>(std::string(), _current);
    node->tag = std::move(tag);
    node->attributes = std::move(attributes);
    node->_source = _source;
    node->_line = getCurrentLine();
    XMLNode* const element = node.get();
    if (_current) {
        _current->addChild(node.get());
        static_cast<void>(node.release());
    } else {
        _root = std::move(node);
    }
    _current = element;
}

void XMLNodeCreator::characters(const std::string& text) {
    _current->text += text;
}

void XMLNodeCreator::endElement() {
    XMLNode* const node = _current;
    if (node == _root.get()) {
        _current = nullptr;
        return;
    }
    XMLNode* const parent = node->getParent();
    _current = parent;
    if (!node->attributes.empty() || node->getNumChildren() > 0) {
        return;
    }
    const bool isPruned = _pruneEmptyTags && isBlank(node->text);
    if (isPruned ||
        (_createAttributes && !node->text.empty() && parent->attributes.emplace(node->tag, node->text).second)) {
        delete node;
    }
}

void XMLNodeCreator::endDocument(bool success) {
    if (!success) {
        _root.reset();
        _current = nullptr;
    }
}

} // namespace tessarin::xml_parser
