#include <viewer/PictureCheck.h>

#include <viewer/ViewerError.h>

#include <xml_parser/XMLNode.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <unordered_map>
#include <vector>

namespace tessarin::viewer {

using xml_parser::XMLNode;

namespace {

struct Size {
    double nodes = 0;
    double triangles = 0;
    int levels = 0;
    bool isWhole = false; // and not still being added up
};

bool isPrimitive(const std::string& tag) {
    for (const char* const known : {"triangles", "trifans", "tristrips", "polygons", "polylist", "lines", "linestrips"})
        if (tag == known)
            return true;
    return false;
}

double countWords(const std::string& text) {
    double words = 0;
    bool isWord = false;
    for (const char c : text) {
        const bool wasWord = isWord;
        isWord = static_cast<unsigned char>(c) > ' ';
        words += isWord && !wasWord ? 1 : 0;
    }
    return words;
}

int offsetOf(const XMLNode& input) {
    constexpr long most = 100;
    return static_cast<int>(std::clamp(std::strtol(input.getAttributeValue("offset").c_str(), nullptr, 10), 0L, most));
}

/// As many as there are at most: each corner of a polygon begins one triangle.
double countTriangles(const XMLNode& primitive) {
    double words = 0;
    int stride = 1;
    for (int i = 0; i < primitive.getNumChildren(); ++i) {
        const XMLNode& child = *primitive.getChild(i);
        if (child.tag == "input")
            stride = std::max(stride, offsetOf(child) + 1);
        else if (child.tag == "p")
            words += countWords(child.text);
    }
    return words / stride / (primitive.tag == "triangles" ? 3 : 1);
}

class Counter {
public:
    explicit Counter(const XMLNode& root) { collectIds(root); }

    /// Each element is counted once, however often it is instanced.
    void count(const XMLNode& root) {
        std::vector<const XMLNode*> open = {&root};
        while (!open.empty()) {
            const XMLNode& element = *open.back();
            const auto [place, isNew] = sizes.emplace(&element, Size());
            const std::vector<const XMLNode*> parts = partsOf(element);
            if (!isNew) {
                if (!place->second.isWhole)
                    place->second = addUp(element, parts);
                open.pop_back();
                continue;
            }
            for (const XMLNode* part : parts) {
                const auto known = sizes.find(part);
                if (known == sizes.end())
                    open.push_back(part);
                else if (!known->second.isWhole)
                    throw ViewerError("the " + part->tag + " " + part->getAttributeValue("id") + " contains itself");
            }
        }
    }

    Size getSize(const XMLNode& element) const { return sizes.at(&element); }

private:
    void collectIds(const XMLNode& element) {
        if (const std::string id = element.getAttributeValue("id"); !id.empty())
            elements.emplace(element.tag + "#" + id, &element);
        for (int i = 0; i < element.getNumChildren(); ++i)
            collectIds(*element.getChild(i));
    }

    /// What an element holds, by itself or by a reference.
    std::vector<const XMLNode*> partsOf(const XMLNode& element) const {
        std::vector<const XMLNode*> parts;
        parts.reserve(static_cast<std::size_t>(element.getNumChildren()) + 1);
        for (int i = 0; i < element.getNumChildren(); ++i)
            parts.push_back(element.getChild(i));
        constexpr const char* references[][3] = {{"instance_node", "url", "node"},
                                                 {"instance_geometry", "url", "geometry"},
                                                 {"instance_controller", "url", "controller"},
                                                 {"skin", "source", "geometry"},
                                                 {"morph", "source", "geometry"}};
        for (const auto& [tag, attribute, target] : references)
            if (element.tag == tag)
                if (const auto found = elements.find(target + element.getAttributeValue(attribute));
                    found != elements.end())
                    parts.push_back(found->second);
        return parts;
    }

    Size addUp(const XMLNode& element, const std::vector<const XMLNode*>& parts) const {
        Size size;
        for (const XMLNode* part : parts) {
            const Size& below = sizes.at(part);
            size.nodes += below.nodes;
            size.triangles += below.triangles;
            size.levels = std::max(size.levels, below.levels);
        }
        const bool isNode = element.tag == "node";
        size.nodes += isNode ? 1 : 0;
        size.levels += isNode ? 1 : 0;
        size.triangles += isPrimitive(element.tag) ? countTriangles(element) : 0;
        size.isWhole = true;
        return size;
    }

    std::unordered_map<std::string, const XMLNode*> elements;
    std::unordered_map<const XMLNode*, Size> sizes;
};

} // namespace

void checkPicture(const XMLNode& root, const ModelLimits& limits) {
    Counter counter(root);
    counter.count(root);
    for (int i = 0; i < root.getNumChildren(); ++i) {
        const XMLNode& library = *root.getChild(i);
        for (int k = 0; library.tag == "library_visual_scenes" && k < library.getNumChildren(); ++k) {
            const Size size = counter.getSize(*library.getChild(k));
            limits.check(size.nodes, size.triangles, size.levels);
        }
    }
}

} // namespace tessarin::viewer
