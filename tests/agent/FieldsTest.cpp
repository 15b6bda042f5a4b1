#include <tests/agent/AgentTest.h>

#include <agent/Accessor.h>
#include <agent/AgentFactory.h>
#include <agent/BehaviourComponent.h>

#include <cfloat>
#include <cmath>
#include <limits>

namespace tessarin::agent {
namespace {

/// Gives the text of a value, having made sure that it comes back equal, through both text and value.
template <class T>
std::string throughText(const T& value) {
    T object[3] = {}, given = value, copy{};
    Accessor<T> accessor(sizeof(T)); // the second of the three
    accessor.setValue(object, &given);
    const std::string text = accessor.getAsString(object);
    object[1] = T{};
    accessor.setAsString(object, text);
    accessor.getValue(object, &copy);
    accessor.getValue(object, &accessor.get(object)); // the field itself: nothing happens
    EXPECT_TRUE(object[1] == value && copy == value && object[0] == T{} && object[2] == T{}) << text;
    return text;
}

template <class T>
void expectRefused(const T& old, const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
        T field = old;
        Accessor<T>(0).setAsString(&field, text);
        EXPECT_TRUE(field == old) << '"' << text << '"';
    }
}

TEST(Accessor, ValuesComeBackEqualInAnyLocaleAndOtherTextsLeaveTheField) {
    const DecimalCommas locale;
    EXPECT_EQ(throughText<std::string>(" a\n<&\"'\t "), " a\n<&\"'\t ");
    EXPECT_EQ(throughText(true) + throughText(1234567) + throughText(0.1) + throughText(0.1f), "true12345670.10.1");
    for (const double value :
         {1234567.25, 1.0 / 3, -DBL_MAX, DBL_MIN, 5e-324, std::nextafter(1.0, 2.0), -0.0, HUGE_VAL})
        throughText(value);
    throughText(std::numeric_limits<long long>::min());
    throughText(std::numeric_limits<unsigned long>::max());
    throughText(static_cast<signed char>(-128));
    EXPECT_EQ(throughText(u'A') + throughText(U'\U0010FFFF') + throughText(L'A') + throughText('A'), "651114111"
                                                                                                     "6565");
    throughText(std::numeric_limits<wchar_t>::min());
    throughText(1.0L / 3);
    throughText(std::numeric_limits<long double>::denorm_min());
    EXPECT_EQ(throughText(gmtl::Vec<double, 3>(1.5, -2.0, 1e300)), "1.5 -2 1e+300");
    EXPECT_EQ(throughText(gmtl::Quat<float>(0.25f, 0.5f, 0.0f, -1.0f)), "0.25 0.5 0 -1");

    expectRefused(7, {"", " ", "x", "1x", "1 2", "1.5", "99999999999", "+-1", "--1", "+", "0x10"});
    expectRefused(7u, {"-1", "4294967296"});
    expectRefused(u'A', {"-1", "65536", "B"});
    expectRefused(0.5, {"", "1,5", "1.5.", "1.5 m", "1e999", "e5", "-"});
    expectRefused(0.5L, {"1e9999", "1e-9999", "1e-4950 m"});
    expectRefused(true, {"", "yes", "TRUE", "2", "true false"});
    expectRefused(gmtl::Vec<float, 3>(1.0f, 2.0f, 3.0f), {"", "4 5", "4 5 6 7", "4 5 x", "4,5,6"});
    expectRefused(gmtl::Quat<double>(1.0, 2.0, 3.0, 4.0), {"0 0 0", "0 0 0 1 0"});
    gmtl::Vec<float, 3> vector;
    Accessor<gmtl::Vec<float, 3>>(0).setAsString(&vector, "\t+1 \n -2.5e1  .5 ");
    EXPECT_TRUE(vector == (gmtl::Vec<float, 3>(1.0f, -25.0f, 0.5f)));
}

/// A host's behaviour with fields, as a document makes it.
class Spinner : public BehaviourComponent, public doubles::Counted<Spinner> {
public:
    const char* getClassName() override { return "Spinner"; }
    void update() override { getAgentNode()->setPosition(getAgentNode()->getPosition() + vec(speed, 0, 0)); }
    AccessorWithObject getAccessor(const std::string& fieldName) override {
        // Both accessors take the field's own address for the start of the object.
        static Accessor<std::string> textAccessor(0); // both take the field's own address for the object's
        static Accessor<double> numberAccessor(0);
        if (fieldName == "thrown")
            throw std::runtime_error("no field");
        return fieldName == "axis"    ? AccessorWithObject{&textAccessor, &axis}
               : fieldName == "speed" ? AccessorWithObject{&numberAccessor, &speed}
                                      : BehaviourComponent::getAccessor(fieldName);
    }
    void getFieldNames(std::list<std::string>& names) override {
        names.insert(names.end(), {"axis", "ghost", "thrown", "speed"}); // the second has no accessor
    }

private:
    std::string axis = "z";
    double speed = 1.0;
};

TEST(HostClasses, ABehaviourIsMadeByADocumentRunsAndIsWritten) {
    static SimObjectFactoryFor<Spinner> factory;
    SimObjectDB::instance()->registerFactory(&factory, "Spinner");
    static_assert(!std::is_convertible_v<Spinner*, Component*>, "a behaviour is no component to outsiders");
    LogCapture log;
    {
        const Owned node(AgentNode::createFromXmlString(
            "<AgentNode><Component class='Spinner'><field name='axis' value='x'/><field name='speed' value='fast'/>"
            "\n<field name='thrown' value='y'/></Component></AgentNode>"));
        ASSERT_NE(node, nullptr);
        EXPECT_THAT(log.takeErrors(), ElementsAre(testing::HasSubstr("\"fast\""),
                                                  "The hook setAsString let out an exception: no field (line 2)"));
        node->sendEvent(AgentEvent::UPDATE);
        EXPECT_TRUE(node->getPosition() == vec(1, 0, 0)) << "text that is no number leaves the field";

        // The library recognises a text accessor of the host's as one, and no other as a text accessor.
        Component* const spinner = node->getComponent("Spinner");
        EXPECT_EQ(spinner->setValue("axis", "y")->setValue("speed", "2")->setValue("ghost", "x"), spinner);
        EXPECT_EQ(spinner->getAsString("axis") + spinner->getAsString("speed") + spinner->getAsString("ghost"), "y1");
        std::ostringstream text;
        node->createXml(text);
        EXPECT_THAT(text.str(), testing::HasSubstr("name=\"Spinner\">\n    <field name=\"axis\" value=\"y\"/>\n"
                                                   "    <field name=\"speed\" value=\"1\"/>\n  </Component>"));
        EXPECT_THAT(log.takeErrors(), ElementsAre("The hook getAsString let out an exception: no field"));
        node->addComponent((new Spinner)->asComponent());
        EXPECT_EQ(Spinner::alive, 2);
    }
    EXPECT_EQ(Spinner::alive, 0);
}

struct Grade { // a host's type that doesn't say what it expects
    char letter;
};

} // namespace

