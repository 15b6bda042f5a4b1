// Documents are applied to wide agents and large models while hooks change names, lists and nodes, and what comes out
// is compared with a pass that looks each name up by a plain walk.

#include <tests/agent/AgentTest.h>

#include <xml_parser/XMLNode.h>

namespace tessarin::agent {
namespace {

using xml_parser::XMLNode;

struct World;

/// Changes its world whenever the library calls it.
struct Hostile final : Component {
    static inline World* world = nullptr;

    const char* getClassName() override { return "Hostile"; }
    bool getSupportedEvents(Events& events) override { return events.push_back(AgentEvent::AGENT_CREATED), true; }
    Component* initialize() override { return strike(), this; }
    void attached() override { strike(); }
    void onAgentCreated() override { strike(); }
    AccessorWithObject getAccessor(const std::string&) override;
    void strike();
};

struct StrikingField final : AbstractAccessor {
    std::string getAsString(void*) override { return {}; }
    void setAsString(void* object, const std::string&) override { static_cast<Hostile*>(object)->strike(); }
    void setValue(void*, void*) override {}
    void getValue(void*, void*) override {}
};

AccessorWithObject Hostile::getAccessor(const std::string&) {
    static StrikingField field;
    return {&field, this};
}

osg::Node* firstNode(osg::Node& node, const std::string& name) {
    if (node.getName() == name)
        return &node;
    osg::Group* const group = node.asGroup();
    for (unsigned i = 0; group && i < group->getNumChildren(); ++i)
        if (osg::Node* const found = firstNode(*group->getChild(i), name))
            return found;
    return nullptr;
}

/// The pass as it is specified, with plain walks alone. Nothing that it works on is deleted meanwhile.
void modifyPlainly(AgentNode& agent, XMLNode& element);

void tiePlainly(GeometryComponent& geometry, AgentNode& agent) {
    AgentNode* holder = &agent;
    while (holder && !holder->getComponent("VisualModelComponent"))
        holder = holder->getParent();
    auto* const visual =
        holder ? dynamic_cast<VisualModelComponent*>(holder->getComponent("VisualModelComponent")) : nullptr;
    ASSERT_NE(visual, nullptr);
    osg::Node* const node = firstNode(*visual->getModel(), agent.getName());
    if (auto* const placed = dynamic_cast<osg::MatrixTransform*>(node))
        placed->setMatrix(osg::Matrixd());
    geometry.setOsgNode(node ? node : visual->getModel().get());
}

void modifyComponentPlainly(AgentNode& agent, XMLNode& element) {
    const std::string name = element.getAttributeValue("name");
    Component* component = name.empty() ? nullptr : agent.getComponent(name);
    if (component) {
        for (int i = 0; i < element.getNumChildren(); ++i)
            component->setAsString("field", "");
    } else {
        component = agent.addComponent(AgentNode::createComponentFromXml(&element));
        component->initialize();
    }
    if (auto* const geometry = dynamic_cast<GeometryComponent*>(component))
        tiePlainly(*geometry, agent);
}

void modifyPlainly(AgentNode& agent, XMLNode& element) {
    if (!element.getAttributeValue("name").empty())
        agent.setName(element.getAttributeValue("name"));
    for (int i = 0; i < element.getNumChildren(); ++i) {
        XMLNode& child = *element.getChild(i);
        if (child.tag == "Component")
            modifyComponentPlainly(agent, child);
        else if (AgentNode* const known = agent.getChild(child.getAttributeValue("name")))
            modifyPlainly(*known, child);
        else
            agent.addChild(AgentNode::createFromXml(&child));
    }
}

/// An agent with many children and components, and a model with many nodes; names repeat here and there.
struct World {
    World(unsigned seed, bool isPlain) : random(seed), plain(isPlain), root(new AgentNode("root")) {
        visual = static_cast<VisualModelComponent*>(root->addComponent("VisualModelComponent"));
        for (int i = 0; i < 60; ++i) {
            root->addChild(name());
            root->addComponent("JointComponent")->setName(name());
            groups.emplace_back(new osg::MatrixTransform);
            (i > 0 ? groups[below(i)].get() : model.get())->addChild(groups.back());
            nodes.emplace_back(i % 2 ? new osg::Node : groups.back());
            if (i % 2)
                groups[below(i)]->addChild(nodes.back());
        }
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            nodes[i]->setName(name());
            nodes[i]->addDescription(std::to_string(i));
        }
    }

    int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }
    std::string name() { return "n" + std::to_string(below(90)); }

    void modify(XMLNode& element) {
        if (plain)
            modifyPlainly(*root, element);
        else
            root->modifyWithXml(&element);
    }

    AgentNode* anyChild() {
        return root->getChildren().empty() ? root->addChild(name())
                                           : *std::next(children.begin(), below(int(children.size())));
    }

