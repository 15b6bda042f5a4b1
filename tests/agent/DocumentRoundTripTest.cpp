#include "AgentTest.h"

#include <agent/Accessor.h>
#include <gmtl/Generate.h>
#include <xml_parser/XMLNode.h>

#include <cmath>
#include <locale>
#include <random>
#include <sstream>

namespace tessarin::agent {
namespace {

/// A component with a text and a number.
class Note : public Component {
public:
    const char* getClassName() override { return "Note"; }
    bool getSupportedEvents(Events&) override { return true; }
    AccessorWithObject getAccessor(const std::string& fieldName) override {
        static Accessor<std::string> textAccessor(0);
        static Accessor<double> numberAccessor(0);
        if (fieldName == "text")
            return {&textAccessor, &text};
        return fieldName == "number" ? AccessorWithObject{&numberAccessor, &number} : Component::getAccessor(fieldName);
    }
    void getFieldNames(std::list<std::string>& names) override { names.insert(names.end(), {"text", "number"}); }

    std::string text;
    double number = 0.0;
};

std::string write(AgentNode& node) {
    std::ostringstream stream;
    node.createXml(stream);
    return stream.str();
}

TEST(CreateXml, WritesTransformThenComponentsThenChildren) {
    AgentNode node;
    node.addChild("child")->markForRemoval();
    node.addComponent("JointComponent")->setName("");
    node.addComponent("VisualModelComponent")->setAsString("filePath", "m<1>");
    node.addChild("second");
    const std::unique_ptr<xml_parser::XMLNode> root(node.createXml());
    EXPECT_TRUE(root->attributes.empty());
    ASSERT_EQ(root->getNumChildren(), 5);
    EXPECT_EQ(root->getChild(0)->tag, "Transform");
    EXPECT_EQ(root->getChild(0)->getNumChildren(), 2);
    EXPECT_EQ(root->getChild(0)->getChild(0)->tag, "Translate");
    EXPECT_EQ(root->getChild(0)->getChild(0)->text, "0 0 0");
    EXPECT_EQ(root->getChild(0)->getChild("Rotate", true)->text, "0 0 0 1");
    using Attributes = std::map<std::string, std::string>;
    EXPECT_EQ(root->getChild(1)->attributes, (Attributes{{"class", "JointComponent"}}));
    EXPECT_EQ(root->getChild(1)->getNumChildren(), 0);
    EXPECT_EQ(root->getChild(2)->attributes,
              (Attributes{{"class", "VisualModelComponent"}, {"name", "VisualModelComponent"}}));
    EXPECT_EQ(root->getChild(2)->getChild("field", true)->attributes,
              (Attributes{{"name", "filePath"}, {"value", "m<1>"}}));
    EXPECT_EQ(root->getChild(3)->getAttributeValue("name"), "child");
    EXPECT_EQ(root->getChild(4)->getAttributeValue("name"), "second");
}

TEST(CreateXml, NumbersHaveSixDigitsInAnyLocale) {
    struct CommaDecimals : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaDecimals));
    AgentNode node;
    const auto written = [&](double x, double y, double z) {
        node.setPosition(vec(x, y, z));
        const std::unique_ptr<xml_parser::XMLNode> root(node.createXml());
        return root->getChild(0)->getChild(0)->text;
    };
    EXPECT_EQ(written(1.5, -0.25, 100), "1.5 -0.25 100");
    EXPECT_EQ(written(1.23456789, 1234567.0, 123456.4), "1.23457 1.23457e+06 123456");
    EXPECT_EQ(written(1e-5, 1.0 / 3, 0.0001), "1e-05 0.333333 0.0001");
    node.setRotation({0.0, 1.0, 0.0, 0.0});
    EXPECT_NE(write(node).find("<Rotate>0 1 0 0</Rotate>"), std::string::npos);
    std::locale::global(before);
}

class RandomTree {
public:
    explicit RandomTree(unsigned seed) : generator(seed) {}

    void fill(AgentNode& node, int depth) {
        gmtl::Matrix<double, 4, 4> matrix;
        double q[4];
        double length = 0.0;
        for (double& element : q) {
            element = number();
            length += element * element;
        }
        length = std::sqrt(length);
        gmtl::setRot(matrix, gmtl::Quat<double>(q[0] / length, q[1] / length, q[2] / length, q[3] / length));
        gmtl::setTrans(matrix, vec(number(), 1000 * number(), number() / 1000));
        node.setMatrix(matrix);
        for (int i = below(3); i > 0; --i) {
            auto* const note = new Note;
            note->setName(text() + std::to_string(i)); // unique, so that a document finds it
            note->text = text();
            note->number = number();
            node.addComponent(note);
        }
        for (int i = depth > 0 ? below(4) : 0; i > 0; --i)
            fill(*node.addChild(text() + std::to_string(i)), depth - 1);
    }

    int below(int limit) { return static_cast<int>(generator() % static_cast<unsigned>(limit)); }

private:
    double number() { return std::uniform_real_distribution<>(-1.0, 1.0)(generator); }

    std::string text() {
        static const char* const pieces[] = {"a", " ", "<", ">", "&", "\"", "'", "\n", "\t", "\r", "\xC3\xA9", "]]>"};
        std::string made;
        for (int i = below(6); i > 0; --i)
            made += pieces[below(12)];
        return made;
    }

    std::mt19937 generator;
};

void expectSame(AgentNode& copy, AgentNode& original) {
    ASSERT_EQ(copy.getName(), original.getName());
    for (int i = 0; i < 16; ++i) {
        const double expected = original.getMatrix().getData()[i];
        EXPECT_NEAR(copy.getMatrix().getData()[i], expected, i < 12 ? 5e-6 : 5e-6 * std::abs(expected)) << i;
    }
    const std::vector<Component*> copies = componentsOf(copy);
    const std::vector<Component*> originals = componentsOf(original);
    ASSERT_EQ(copies.size(), originals.size());
    for (std::size_t i = 0; i < copies.size(); ++i) {
        EXPECT_EQ(copies[i]->getName(), originals[i]->getName());
        EXPECT_EQ(dynamic_cast<Note&>(*copies[i]).text, dynamic_cast<Note&>(*originals[i]).text);
        EXPECT_EQ(dynamic_cast<Note&>(*copies[i]).number, dynamic_cast<Note&>(*originals[i]).number);
    }
    ASSERT_EQ(copy.getChildren().size(), original.getChildren().size());
    for (auto a = copy.getChildren().begin(), b = original.getChildren().begin(); a != copy.getChildren().end();
         ++a, ++b)
        expectSame(**a, **b);
}

TEST(RoundTrip, RandomTreesComeBack) {
    static SimObjectFactoryFor<Note> factory;
    SimObjectDB::instance()->registerFactory(&factory, "Note");
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        AgentNode original("root");
        RandomTree(seed).fill(original, 4);
        const std::string document = write(original);
        const Owned copy(AgentNode::createFromXmlString(document));
        ASSERT_NE(copy, nullptr);
        copy->modifyWithXml(document); // creation alone leaves the transforms
        expectSame(*copy, original);
        original.modifyWithXml(document);
        expectSame(*copy, original);
    }
}

} // namespace
} // namespace tessarin::agent