template <>
struct FieldText<Grade> {
    static std::string write(const Grade& grade) { return std::string(1, grade.letter); }
    static bool read(std::string_view text, Grade& grade) {
        if (text.size() != 1)
            return false;
        grade.letter = text[0];
        return true;
    }
};

namespace {

/// A host's accessor that does everything itself.
struct EvenNumbers : AbstractAccessor {
    void setAsString(void* object, const std::string& text) override {
        const int value = std::atoi(text.c_str());
        if (value % 2 != 0)
            refuseFieldText("an even number");
        else
            *static_cast<int*>(object) = value;
    }
    std::string getAsString(void* object) override { return std::to_string(*static_cast<int*>(object)); }
    void setValue(void*, void*) override {}
    void getValue(void*, void*) override {}
};

struct Picky : BehaviourComponent {
    const char* getClassName() override { return "Picky"; }
    void update() override {}
    AccessorWithObject getAccessor(const std::string& fieldName) override {
        static Accessor<double> number(0);
        static Accessor<bool> flag(0);
        static Accessor<signed char> small(0);
        static Accessor<gmtl::Vec<float, 3>> vector(0);
        static Accessor<gmtl::Vec<int, 2>> place(0);
        static Accessor<gmtl::Quat<double>> turn(0);
        static Accessor<Grade> grade(0);
        static EvenNumbers even;
        static const std::map<std::string, AbstractAccessor*> table{
            {"number", &number}, {"flag", &flag}, {"small", &small}, {"vector", &vector},
            {"place", &place},   {"turn", &turn}, {"grade", &grade}, {"even", &even}};
        const auto found = table.find(fieldName);
        return found == table.end() ? AccessorWithObject() : AccessorWithObject{found->second, memory};
    }

