#include <dynamics/bullet/ColladaDocument.h>

#include <dynamics/bullet/ColladaNumbers.h>
#include <dynamics/bullet/DynamicsLog.h>

#include <charconv>
#include <filesystem>
#include <utility>

namespace tessarin::dynamics::bullet::collada {

namespace {

/// No id has a blank in it.
std::string keyOf(std::string_view tag, std::string_view id) {
    return std::string(tag).append(" ").append(id);
}

/// The nearest element around this one that has attributes, the root excepted.
std::string describeAround(const Element& element) {
    const Element* around = element.getParent();
    while (around && around->attributes.empty()) {
        around = around->getParent();
    }
    return around && around->getParent() ? describe(*around) + " " : std::string();
}

std::string nameOfFile(const std::string& path) {
    const std::size_t separator = path.find_last_of("/\\");
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

} // namespace

Document::Document(std::string filePath, Voice newVoice) : path(std::move(filePath)), voice(newVoice) {
    reader.setPruneEmptyTags(false);
    reader.setCreateAttributesFromPrimitiveChildren(false);
}

const Element* Document::load() {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        // Reading from a pipe or a device might never end.
        if (voice == LOGGED)
            TESSARIN_LOG(logCategory(), logging::Logger::errorLevel,
                         "no physics read from '" << path << "': it is no regular file");
        return nullptr;
    }
    if (reader.parse(path, false) != xml_parser::AbstractXMLReader::SUCCESS || !reader.getRoot()) {
        if (voice == LOGGED)
            TESSARIN_LOG(logCategory(), logging::Logger::errorLevel,
                         "no physics read from '" << path << "': " << reader.getErrorMessage());
        return nullptr;
    }
    const Element* root = reader.getRoot();
    if (localTag(*root) != "COLLADA") {
        complain(*root, "is no COLLADA document, no physics read");
        return nullptr;
    }
    indexIds();
    return root;
}

void Document::indexIds() {
    std::vector<const Element*> open = {reader.getRoot()};
    while (!open.empty()) {
        const Element* element = open.back();
        open.pop_back();
        const auto id = element->attributes.find("id");
        if (id != element->attributes.end()) {
            // Under its tag too: not every exporter keeps the ids of a node and of its geometry apart.
            elementsById.emplace(id->second, element);
            elementsById.emplace(keyOf(localTag(*element), id->second), element);
        }
        // Reversed, so that elements come in document order and the first of two with one id wins.
        for (int i = element->getNumChildren() - 1; i >= 0; --i) {
            open.push_back(element->getChild(i));
        }
    }
}

const Element* Document::findId(const std::string& id, std::string_view tag) const {
    const auto found = elementsById.find(tag.empty() ? id : keyOf(tag, id));
    return found == elementsById.end() ? nullptr : found->second;
}

const Element* Document::find(std::string_view reference, std::string_view tag) const {
    std::string_view id = trimmed(reference);
    const std::size_t sign = id.find('#');
    if (sign != std::string_view::npos) {
        const std::string_view file = id.substr(0, sign);
        if (!file.empty() && nameOfFile(unescaped(file)) != nameOfFile(path)) {
            return nullptr;
        }
        id.remove_prefix(sign + 1);
    }
    const Element* asItStands = findId(std::string(id), tag);
    return asItStands ? asItStands : findId(unescaped(id), tag);
}

void Document::complain(const Element& element, const std::string& reason) const {
    if (voice == LOGGED)
        TESSARIN_LOG(logCategory(), logging::Logger::errorLevel,
                     describe(element) << ": " << reason << " (" << element.getPlace() << ')');
}

void Document::tell(const std::string& label, const std::string& text) const {
    if (voice == LOGGED)
        TESSARIN_LOG(logCategory(), logging::Logger::infoLevel, path << ": " << label << ": " << text);
}

std::string_view localTag(const Element& element) {
    const std::string_view tag = element.tag;
    const std::size_t colon = tag.rfind(':');
    return colon == std::string_view::npos ? tag : tag.substr(colon + 1);
}

const Element* childOf(const Element* element, std::string_view tag) {
    const int count = element ? element->getNumChildren() : 0;
    for (int i = 0; i < count; ++i) {
        if (localTag(*element->getChild(i)) == tag) {
            return element->getChild(i);
        }
    }
    return nullptr;
}

std::vector<const Element*> childrenOf(const Element* element, std::string_view tag) {
    std::vector<const Element*> result;
    const int count = element ? element->getNumChildren() : 0;
    for (int i = 0; i < count; ++i) {
        if (tag.empty() || localTag(*element->getChild(i)) == tag) {
            result.push_back(element->getChild(i));
        }
    }
    return result;
}

std::vector<const Element*> childrenOf(const Element* element) {
    return childrenOf(element, {});
}

std::vector<std::string> stepsOf(std::string_view reference) {
    std::vector<std::string> steps;
    std::string_view rest = trimmed(reference);
    while (!rest.empty()) {
        const std::string_view step = rest.substr(0, rest.find_first_of("#/"));
        rest.remove_prefix(step.size() < rest.size() ? step.size() + 1 : step.size());
        if (!step.empty() && step != ".") {
            steps.emplace_back(step);
        }
    }
    return steps;
}

std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char code = 0;
        const char* const digits = text.data() + i + 1;
        const bool isEscape = text[i] == '%' && i + 2 < text.size();
        if (isEscape && std::from_chars(digits, digits + 2, code, 16).ptr == digits + 2) {
            result += static_cast<char>(code);
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

std::string_view withoutSign(std::string_view reference) {
    const std::string_view text = trimmed(reference);
    return text.substr(!text.empty() && text[0] == '#' ? 1 : 0);
}

std::string describe(const Element& element) {
    for (const char* attribute : {"url", "target", "body", "id", "sid", "name"}) {
        const auto found = element.attributes.find(attribute);
        if (found != element.attributes.end()) {
            const std::string self = "<" + element.tag + " " + attribute + "=\"" + found->second + "\">";
            // A sid says which one it is only within what is around it.
            return attribute == std::string_view("sid") ? describeAround(element) + self : self;
        }
    }
    return describeAround(element) + "<" + element.tag + ">";
}

void readFlag(const Document& document, const Element* parent, std::string_view tag, bool& flag) {
    const Element* element = childOf(parent, tag);
    const std::optional<bool> value = element ? readBool(element->text) : std::nullopt;
    if (element && !value) {
        document.complain(*element, "is neither true nor false and is left out");
    }
    flag = value.value_or(flag);
}

std::optional<double> numberIn(const Element* element) {
    std::array<double, 1> number{};
    if (!element || !readNumbers(element->text, number)) {
        return std::nullopt;
    }
    return number[0];
}

} // namespace tessarin::dynamics::bullet::collada
