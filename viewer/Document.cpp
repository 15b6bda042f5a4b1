#include <viewer/Document.h>

#include <viewer/ModelLoader.h>
#include <viewer/QuietReader.h>
#include <viewer/UnitRotations.h>
#include <viewer/ViewerError.h>
#include <viewer/XmlFile.h>

#include <functional>

namespace tessarin::viewer {

using xml_parser::XMLNode;

namespace {

/// Calls the function with each field that names a model.
void visitModelFields(XMLNode& agent, const std::function<void(XMLNode&)>& visit) {
    for (int i = 0; i < agent.getNumChildren(); ++i) {
        XMLNode* const child = agent.getChild(i);
        if (child->tag == "AgentNode") {
            visitModelFields(*child, visit);
        } else if (child->tag == "Component" && child->getAttributeValue("class") == "VisualModelComponent") {
            for (int k = 0; k < child->getNumChildren(); ++k) {
                XMLNode* const field = child->getChild(k);
                if (field->tag == "field" && field->getAttributeValue("name") == "filePath")
                    visit(*field);
            }
        }
    }
}

void copyBranch(const XMLNode& source, XMLNode& parent) {
    XMLNode* const copy = parent.addChild(source.tag);
    copy->setPlaceOf(source);
    copy->text = source.text;
    copy->attributes = source.attributes;
    for (int i = 0; i < source.getNumChildren(); ++i)
        copyBranch(*source.getChild(i), *copy);
}

void copyPlacement(const XMLNode& source, XMLNode& target) {
    target.setPlaceOf(source);
    const std::string name = source.getAttributeValue("name");
    if (!name.empty())
        target.attributes["name"] = name;
    for (int i = 0; i < source.getNumChildren(); ++i) {
        const XMLNode& child = *source.getChild(i);
        if (child.tag == "Transform") {
            copyBranch(child, target);
        } else if (child.tag == "AgentNode") {
            copyPlacement(child, *target.addChild("AgentNode"));
        } else if (child.tag == "Component") {
            // A component without a name bears that of its class by now.
            const std::string className = child.getAttributeValue("class");
            const std::string given = child.getAttributeValue("name");
            if (className == "GeometryComponent" || given == "RigidBodyComponent") {
                XMLNode* const component = target.addChild("Component");
                component->setPlaceOf(child);
                component->attributes["class"] = className;
                component->attributes["name"] = given.empty() ? className : given;
            }
        }
    }
}

/// The path as seen from the folder if it leads into it, else unchanged.
std::string seenFrom(const std::filesystem::path& folder, const std::string& path) {
    const std::filesystem::path relative = std::filesystem::path(path).lexically_relative(folder);
    return relative.empty() || *relative.begin() == ".." ? path : relative.generic_string();
}

std::filesystem::path folderOf(const std::filesystem::path& file) {
    return std::filesystem::absolute(file).lexically_normal().parent_path();
}

} // namespace

class Document::Content {
public:
    explicit Content(const std::filesystem::path& file) : reader(file) {}

    QuietReader reader;
    std::set<std::string> models;
};

Document::Document(const std::filesystem::path& file) : content(std::make_unique<Content>(file)) {
    XMLNode& root = *getRoot();
    if (root.tag != "AgentNode")
        throw ViewerError(file.string() + ": no agent document, its root element is " + root.tag +
                          " and not AgentNode (" + root.getPlace() + ')');
    makeRotationsUnit(root);
    visitModelFields(root, [&](XMLNode& field) {
        std::string& path = field.attributes["value"];
        if (path.empty())
            return;
        path = (folderOf(file) / path).lexically_normal().string();
        try {
            ModelLoader::instance().check(path);
        } catch (const ViewerError& error) {
            throw ViewerError(file.string() + ": the model " + error.what() + " (" + field.getPlace() + ')');
        }
        content->models.insert(path);
    });
}

Document::~Document() = default;

std::unique_ptr<XMLNode> Document::ofModel(const std::filesystem::path& model, const std::string& agentName) {
    auto root = std::make_unique<XMLNode>("AgentNode", nullptr);
    root->attributes["name"] = agentName;
    XMLNode* const component = root->addChild("Component");
    component->attributes = {{"class", "VisualModelComponent"}, {"name", "VisualModelComponent"}};
    component->addChild("field")->attributes = {
        {"name", "filePath"}, {"value", std::filesystem::absolute(model).lexically_normal().string()}};
    return root;
}

void Document::write(XMLNode& root, const std::filesystem::path& file) {
    visitModelFields(root, [&](XMLNode& field) {
        std::string& path = field.attributes["value"];
        path = seenFrom(folderOf(file), path);
    });
    writeXmlFile(root, file);
}

XMLNode* Document::getRoot() const {
    return content->reader.getRoot();
}

const std::set<std::string>& Document::getModels() const {
    return content->models;
}

std::unique_ptr<XMLNode> placementOf(const XMLNode& agent) {
    auto placement = std::make_unique<XMLNode>("AgentNode", nullptr);
    copyPlacement(agent, *placement);
    return placement;
}

} // namespace tessarin::viewer
