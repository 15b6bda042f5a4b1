#include <tests/agent/AgentTest.h>

#include <tests/doubles/ModelLoaderDouble.h>

#include <random>
#include <sstream>

namespace tessarin::agent {
namespace {

std::string write(AgentNode& node) {
    std::ostringstream stream;
    node.createXml(stream);
    return stream.str();
}

TEST(CreateXml, WritesTransformThenComponentsThenChildrenInAnyLocale) {
    const DecimalCommas locale;
    AgentNode node;
    node.setPosition(vec(1.23456789, 1234567.0, -1e-5));
    node.setRotation({0.0, 1.0, 0.0, 0.0});
    node.addChild("child")->markForRemoval();
    node.addComponent("JointComponent")->setName("");
    node.addComponent("VisualModelComponent")->setAsString("filePath", "m<1>");
    EXPECT_EQ(write(node), R"(<AgentNode>
  <Transform>
    <Translate>1.23457 1.23457e+06 -1e-05</Translate>
    <Rotate>0 1 0 0</Rotate>
  </Transform>
  <Component class="JointComponent"/>
  <Component class="VisualModelComponent" name="VisualModelComponent">
    <field name="filePath" value="m&lt;1&gt;"/>
  </Component>
  <AgentNode name="child">
    <Transform>
      <Translate>0 0 0</Translate>
      <Rotate>0 0 0 1</Rotate>
    </Transform>
  </AgentNode>
</AgentNode>
)");
}

/// Fills trees with poses that six digits hold, and with names and texts that are hard to write down.
struct RandomTree {
    void fill(AgentNode& node, int depth) {
        const double turns[][4] = {
            {0, 0, 0, 1}, {1, 0, 0, 0}, {0.5, -0.5, 0.5, 0.5}, {0, 0.6, -0.8, 0}, {0.6, 0, 0, 0.8}};
        const double* const turn = turns[below(5)];
        node.setRotation({turn[0], turn[1], turn[2], turn[3]});
        node.setPosition(vec(below(1000) / 8.0, -below(1000), below(1000) * 1000.0));
        for (int i = below(3); i > 0; --i) {
            Component* const component = node.addComponent("VisualModelComponent");
            component->setName(text() + std::to_string(i)); // unique, so that a document finds it
            component->setAsString("filePath", text());
        }
        for (int i = depth > 0 ? below(4) : 0; i > 0; --i)
            fill(*node.addChild(text() + std::to_string(i)), depth - 1);
    }

    int below(int limit) { return static_cast<int>(generator() % static_cast<unsigned>(limit)); }

    std::string text() {
        static const char* const pieces[] = {"a", " ", "<", ">", "&", "\"", "'", "\n", "\t", "\r", "\xC3\xA9", "]]>"};
        std::string made;
        for (int i = below(6); i > 0; --i)
            made += pieces[below(12)];
        return made;
    }

    std::mt19937 generator;
};

TEST(RoundTrip, RandomTreesComeBack) {
    const doubles::ModelLoaderDouble loader;
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        AgentNode original("root");
        RandomTree{std::mt19937(seed)}.fill(original, 4);
        const std::string document = write(original);
        const Owned copy(AgentNode::createFromXmlString(document));
        ASSERT_NE(copy, nullptr);
        copy->modifyWithXml(document); // creation alone leaves the transforms
        EXPECT_EQ(write(*copy), document);
    }
}

} // namespace
} // namespace tessarin::agent
