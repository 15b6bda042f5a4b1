#include "AgentTest.h"

#include <agent/Accessor.h>
#include <agent/BehaviourComponent.h>

#include <sstream>

namespace tessarin::agent {
namespace {

/// A host's behaviour with fields, as a document makes it.
class Spinner : public BehaviourComponent {
public:
    static inline int updates = 0;
    static inline int alive = 0;
    static inline std::string lastAxis;
    static inline double lastSpeed = 0.0;

    Spinner() { ++alive; }
    ~Spinner() override { --alive; }
    const char* getClassName() override { return "Spinner"; }

    void update() override {
        ++updates;
        lastAxis = axis;
        lastSpeed = speed;
        getAgentNode()->setPosition(vec(updates, 0, 0));
    }

    AccessorWithObject getAccessor(const std::string& fieldName) override {
        // Both accessors take the field's own address for the start of the object.
        static Accessor<std::string> textAccessor(0);
        static Accessor<double> numberAccessor(0);
        if (fieldName == "axis")
            return {&textAccessor, &axis};
        if (fieldName == "speed")
            return {&numberAccessor, &speed};
        return BehaviourComponent::getAccessor(fieldName);
    }

    void getFieldNames(std::list<std::string>& names) override {
        names.insert(names.end(), {"axis", "ghost", "speed"}); // the second has no accessor
    }

private:
    std::string axis = "z";
    double speed = 1.0;
};

TEST(HostClasses, ABehaviourIsMadeByADocumentAndRuns) {
    static SimObjectFactoryFor<Spinner> factory;
    SimObjectDB::instance()->registerFactory(&factory, "Spinner");
    static_assert(!std::is_convertible_v<Spinner*, Component*>, "a behaviour is no component to outsiders");
    LogCapture log;
    {
        const Owned node(AgentNode::createFromXmlString(
            "<AgentNode><Component class='Spinner'><field name='axis' value='x'/><field name='speed' value='fast'/>"
            "</Component></AgentNode>"));
        ASSERT_NE(node, nullptr);
        EXPECT_THAT(log.take(), testing::Contains("600 Component Spinner does not implement getSupportedEvents."));
        for (int event = 0; event < AgentEvent::COUNT; ++event)
            node->sendEvent(static_cast<AgentEvent::_AgentEventEnum>(event));
        EXPECT_EQ(Spinner::updates, 1);
        EXPECT_EQ(Spinner::lastAxis, "x");
        EXPECT_EQ(Spinner::lastSpeed, 1.0) << "text that is no number leaves the field";
        EXPECT_TRUE(node->getPosition() == vec(1, 0, 0));

        // The library recognises a text accessor of the host's as one, and no other as a text accessor.
        Component* const spinner = node->getComponent("Spinner");
        EXPECT_EQ(spinner->setValue("axis", "y")->setValue("speed", "2"), spinner);
        EXPECT_EQ(spinner->getAsString("axis"), "y");
        EXPECT_EQ(spinner->getAsString("speed"), "1");
        spinner->setAsString("speed", "2.5");

        std::ostringstream text;
        node->createXml(text);
        const Owned copy(AgentNode::createFromXmlString(text.str()));
        EXPECT_EQ(copy->getComponent("Spinner")->getAsString("axis"), "y");
        EXPECT_EQ(copy->getComponent("Spinner")->getAsString("speed"), "2.5");
        EXPECT_EQ(text.str().find("ghost"), std::string::npos);

        node->addComponent((new Spinner)->asComponent());
        EXPECT_EQ(Spinner::alive, 3);
    }
    EXPECT_EQ(Spinner::alive, 0);
}

} // namespace
} // namespace tessarin::agent
