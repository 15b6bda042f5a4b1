#include <dynamics/bullet/BodyNames.h>

#include <dynamics/bullet/ColladaNodes.h>

#include <string>
#include <unordered_map>
#include <unordered_set>

namespace tessarin::dynamics::bullet::collada {

namespace {

using Names = std::unordered_set<std::string>;

/// The names of all nodes of the file, as the plugin gives them.
Names namesOfNodes(const Element& root) {
    Names names;
    std::vector<const Element*> open = {&root};
    while (!open.empty()) {
        const Element* const element = open.back();
        open.pop_back();
        if (localTag(*element) == "node")
            names.insert(Nodes::nameOf(*element));
        for (int i = 0; i < element->getNumChildren(); ++i)
            open.push_back(element->getChild(i));
    }
    return names;
}

} // namespace

void makeNamesDiffer(const Document& document, const Element& root, std::vector<BodyInstance>& bodies) {
    Names given;
    std::vector<BodyInstance*> further;
    for (BodyInstance& body : bodies) {
        if (!given.insert(body.name).second)
            further.push_back(&body);
    }
    if (further.empty())
        return;
    Names used = namesOfNodes(root);
    used.insert(given.begin(), given.end());
    std::unordered_map<std::string, int> numbers;
    for (BodyInstance* const body : further) {
        const std::string shared = body->name;
        body->name = body->nodeId;
        int& number = numbers.emplace(shared, 1).first->second;
        while (body->name.empty() || !used.insert(body->name).second)
            body->name = shared + " " + std::to_string(++number);
        document.tell(body->label,
                      "the name '" + shared + "' is that of another body: this one is called '" + body->name + "'");
    }
}

} // namespace tessarin::dynamics::bullet::collada
