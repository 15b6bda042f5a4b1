#include <xml_parser/XMLNode.h>
#include <xml_parser/XMLPrinter.h>

#include <algorithm>
#include <iterator>
#include <memory>

namespace tessarin::xml_parser {

namespace {

char toLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool equalsIgnoringCase(const std::string& a, const std::string& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return toLower(x) == toLower(y); });
}

} // namespace

XMLNode::XMLNode(const std::string& elementTag, XMLNode* parent) : tag(elementTag), _parent(parent) {}

XMLNode::~XMLNode() {
    detach();
    // From leaf to leaf, on the nodes' own links: a branch may be deeper than any stack, and memory may be short.
    XMLNode* node = this;
    while (node != this || !_children.empty()) {
        if (!node->_children.empty()) {
            node = node->_children.back();
            continue;
        }
        XMLNode* parent = node->_parent;
        parent->_children.pop_back();
        node->_isOwned = false;
        delete node;
        node = parent;
    }
}

void XMLNode::detach() {
    if (!_isOwned) {
        return;
    }
    std::vector<XMLNode*>& siblings = _parent->_children;
    siblings.erase(std::next(std::find(siblings.rbegin(), siblings.rend(), this)).base());
    _isOwned = false;
}

bool XMLNode::isBelow(const XMLNode* node) const {
    for (const XMLNode* above = this; above->_isOwned; above = above->_parent) {
        if (above->_parent == node) {
            return true;
        }
    }
    return false;
}

void XMLNode::addChild(XMLNode* child) {
    // Only a node with children can be above this one, so building a branch from its top costs no walks.
    if (!child || child == this || (!child->_children.empty() && isBelow(child))) {
        return;
    }
    child->detach();
    _children.push_back(child);
    child->_parent = this;
    child->_isOwned = true;
}

XMLNode* XMLNode::addChild(const std::string& childTag) {
    auto child = std::make_unique<XMLNode>(childTag, this);
    addChild(child.get());
    return child.release();
}

int XMLNode::getNumChildren() const {
    return static_cast<int>(_children.size());
}

XMLNode* XMLNode::getChild(int index) const {
    return index >= 0 && index < getNumChildren() ? _children[static_cast<std::size_t>(index)] : nullptr;
}

XMLNode* XMLNode::getChild(const std::string& childTag, bool exact) const {
    for (XMLNode* child : _children) {
        if (exact ? child->tag == childTag : equalsIgnoringCase(child->tag, childTag)) {
            return child;
        }
    }
    return nullptr;
}

std::string XMLNode::getAttributeValue(const std::string& name) const {
    const auto attribute = attributes.find(name);
    return attribute == attributes.end() ? std::string() : attribute->second;
}

bool XMLNode::getAttributeValueString(const std::string& name, std::string& value) const {
    const auto attribute = attributes.find(name);
    if (attribute == attributes.end()) {
        return false;
    }
    value = attribute->second;
    return true;
}

std::string XMLNode::getPlace() const {
    if (_line == 0) {
        return std::string();
    }
    return (_source ? *_source + ':' : "line ") + std::to_string(_line);
}

void XMLNode::setPlaceOf(const XMLNode& element) {
    _source = element._source;
    _line = element._line;
}

void XMLNode::printBranch(std::ostream& stream, int indent) const {
    XMLPrinter(stream).print(*this, indent);
}

} // namespace tessarin::xml_parser
