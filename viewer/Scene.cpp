#include <viewer/Scene.h>

#include <viewer/BodyNodes.h>
#include <viewer/Document.h>
#include <viewer/FaultCount.h>
#include <viewer/LibrarySetup.h>
#include <viewer/ModelLoader.h>
#include <viewer/ModelReading.h>
#include <viewer/ViewerError.h>
#include <viewer/components/BodyOfAgent.h>

#include <agent/AgentNode.h>
#include <agent/GeometryComponent.h>
#include <agent/RigidBodyComponent.h>
#include <agent/VisualModelComponent.h>
#include <dynamics/bullet/BulletBodyControl.h>
#include <dynamics/bullet/BulletDynamicsWorld.h>
#include <sceneutils/FindNodeVisitor.h>

#include <osg/NodeVisitor>
#include <osgDB/FileNameUtils>

#include <set>

namespace tessarin::viewer {

using agent::AgentNode;
using agent::VisualModelComponent;
using xml_parser::XMLNode;

/// The agents go before their world.
struct Scene::Content {
    std::unique_ptr<dynamics::bullet::BulletDynamicsWorld> world =
        std::make_unique<dynamics::bullet::BulletDynamicsWorld>();
    std::unique_ptr<AgentNode> root;
    int faults = 0;
};

namespace {

/// Makes a world that of all agents as long as this stands, and for good once it is kept.
class WorldInUse {
public:
    explicit WorldInUse(dynamics::DynamicsWorld& world) : before(AgentNode::dynamicsWorld) {
        AgentNode::dynamicsWorld = &world;
    }
    ~WorldInUse() {
        if (!isKept)
            AgentNode::dynamicsWorld = before;
    }
    WorldInUse(const WorldInUse&) = delete;
    WorldInUse& operator=(const WorldInUse&) = delete;
    void keep() { isKept = true; }

private:
    dynamics::DynamicsWorld* before;
    bool isKept = false;
};

VisualModelComponent* modelOf(AgentNode& agent) {
    return dynamic_cast<VisualModelComponent*>(agent.getComponent("VisualModelComponent"));
}

/// A model component of the branch whose model was not to be read; null if there is none.
/// @param paths the models that count; null for all.
VisualModelComponent* findUnreadModel(AgentNode& agent, const std::set<std::string>* paths) {
    VisualModelComponent* unread = nullptr;
    agent.visitComponents([&](agent::Component* component) {
        VisualModelComponent* const model = dynamic_cast<VisualModelComponent*>(component);
        if (model && !model->getModel() && (!paths || paths->count(model->getAsString("filePath")) > 0))
            unread = model;
    });
    for (auto child = agent.getChildren().begin(); !unread && child != agent.getChildren().end(); ++child)
        unread = findUnreadModel(**child, paths);
    return unread;
}

void requireModels(AgentNode& root, const std::set<std::string>* paths, const std::filesystem::path& file) {
    if (VisualModelComponent* const unread = findUnreadModel(root, paths))
        throw ViewerError(file.string() + ": the model " + unread->getAsString("filePath") + " can't be read");
}

/// Lets the agents stand where their bodies are, before the first frame: they may be written before they are ever
/// updated.
void placeAgents(AgentNode& agent) {
    if (agent::RigidBodyComponent* const rigidBody = agent.getRigidBody())
        if (rigidBody->getBody())
            rigidBody->update();
    for (AgentNode* child : agent.getChildren())
        placeAgents(*child);
}

/// Shows the nodes of models that would be those of bodies if their bodies had come in.
void showNodesWithoutBody(AgentNode& agent) {
    VisualModelComponent* const component = modelOf(agent);
    if (const osg::ref_ptr<osg::Node> model = component ? component->getModel() : nullptr) {
        std::set<std::string> names;
        for (AgentNode* child : agent.getChildren())
            names.insert(child->getName());
        showStoredWithout(*model, names);
    }
    for (AgentNode* child : agent.getChildren())
        showNodesWithoutBody(*child);
}

struct NameCollector : osg::NodeVisitor {
    explicit NameCollector(osg::Node& model) : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) { model.accept(*this); }
    void apply(osg::Node& node) override {
        names.insert(node.getName());
        traverse(node);
    }

