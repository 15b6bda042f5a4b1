// Runs over a folder of COLLADA files, if one is named by the environment or was when the tests were configured.

#include <tests/bullet/JointScene.h>
#include <tests/bullet/ModelNodes.h>

#include <gtest/gtest.h>

#include <xml_parser/XMLNode.h>
#include <xml_parser/XMLNodeCreator.h>

#include <cmath>
#include <cstdlib>

namespace tessarin::dynamics::bullet {

namespace {

std::string samplesFolder() {
    const char* named = std::getenv("TESSARIN_COLLADA_SAMPLES");
    return named ? named : TESSARIN_COLLADA_SAMPLES;
}

/// The names of the nodes that the instances of rigid bodies target, and how many constraints are instanced, in the
/// order of the document.
void collect(const xml_parser::XMLNode& node, std::vector<std::string>& targets,
             std::map<std::string, std::string>& nodeNames, std::size_t& constraints) {
    constraints += node.tag == "instance_rigid_constraint" ? 1 : 0;
    if (node.tag == "instance_rigid_body") {
        targets.push_back(node.getAttributeValue("target").substr(1));
    } else if (node.tag == "node") {
        const std::string id = node.getAttributeValue("id");
        const std::string name = node.getAttributeValue("name");
        nodeNames.emplace(id, name.empty() ? id : name);
    }
    for (int i = 0; i < node.getNumChildren(); ++i) {
        collect(*node.getChild(i), targets, nodeNames, constraints);
    }
}

std::vector<std::string> expectedNames(const std::string& path, std::size_t& constraints) {
    xml_parser::XMLNodeCreator reader;
    reader.setPruneEmptyTags(false);
    reader.setCreateAttributesFromPrimitiveChildren(false);
    std::vector<std::string> names;
    std::map<std::string, std::string> nodeNames;
    if (reader.parse(path, false) == 0) {
        collect(*reader.getRoot(), names, nodeNames, constraints);
    }
    for (std::string& name : names) {
        name = nodeNames[name];
    }
    return names;
}

void expectRunsAsAuthored(const std::string& path) {
    SCOPED_TRACE(path);
    LoadedWorld loaded{ColladaScene()};
    loaded.world->loadScene(path, Pose(), loaded);
    std::size_t constraints = 0;
    EXPECT_EQ(loaded.names(), expectedNames(path, constraints));
    EXPECT_EQ(loaded.joints.size(), constraints);
    const ModelNodes model(path);
    ASSERT_TRUE(model.isRead());
    for (const auto& body : loaded.bodies) {
        EXPECT_LT(model.distance(*body), 1e-4 * std::max(model.getRadius(), 1.0)) << body->getName();
    }
    for (int i = 0; i < 600; ++i) {
        loaded.run(1);
        for (const auto& each : loaded.joints) {
            const auto& joint = dynamic_cast<BulletJoint&>(*each);
            const JointLimits limits = joint.getLimits(joint.getMainAxis());
            EXPECT_LT(gapOf(joint), 0.01) << each->name << " in step " << i;
            EXPECT_GT(joint.getPosition(joint.getMainAxis()), limits.lower - 0.01) << each->name << " in step " << i;
            EXPECT_LT(joint.getPosition(joint.getMainAxis()), limits.upper + 0.01) << each->name << " in step " << i;
        }
        for (const auto& body : loaded.bodies) {
            Pose pose;
            body->getMatrix(pose);
            for (int element = 0; element < 16; ++element) {
                ASSERT_TRUE(std::isfinite(pose.getData()[element])) << body->getName() << " in step " << i;
            }
        }
    }
}

} // namespace

TEST(SampleFiles, HaveTheBodiesAndPlacesOfTheModel) {
    if (samplesFolder().empty()) {
        GTEST_SKIP() << "TESSARIN_COLLADA_SAMPLES names no folder";
    }
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(samplesFolder())) {
        if (entry.path().extension() == ".dae") {
            expectRunsAsAuthored(entry.path().string());
            ++count;
        }
    }
    EXPECT_GT(count, 0);
}

} // namespace tessarin::dynamics::bullet