    alignas(8) char memory[64] = {};
};

TEST(HostClasses, AFieldThatRefusesItsTextSaysWhichAndWhatItExpects) {
    static SimObjectFactoryFor<Picky> factory;
    SimObjectDB::instance()->registerFactory(&factory, "Picky");
    const std::tuple<const char*, std::string, const char*> rows[] = {
        {"number", "fast", "a number"},
        {"flag", "", "true or false"},
        {"small", "128", "a whole number from -128 to 127"},
        {"vector", "1,2,3", "three numbers separated by blanks"},
        {"place", "1.5 2", "two whole numbers separated by blanks"},
        {"turn", "0 0 1", "four numbers separated by blanks"},
        {"grade", "A+", "a value of the field's type"},
        {"even", "3", "an even number"}};
    const auto line = [](const std::string& field, const std::string& text, const std::string& expected) {
        return "AgentNode crane could not set the field " + field + " of its component p (Picky) to \"" + text +
               "\": expected " + expected + ", so the field stays as it was (crane.xml:3)";
    };
    LogCapture log;
    for (const auto& [field, text, expected] : rows) {
        const std::string component = "<Component class='Picky' name='p'>\n<field name='" + std::string(field) +
                                      "' value='" + text + "'/></Component>";
        const Owned crane(
            AgentNode::createFromXmlString("<AgentNode name='crane'>\n" + component + "</AgentNode>", "crane.xml"));
        EXPECT_THAT(log.takeErrors(), ElementsAre(line(field, text, expected)));
        crane->modifyWithXml("<AgentNode>\n" + component + "</AgentNode>", "crane.xml");
        EXPECT_THAT(log.takeErrors(), ElementsAre(line(field, text, expected)));
        // Creation hands over to a modification, which reads all of it once more.
        const Owned model(AgentNode::createFromXmlString(
            "<AgentNode name='model'><AgentNode name='crane'>\n" + component +
                "</AgentNode><Component class='JointComponent' name='VisualModelComponent'/></AgentNode>",
            "crane.xml"));
        EXPECT_THAT(log.takeErrors(), ElementsAre(line(field, text, expected)));
        crane->getComponent("p")->setAsString(field, text);
        EXPECT_THAT(log.takeErrors(), IsEmpty()) << "no document";
    }
}

struct Impostor : SimObject, doubles::Counted<Impostor> { // a registered class that is no component
    const char* getClassName() override { return "Impostor"; }
};

TEST(SimObjectDB, MakesRegisteredClassesByExactName) {
    struct ThrowingFactory final : SimObjectFactory {
        SimObject* create() override { throw std::runtime_error("sold out"); }
    };
    static SimObjectFactoryFor<Impostor> impostor;
    static ThrowingFactory throwing;
    LogCapture log;
    SimObjectDB& database = *SimObjectDB::instance();
    database.registerFactory(&impostor, "Impostor");
    database.registerFactory(&throwing, "Throwing");
    AgentNode node;
    for (const std::string name : {"JointComponent", "RigidBodyComponent", "GeometryComponent",
                                   "SceneGraphModifierComponent", "VisualModelComponent"}) {
        const std::unique_ptr<SimObject> object(database.createObject(name));
        ASSERT_NE(object, nullptr) << name;
        EXPECT_EQ(object->getClassName(), name);
        EXPECT_EQ(object->getName(), name == "VisualModelComponent" ? name : "") << "the one that names itself";
    }
    for (const char* const name : {"", "geometrycomponent", "GeometryComponent ", "AgentNode", "Throwing", "Impostor"})
        EXPECT_EQ(node.getOrAddComponent(name, "name"), nullptr) << name;
    EXPECT_EQ(Impostor::alive, 0);
    EXPECT_THAT(log.take(), ElementsAre("300 The hook create let out an exception: sold out"));

    const auto read = [&](const std::string& text) {
        std::istringstream stream(text);
        return std::unique_ptr<SimObject>(database.createObjectFromXML(stream));
    };
    const std::string component = "<Component class='VisualModelComponent' name='c'><field name='filePath' value='f'/>"
                                  "</Component>";
    const auto agent = read("<AgentNode>" + component + "</AgentNode>"), made = read(component);
    EXPECT_NE(dynamic_cast<AgentNode&>(*agent).getComponent("c"), nullptr);
    EXPECT_EQ(made->getName() + dynamic_cast<VisualModelComponent&>(*made).getAsString("filePath"), "cf");
    EXPECT_TRUE(!read("<Other/>") && !read("<AgentNode>"));
}

TEST(AgentFactory, MakesAgentsOfOneNameAndHandsThemOn) {
    struct Placing : AgentFactory {
        explicit Placing(AgentNode& root) : AgentFactory("Placing", "truck"), parent(root) {}
        AgentNode* addAgent(AgentNode* agent) override {
            parent.addChild(agent);
            return agent;
        }
        AgentNode& parent;
    };
    AgentNode root;
    Placing factory(root);
    AgentNode* const first = factory.createAndAddAgent();
    const Owned second(factory.createAgent()), plain(AgentFactory().createAndAddAgent());
    EXPECT_EQ(first->getOsgTransform()->getName(), "AgentNode MatTrans truck");
    EXPECT_TRUE(first->getParent() == &root && !second->getParent());
    EXPECT_EQ(factory.getFactoryName() + plain->getName() + AgentFactory().getFactoryName(),
              "PlacingAgentNodeAgentFactory");

    EXPECT_TRUE(!AgentFactory::getRootAgent() && !AgentFactory::getSceneData());
    const osg::ref_ptr<osg::Group> scene = new osg::Group;
    for (int i = 0; i < 2; ++i)
        AgentFactory::setSceneData(scene);
    AgentFactory::setRootAgent(&root);
    EXPECT_TRUE(AgentFactory::getRootAgent() == &root && AgentFactory::getSceneData() == scene);
    EXPECT_EQ(scene->referenceCount(), 2);
    {
        AgentNode ending;
        AgentFactory::setRootAgent(&ending);
    }
    EXPECT_EQ(AgentFactory::getRootAgent(), nullptr);
    AgentFactory::setSceneData(nullptr);
    EXPECT_EQ(scene->referenceCount(), 1);
}

} // namespace
} // namespace tessarin::agent