    std::set<std::string> names;
};

void addComponent(XMLNode& agent, const std::string& className) {
    agent.addChild("Component")->attributes = {{"class", className}, {"name", className}};
}

/// Shows the model of an agent: each body's node on the agent of that body, and what belongs to no body on the agent
/// itself. What moves can be played with.
void showModel(AgentNode& root) {
    const osg::ref_ptr<osg::Node> model = modelOf(root)->getModel();
    // By its name an agent takes a single node. This one is to take all that its children leave.
    for (bool isTaken = true; isTaken;) {
        sceneutils::FindNodeVisitor finder(root.getName());
        model->accept(finder);
        isTaken = finder.getFirst() != nullptr;
        if (isTaken)
            root.setName(root.getName() + "_scene");
    }

    XMLNode document("AgentNode", nullptr);
    document.attributes["name"] = root.getName();
    if (model->getBound().valid())
        addComponent(document, "GeometryComponent");
    const NameCollector nodes(*model);
    for (AgentNode* child : root.getChildren()) {
        XMLNode* const element = document.addChild("AgentNode");
        element->attributes["name"] = child->getName();
        // Without a node of its own it would take the whole model.
        if (nodes.names.count(child->getName()) > 0)
            addComponent(*element, "GeometryComponent");
        const dynamics::bullet::BulletBodyControl* const body = findBodyControl(child);
        if (!body || !body->isMovable())
            continue;
        for (const char* const toy : {"HighlightComponent", "DragComponent", "PushComponent", "FlashComponent"})
            addComponent(*element, toy);
    }
    root.modifyWithXml(&document);
}

std::unique_ptr<AgentNode> loadModel(const std::filesystem::path& file) {
    ModelLoader::instance().check(file);
    const std::unique_ptr<XMLNode> document = Document::ofModel(file, file.stem().string());
    std::unique_ptr<AgentNode> root(AgentNode::createFromXml(document.get()));
    if (!modelOf(*root)->getModel())
        throw ViewerError(file.string() + ": neither an agent document nor a model that can be read");
    showNodesWithoutBody(*root);
    showModel(*root);
    return root;
}

std::unique_ptr<AgentNode> loadDocument(const std::filesystem::path& file) {
    const Document document(file);
    std::unique_ptr<AgentNode> root(AgentNode::createFromXml(document.getRoot()));
    requireModels(*root, nullptr, file);
    showNodesWithoutBody(*root);
    root->modifyWithXml(placementOf(*document.getRoot()).get());
    return root;
}

/// @return the number of lines of faults.
int applyDocument(AgentNode& root, const std::filesystem::path& file) {
    const FaultCount faults;
    const Document document(file);
    root.modifyWithXml(document.getRoot());
    showNodesWithoutBody(root);
    root.modifyWithXml(placementOf(*document.getRoot()).get());
    requireModels(root, &document.getModels(), file); // what an earlier document has left is not this one's fault
    return faults.tell(file);
}

} // namespace

Scene::Scene(std::filesystem::path fileToShow, std::vector<std::filesystem::path> patchesToApply)
    : file(std::move(fileToShow)), patches(std::move(patchesToApply)) {
    setUpLibrary();
    reload();
}

Scene::~Scene() {
    content->root.reset();
    AgentNode::dynamicsWorld = nullptr;
}

void Scene::reload() {
    std::unique_ptr<Content> fresh = load();
    graph->removeChildren(0, graph->getNumChildren());
    graph->addChild(fresh->root->getOsgTransform());
    if (content)
        content->root.reset();
    content = std::move(fresh);
}

void Scene::apply(const std::filesystem::path& patch) {
    const ModelPass pass;
    content->faults = applyDocument(getRoot(), patch);
}

int Scene::getFaultCount() const {
    return content->faults;
}

void Scene::write(const std::filesystem::path& document) {
    const std::unique_ptr<XMLNode> branch(getRoot().createXml());
    Document::write(*branch, document);
}

AgentNode& Scene::getRoot() {
    return *content->root;
}

dynamics::bullet::BulletDynamicsWorld& Scene::getWorld() {
    return *content->world;
}

std::unique_ptr<Scene::Content> Scene::load() const {
    const ModelPass pass;
    auto fresh = std::make_unique<Content>();
    fresh->world->setLoadLimits(ModelLoader::instance().getLimits().ofPhysics());
    WorldInUse use(*fresh->world);
    {
        const FaultCount faults;
        const bool isDocument = osgDB::getLowerCaseFileExtension(file.string()) == "xml";
        fresh->root = isDocument ? loadDocument(file) : loadModel(file);
        fresh->faults = faults.tell(file);
    }
    for (const std::filesystem::path& patch : patches)
        fresh->faults += applyDocument(*fresh->root, patch);
    placeAgents(*fresh->root);
    use.keep();
    return fresh;
}

} // namespace tessarin::viewer