    JointComponent* anyJoint() {
        std::vector<JointComponent*> joints;
        for (Component* const component : componentsOf(*root))
            if (auto* const joint = dynamic_cast<JointComponent*>(component))
                joints.push_back(joint);
        if (joints.empty())
            joints.push_back(static_cast<JointComponent*>(root->addComponent("JointComponent")));
        return joints[below(int(joints.size()))];
    }

    void change(AgentNode* inUse);
    void changeModel();

    std::mt19937 random;
    bool plain;
    int depth = 0;
    Owned root;
    std::list<AgentNode*>& children = root->getChildren(); // kept, so that nobody sees when it is reordered
    VisualModelComponent* visual;
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    std::vector<osg::ref_ptr<osg::MatrixTransform>> groups;
    std::vector<osg::ref_ptr<osg::Node>> nodes;
};

void World::change(AgentNode* inUse) {
    switch (AgentNode* const child = anyChild(); below(12)) {
    case 0:
        return child->setName(name());
    case 1:
        return children.reverse();
    case 2:
        return children.splice(children.end(), children, children.begin());
    case 3:
        return std::swap(children.front(), children.back());
    case 4:
        if (inUse && child != inUse) { // a component on no agent yet knows nothing of the agent that waits for it
            root->removeChild(child);
            delete child;
        }
        return;
    case 5:
        root->addChild(name());
        return;
    case 6:
        return below(4) == 0 ? root->addChild(child) : anyJoint()->setName(name());
    case 7:
        delete anyJoint();
        return;
    case 8:
        root->addComponent("JointComponent")->setName(name());
        return;
    case 9:
        *anyJoint() = *anyJoint();
        return;
    case 10:
        if (depth++ == 0) {
            XMLNode patch("AgentNode", nullptr);
            for (int i = 0; i < 20; ++i)
                patch.addChild("AgentNode")->attributes["name"] = name();
            modify(patch);
            changeModel(); // behind a nested pass, in the same hook
            modify(patch);
        }
        --depth;
        return;
    default:
        return changeModel();
    }
}

void World::changeModel() {
    osg::Node& node = *nodes[below(int(nodes.size()))];
    if (below(3) > 0 || node.asGroup()) {
        node.setName(name());
        return;
    }
    while (node.getNumParents() > 0)
        node.getParent(0)->removeChild(&node);
    if (below(3) > 0)
        groups[below(int(groups.size()))]->insertChild(0, &node);
}

void Hostile::strike() {
    world->change(getAgentNode());
}

/// Everything that a look-up has a say in.
void describe(AgentNode& agent, std::ostream& text) {
    text << agent.getName() << '(';
    for (Component* const component : componentsOf(agent)) {
        osg::Node* const node = component->getOsgNode();
        text << component->getClassName() << ' ' << component->getName() << ' '
             << (node && node->getNumDescriptions() > 0 ? node->getDescription(0) : "-") << ' ';
    }
    for (AgentNode* const child : agent.getChildren())
        describe(*child, text);
    text << ")\n";
}

/// A patch whose elements name what is there and what isn't, with a hook here and there.
void fill(XMLNode& patch, std::mt19937& random, unsigned hookEvery) {
    const auto name = [&] { return "n" + std::to_string(random() % 90); };
    const auto addComponent = [&](XMLNode& parent, const std::string& className, const std::string& componentName) {
        XMLNode* const element = parent.addChild("Component");
        element->attributes = {{"class", className}, {"name", componentName}};
        element->addChild("field")->attributes["name"] = "field";
    };
    for (int i = 0; i < 400; ++i) {
        if (i % 4 == 0)
            addComponent(patch, random() % hookEvery ? "JointComponent" : "Hostile", name());
        XMLNode* const child = patch.addChild("AgentNode");
        child->attributes["name"] = random() % 30 ? name() : "";
        if (random() % 2)
            addComponent(*child, "GeometryComponent", "g");
        if (random() % hookEvery == 0)
            addComponent(*child, "Hostile", random() % 2 ? "h" : "");
    }
}

TEST(LookUps, FindWhatAPlainWalkFindsWhateverHooksDo) {
    static SimObjectFactoryFor<Hostile> factory;
    SimObjectDB::instance()->registerFactory(&factory, "Hostile");
    doubles::ModelLoaderDouble loader;
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        std::string results[2];
        for (const bool plain : {false, true}) {
            World world(seed, plain);
            Hostile::world = &world;
            loader.models[""] = world.model;
            world.visual->initialize();
            std::mt19937 random(seed);
            XMLNode patch("AgentNode", nullptr);
            fill(patch, random, seed % 3 ? 40 : 6);
            world.modify(patch);
            std::ostringstream text;
            describe(*world.root, text);
            for (const auto& group : world.groups)
                text << group->getMatrix().isIdentity() << group->getName();
            results[plain] = text.str();
        }
        ASSERT_EQ(results[0], results[1]);
    }
}

} // namespace
} // namespace tessarin::agent
