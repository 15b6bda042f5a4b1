#include "AgentTest.h"

#include <agent/Accessor.h>
#include <agent/AgentFactory.h>
#include <agent/GeometryComponent.h>
#include <agent/VisualModelComponent.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <locale>
#include <set>
#include <sstream>

namespace tessarin::agent {
namespace {

struct Colour {
    int red = 0;
    int green = 0;
    bool operator==(const Colour& other) const { return red == other.red && green == other.green; }
};

} // namespace

template <>
struct FieldText<Colour> {
    static std::string write(const Colour& value) {
        return std::to_string(value.red) + '/' + std::to_string(value.green);
    }
    static bool read(std::string_view text, Colour& value) {
        const std::size_t slash = text.find('/');
        return slash != std::string_view::npos && FieldText<int>::read(text.substr(0, slash), value.red) &&
               FieldText<int>::read(text.substr(slash + 1), value.green);
    }
};

namespace {

/// Gives the text of a value, having made sure that it comes back equal, through both text and value.
template <class T>
std::string throughText(const T& value) {
    struct {
        double before = 1.0;
        T field{};
        double behind = 2.0;
    } object;
    Accessor<T> accessor(
        static_cast<std::size_t>(reinterpret_cast<char*>(&object.field) - reinterpret_cast<char*>(&object)));
    AbstractAccessor& abstract = accessor;
    T given = value;
    abstract.setValue(&object, &given);
    const std::string text = abstract.getAsString(&object);
    object.field = T{};
    abstract.setAsString(&object, text);
    EXPECT_TRUE(object.field == value) << text;
    T copy{};
    abstract.getValue(&object, &copy);
    EXPECT_TRUE(copy == value) << text;
    abstract.getValue(&object, &accessor.get(&object)); // the field itself: nothing happens
    EXPECT_TRUE(object.field == value && object.before == 1.0 && object.behind == 2.0) << text;
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

struct CommaDecimals : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(Accessor, ValuesComeBackEqualInAnyLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaDecimals));
    EXPECT_EQ(throughText<std::string>(" a\n<&\"'\t "), " a\n<&\"'\t ");
    EXPECT_EQ(throughText(true), "true");
    EXPECT_EQ(throughText(1234567), "1234567");
    EXPECT_EQ(throughText(0.1), "0.1");
    EXPECT_EQ(throughText(0.1f), "0.1");
    for (const double value : {1234567.25, 1.0 / 3, -DBL_MAX, DBL_MIN, 5e-324, std::nextafter(1.0, 2.0), -0.0,
                               std::numeric_limits<double>::infinity()})
        throughText(value);
    throughText(std::numeric_limits<long long>::min());
    throughText(std::numeric_limits<unsigned long>::max());
    throughText(static_cast<signed char>(-128));
    throughText(1.0L / 3);
    EXPECT_EQ(throughText(gmtl::Vec<double, 3>(1.5, -2.0, 1e300)), "1.5 -2 1e+300");
    EXPECT_EQ(throughText(gmtl::Quat<float>(0.25f, 0.5f, 0.0f, -1.0f)), "0.25 0.5 0 -1");
    EXPECT_EQ(throughText(Colour{3, -4}), "3/-4");
    EXPECT_TRUE(std::isnan([] {
        double field = 0.0;
        Accessor<double>(0).setAsString(&field, FieldText<double>::write(std::nan("")));
        return field;
    }()));
    std::locale::global(before);
}

TEST(Accessor, TextThatIsNoValueLeavesTheField) {
    expectRefused(7, {"", " ", "x", "1x", "1 2", "1.5", "99999999999", "+-1", "--1", "+", "0x10"});
    expectRefused(7u, {"-1", "4294967296"});
    expectRefused(0.5, {"", "1,5", "1.5.", "1.5 m", "1e999", "e5", "-"});
    expectRefused(true, {"", "yes", "TRUE", "2", "true false"});
    expectRefused(gmtl::Vec<float, 3>(1.0f, 2.0f, 3.0f), {"", "4 5", "4 5 6 7", "4 5 x", "4,5,6"});
    expectRefused(gmtl::Quat<double>(1.0, 2.0, 3.0, 4.0), {"0 0 0", "0 0 0 1 0"});

    gmtl::Vec<float, 3> vector;
    Accessor<gmtl::Vec<float, 3>>(0).setAsString(&vector, "\t+1 \n -2.5e1  .5 ");
    EXPECT_TRUE(vector == (gmtl::Vec<float, 3>(1.0f, -25.0f, 0.5f)));
}

TEST(Fields, OfAVisualModelComponent) {
    VisualModelComponent first;
    VisualModelComponent second;
    std::list<std::string> names{"before"};
    first.getFieldNames(names);
    EXPECT_THAT(names, ElementsAre("before", "filePath"));

    std::ostringstream printed;
    first.printValues(printed);
    static_cast<Component&>(first).printValues(printed); // the base's own, which writes nothing
    EXPECT_EQ(printed.str(), "filePath=,");

    EXPECT_EQ(first.setValue("filePath", "a.osg")->setValue("filepath", "x"), &first);
    second.setAsString("filePath", "b.osg");
    second.setAsString("nothing", "x");
    EXPECT_EQ(first.getAsString("filePath"), "a.osg");
    EXPECT_EQ(second.getAsString("filePath"), "b.osg");
    EXPECT_EQ(first.getAsString("nothing"), "");
    EXPECT_EQ(first.getAccessor("filePath").accessor, second.getAccessor("filePath").accessor);
    EXPECT_EQ(first.getAccessor("filePath").object, &first);
    EXPECT_EQ(first.getAccessor("nothing").accessor, nullptr);
    EXPECT_EQ(first.getAccessor("nothing").object, nullptr);

    GeometryComponent fieldless;
    EXPECT_EQ(fieldless.setValue("filePath", "x"), &fieldless);
    EXPECT_EQ(fieldless.getAsString("filePath"), "");
}

struct Impostor : SimObject { // a registered class that is no component
    static inline int alive = 0;
    Impostor() { ++alive; }
    ~Impostor() override { --alive; }
    const char* getClassName() override { return "Impostor"; }
};

TEST(SimObjectDB, MakesTheStandardClassesByExactName) {
    SimObjectDB& database = *SimObjectDB::instance();
    std::set<SimObject*> made;
    for (const char* const name : {"JointComponent", "RigidBodyComponent", "GeometryComponent",
                                   "SceneGraphModifierComponent", "VisualModelComponent"}) {
        for (int i = 0; i < 2; ++i) {
            SimObject* const object = database.createObject(name);
            ASSERT_NE(object, nullptr) << name;
            EXPECT_STREQ(object->getClassName(), name);
            // The one that names itself.
            EXPECT_EQ(object->getName(), std::string(name) == "VisualModelComponent" ? name : "");
            EXPECT_TRUE(made.insert(object).second);
        }
    }
    for (SimObject* const object : made)
        delete object;
    for (const char* const name : {"", "geometrycomponent", "GeometryComponent ", "AgentNode", "BehaviourComponent"})
        EXPECT_EQ(database.createObject(name), nullptr) << name;
}

TEST(SimObjectDB, AClassThatIsNoComponentCountsAsUnregistered) {
    static SimObjectFactoryFor<Impostor> factory;
    SimObjectDB::instance()->registerFactory(&factory, "Impostor");
    AgentNode node;
    EXPECT_EQ(Component::createComponent("Impostor"), nullptr);
    EXPECT_EQ(node.getOrAddComponent("Impostor", "name"), nullptr);
    EXPECT_EQ(node.addComponent("Unknown"), nullptr);
    EXPECT_THAT(componentsOf(node), IsEmpty());
    EXPECT_EQ(Impostor::alive, 0);
}

TEST(SimObjectDB, ReadsWhatTheRootDescribes) {
    LogCapture log;
    const auto read = [](const std::string& text) {
        std::istringstream stream(text);
        return std::unique_ptr<SimObject>(SimObjectDB::instance()->createObjectFromXML(stream));
    };
    const auto agent = read("<AgentNode name='a'><Component class='JointComponent'/></AgentNode>");
    EXPECT_NE(dynamic_cast<AgentNode&>(*agent).getComponent("JointComponent"), nullptr);
    const auto component = read("<Component class='VisualModelComponent' name='c'><field name='filePath' value='f'/>"
                                "</Component>");
    EXPECT_EQ(dynamic_cast<VisualModelComponent&>(*component).getAsString("filePath"), "f");
    EXPECT_EQ(component->getName(), "c");
    EXPECT_EQ(read("<Other/>"), nullptr);
    EXPECT_EQ(read("<AgentNode>"), nullptr);
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
    const Owned second(factory.createAgent());
    EXPECT_EQ(first->getOsgTransform()->getName(), "AgentNode MatTrans truck");
    EXPECT_EQ(first->getParent(), &root);
    EXPECT_EQ(second->getParent(), nullptr);
    EXPECT_EQ(factory.getFactoryName(), "Placing");

    const Owned plain(AgentFactory().createAndAddAgent());
    EXPECT_EQ(plain->getName(), "AgentNode");
    EXPECT_EQ(AgentFactory().getFactoryName(), "AgentFactory");

    EXPECT_EQ(AgentFactory::getRootAgent(), nullptr);
    EXPECT_EQ(AgentFactory::getSceneData(), nullptr);
    const osg::ref_ptr<osg::Group> scene = new osg::Group;
    for (int i = 0; i < 2; ++i)
        AgentFactory::setSceneData(scene);
    EXPECT_EQ(scene->referenceCount(), 2);
    EXPECT_EQ(AgentFactory::getSceneData(), scene);
    AgentFactory::setRootAgent(&root);
    EXPECT_EQ(AgentFactory::getRootAgent(), &root);
    AgentFactory::setRootAgent(nullptr);
    AgentFactory::setSceneData(nullptr);
    EXPECT_EQ(scene->referenceCount(), 1);
}

} // namespace
} // namespace tessarin::agent
