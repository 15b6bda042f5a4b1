// Runs over a folder of COLLADA files, if one is named by the environment or was when the tests were configured.

#include <tests/bullet/JointScene.h>
#include <tests/bullet/ModelNodes.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace tessarin::dynamics::bullet {

namespace {

std::string samplesFolder() {
    const char* named = std::getenv("TESSARIN_COLLADA_SAMPLES");
    return named ? named : TESSARIN_COLLADA_SAMPLES;
}

/// An attribute of each element with that tag, in the order of the document.
std::vector<std::string> attributesOf(const std::string& text, const std::string& tag, const std::string& name) {
    std::vector<std::string> values;
    for (std::size_t at = text.find("<" + tag + " "); at != std::string::npos;
         at = text.find("<" + tag + " ", at + 1)) {
        const std::string element = text.substr(at, text.find('>', at) - at);
        const std::size_t value = element.find(" " + name + "=\"") + name.size() + 3;
        values.push_back(element.substr(value, element.find('"', value) - value));
    }
    return values;
}

void expectRunsAsAuthored(const std::string& path) {
    SCOPED_TRACE(path);
    std::ifstream file(path);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const std::vector<std::string> ids = attributesOf(text, "node", "id");
    std::vector<std::string> names = attributesOf(text, "instance_rigid_body", "target");
    for (std::string& name : names) {
        const auto node = std::find(ids.begin(), ids.end(), name.substr(1)) - ids.begin();
        name = attributesOf(text, "node", "name").at(static_cast<std::size_t>(node));
    }
    LoadedWorld loaded;
    loaded.world->loadScene(path, Pose(), loaded);
    EXPECT_EQ(loaded.names(), names);
    EXPECT_EQ(loaded.joints.size(), attributesOf(text, "instance_rigid_constraint", "constraint").size());
    const ModelNodes model(path);
    ASSERT_TRUE(model.isRead());
    for (const auto& body : loaded.bodies) {
        EXPECT_LT(model.distance(*body), 1e-4 * std::max(model.getRadius(), 1.0)) << body->getName();
    }
    for (int i = 0; i < 600; ++i) {
        loaded.run(1);
        for (std::size_t j = 0; j < loaded.joints.size(); ++j) {
            const BulletJoint& joint = jointOf(loaded, j);
            EXPECT_LT(gapOf(joint), 0.01) << j << " in step " << i;
            for (const JointAxis axis : {JointAxis::rotationX, JointAxis::rotationY, JointAxis::rotationZ}) {
                const auto [lower, upper] = joint.getLimits(axis);
                const double angle = joint.getPosition(axis);
                EXPECT_TRUE(angle > lower - 0.01 && angle < upper + 0.01)
                    << j << " is at " << angle << " in step " << i;
            }
        }
        ASSERT_TRUE(loaded.areNumbers()) << "in step " << i;
    }
}

/// A hollow plate that swings about the edge of a beam: a spring of one unit per degree holds it, its weight pulls it
/// down, and a stop ends its way at 90 degrees. Sizes are those of springs_limits.dae.
struct SprungPlate {
    const double x = 3.426818; // half of it
    const double y = 0.15;
    const double z = 1.581087;
    const double toHinge = 1.624105;
    const double mass = 8 * x * y * z;
    const double stop = pi / 2;

    /// Faces at both ends of X, Y and Z, each with its own thickness of nothing.
    double inertia() const {
        const double sum = y * z * (y * y + z * z) / 3 + x * z * (y * y + z * z / 3) + x * y * (y * y / 3 + z * z);
        return mass * (sum / (y * z + x * z + x * y) + toHinge * toHinge);
    }

    double energyAt(double angle) const {
        return 180 / pi * angle * angle / 2 - mass * 9.81 * toHinge * std::sin(angle);
    }

    /// Where it turns round after it has come to rest at the stop.
    double lowest() const {
        double below = -pi / 2;
        double above = 1; // near the bottom of the energy
        for (int i = 0; i < 60; ++i) {
            const double middle = (below + above) / 2;
            (energyAt(middle) > energyAt(stop) ? below : above) = middle;
        }
        return above;
    }

    /// From the stop and back to it, by the speed that the energy leaves.
    double period() const {
        const double reach = (stop - lowest()) / 2;
        double sum = 0;
        for (int i = 0; i < 1000; ++i) {
            const double phase = pi * ((i + 0.5) / 1000 - 0.5);
            const double speed =
                std::sqrt(2 * (energyAt(stop) - energyAt(lowest() + reach * (1 + std::sin(phase)))) / inertia());
            sum += reach * std::cos(phase) / speed * pi / 1000;
        }
        return 2 * sum;
    }
};

void expectSwingsAsAuthored(LoadedWorld& loaded) {
    const SprungPlate plate;
    std::vector<double> angles;
    std::vector<double> turns; // when it was lowest, found between steps
    for (std::size_t i = 0; i < 600; ++i) {
        loaded.run(1);
        angles.push_back(jointOf(loaded).getPosition(JointAxis::rotationX));
        const double before = i < 2 ? 0 : angles[i - 2] - angles[i - 1];
        const double after = i < 2 ? 0 : angles[i] - angles[i - 1];
        if (before > 0 && after >= 0) {
            turns.push_back((static_cast<double>(i) + (before - after) / (before + after) / 2) * 0.03);
            EXPECT_NEAR(angles[i - 1], plate.lowest(), 0.003);
        }
    }
    ASSERT_GT(turns.size(), 5U);
    const double period = (turns.back() - turns.front()) / static_cast<double>(turns.size() - 1);
    EXPECT_NEAR(period, plate.period(), 0.001 * plate.period());
    EXPECT_LT(*std::max_element(angles.begin(), angles.end()), plate.stop + 0.002);
}

} // namespace

TEST(SampleFiles, ASprungPlateSwingsAsItsEnergySays) {
    ColladaScene scene;
    scene.upAxis = "<up_axis>Y_UP</up_axis>";
    scene.gravity = "0 -9.81 0</gravity><time_step>0.03</time_step><gravity>0 -9.81 0";
    const std::string plate = box("3.426818 0.15 1.581087", "<hollow>true</hollow>");
    scene.add("beam", "<translate>0 3.74398 -2.462326</translate>", fixed + plate);
    scene.add("plate", "<translate>0 4.404967 -0.777002</translate><rotate>1 0 0 -24.244583</rotate>", plate);
    addHinge(scene, refAttachment("beam", "<translate>0 0.001318 0.200841</translate>"),
             attachment("plate", "<translate>0 0.001318 -1.624105</translate>"), "-90 0 0", "90 0 0",
             "<interpenetrate>1</interpenetrate><spring><angular><stiffness>1</stiffness></angular><linear/></spring>");
    LoadedWorld made(scene);
    expectSwingsAsAuthored(made);
    const std::string sample = samplesFolder() + "/springs_limits.dae";
    if (std::filesystem::exists(sample)) {
        LoadedWorld loaded;
        loaded.world->loadScene(sample, Pose(), loaded);
        expectSwingsAsAuthored(loaded);
    }
}

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
