#include <tests/viewer/ColladaText.h>
#include <tests/viewer/ViewerTest.h>

#include <viewer/LibrarySetup.h>

#include <agent/VisualModelComponent.h>
#include <agent/VisualModelComponentModelLoader.h>
#include <dynamics/DynamicsBody.h>
#include <dynamics/bullet/ColladaBodyNodes.h>
#include <sceneutils/NameNodes.h>

#include <osg/Drawable>
#include <osg/LightSource>
#include <osg/Transform>
#include <osg/ValueObject>
#include <osgDB/ReadFile>
#include <osgUtil/UpdateVisitor>

#include <array>
#include <tuple>

namespace tessarin::viewer {
namespace {

using Box = std::array<double, 6>;
using Boxes = std::vector<Box>;

/// The boxes of all that is drawn, in the frame of the world, and the number of lights.
struct BoxCollector : osg::NodeVisitor {
    explicit BoxCollector(osg::Node& node) : osg::NodeVisitor(TRAVERSE_ACTIVE_CHILDREN) { node.accept(*this); }

    void apply(osg::Drawable& drawable) override {
        osg::BoundingBoxd box;
        for (unsigned i = 0; i < 8; ++i)
            box.expandBy(osg::Vec3d(drawable.getBoundingBox().corner(i)) * osg::computeLocalToWorld(getNodePath()));
        boxes.push_back({box.xMin(), box.yMin(), box.zMin(), box.xMax(), box.yMax(), box.zMax()});
    }
    void apply(osg::LightSource& light) override {
        ++lights;
        traverse(light);
    }

    Boxes boxes;
    int lights = 0;
};

Boxes boxesOf(osg::Node& node) {
    return BoxCollector(node).boxes;
}

/// How many boxes of the first list have no like in the second, each like used once.
std::size_t countMissing(const Boxes& boxes, Boxes others) {
    std::size_t missing = 0;
    for (const Box& box : boxes) {
        const auto like = std::find_if(others.begin(), others.end(), [&](const Box& other) {
            return std::equal(box.begin(), box.end(), other.begin(),
                              [](double a, double b) { return std::abs(a - b) < 1e-4; });
        });
        if (like == others.end())
            ++missing;
        else
            others.erase(like);
    }
    return missing;
}

using ModelLoaderTest = ViewerTest;

// Bodies below scenery and below each other, turned, and scaled unevenly; a part that bears another body's name.
const char* const mixedNodes =
    "<node id='frame' name='frame'><translate>1 2 3</translate><rotate>0 0 1 30</rotate><scale>2 2 2</scale>"
    "<instance_geometry url='#cube'/>"
    "<node id='arm' name='arm'><translate>3 0 0</translate><rotate>1 0 0 20</rotate><scale>1 4 1</scale>"
    "<instance_geometry url='#cube'/>"
    "<node id='ring' name='hand'><translate>0 0 1</translate><instance_geometry url='#cube'/></node>"
    "<node id='hand' name='hand'><translate>0 2 0</translate><rotate>0 0 1 45</rotate>"
    "<instance_geometry url='#cube'/></node></node></node>"
    "<node id='floor' name='floor'><translate>0 -1 0</translate><instance_geometry url='#cube'/></node>";
const char* const box = "<shape><box><half_extents>0.5 0.5 0.5</half_extents></box></shape>";

TEST_F(ModelLoaderTest, AModelLooksAsItsFileDoesAndEachBodyMovesItsOwnPart) {
    for (const char* upAxis : {"Z_UP", "Y_UP", "X_UP"}) {
        const std::filesystem::path file =
            write("floor.dae", colladaText(upAxis, mixedNodes, bodyText("a", box) + bodyText("h", box),
                                           instanceText("a", "arm") + instanceText("h", "hand")));
        const Boxes wanted = boxesOf(*osgDB::readRefNodeFile(file.string()));
        ASSERT_EQ(wanted.size(), 5U);

        Scene scene(file);
        const Boxes shown = boxesOf(scene.getGraph());
        EXPECT_EQ(shown.size(), wanted.size()) << upAxis;
        EXPECT_EQ(countMissing(wanted, shown), 0U) << upAxis;

        AgentNode& root = scene.getRoot();
        ASSERT_TRUE(root.getChildren().size() == 2 && root.getChild("arm") && root.getChild("hand"));
        root.getChild("arm")->getRigidBody()->getBody()->setPosition({100, 0, 0});
        runFrames(scene, 1);
        EXPECT_EQ(countMissing(wanted, boxesOf(scene.getGraph())), 2U) << "the arm and the ring on it, not the hand";
    }
}

// Lights of the model give way to the viewer's.
TEST_F(ModelLoaderTest, AModelWithoutBodiesIsShownWholeButForItsLights) {
    std::string text = colladaText("Y_UP", mixedNodes + std::string("<node><instance_light url='#sun'/></node>"));
    text.insert(text.find("<library_geometries>"),
                "<library_lights><light id='sun'><technique_common><point><color>1 1 1</color></point>"
                "</technique_common></light></library_lights>");
    const std::filesystem::path file = write("plain.dae", text);
    Scene scene(file);
    const BoxCollector plain(*osgDB::readRefNodeFile(file.string())), shown(scene.getGraph());
    EXPECT_TRUE(plain.lights == 1 && shown.lights == 0);
    EXPECT_EQ(countMissing(plain.boxes, shown.boxes), 0U);
    EXPECT_TRUE(scene.getRoot().getChildren().empty());
}

TEST_F(ModelLoaderTest, NothingIsMissingOrTwiceHoweverAFileNamesItsBodies) {
    const std::string whole =
        colladaText("Z_UP",
                    "<node id='one'><instance_geometry url='#cube'/></node>"
                    "<node id='two'><translate sid='at'>5 0 0</translate><scale>1 2 1</scale><instance_geometry "
                    "url='#cube'/></node>"
                    "<node sid='nameless'><translate>9 0 0</translate><instance_geometry url='#cube'/></node>",
                    bodyText("a", box) + bodyText("b", box), instanceText("a", "one") + instanceText("b", "two"));
    const Boxes wanted = boxesOf(*osgDB::readRefNodeFile(write("whole.dae", whole).string()));
    ASSERT_EQ(wanted.size(), 3U);
    const auto source = [](const std::string& id, const std::string& array, const std::string& numbers) {
        return "<source id='" + id + "'><" + array + " id='" + id + "a' count='2'>" + numbers + "</" + array +
               "><technique_common><accessor source='#" + id +
               "a' count='2'><param name='TIME' type='float'/></accessor>"
               "</technique_common></source>";
    };
    const std::string animation =
        "<library_animations><animation>" + source("t", "float_array", "0 1") + source("z", "float_array", "7 8") +
        source("i", "Name_array", "LINEAR LINEAR") +
        "<sampler id='s'><input semantic='INPUT' source='#t'/><input semantic='OUTPUT' source='#z'/>"
        "<input semantic='INTERPOLATION' source='#i'/></sampler><channel source='#s' target='two/at.Z'/>"
        "</animation></library_animations>";
    const std::tuple<std::string, std::string, std::size_t> changes[] = {
        {"<instance_physics_scene url='#world'/>", "", 0},
        {"<instance_visual_scene url='#scene'/>", "", 2},
        {"target='#two'", "target='two'", 2},
        {"target='#two'", "target='#t%77o'", 2},
        {"target='#two'", "target='x.dae#two'", 2},
        {"body='b'", "body='nobody'", 1},
        {"target='#two'", "target='scene/nameless'", 2},
        {"<library_geometries>", animation + "<library_geometries>", 2},
    };
    for (const auto& [from, to, bodies] : changes) {
        SCOPED_TRACE(to);
        std::string text = whole;
        Scene scene(write("x.dae", text.replace(text.find(from), from.size(), to)));
        EXPECT_EQ(scene.getRoot().getChildren().size(), bodies);
        osgUtil::UpdateVisitor updates; // as before each picture
        updates.setFrameStamp(new osg::FrameStamp);
        scene.getGraph().accept(updates);
        const Boxes shown = boxesOf(scene.getGraph());
        EXPECT_EQ(shown.size(), wanted.size());
        EXPECT_EQ(countMissing(wanted, shown), 0U);
    }

    std::string text = whole;
    write("x.dae", text.replace(text.find("body='b'"), 8, "body='nobody'"));
    const std::string model = "<AgentNode name='model'><Component class='VisualModelComponent' "
                              "name='VisualModelComponent'><field name='filePath' value='x.dae'/></Component>"
                              "<Component class='GeometryComponent' name='GeometryComponent'/></AgentNode>";
    Scene scene(write("root.xml", "<AgentNode name='root'/>"),
                {write("patch.xml", "<AgentNode name='root'>" + model + "</AgentNode>")});
    EXPECT_EQ(boxesOf(scene.getGraph()).size(), 2U) << "a patch brings a model: all but the body without geometry";
}

struct SharedNames {
    const char *nodes, *targets, *names;
    std::size_t moreShown = 0;
};

std::string placed(const std::string& id, const std::string& name, int x, const std::string& inside = {}) {
    return "<node id='" + id + "' name='" + name + "'><translate>" + std::to_string(x) +
           " 0 0</translate><instance_geometry url='#cube'/>" + inside + "</node>";
}

std::string namesOf(AgentNode& root) {
    std::string names;
    for (AgentNode* const child : root.getChildren())
        names += (names.empty() ? "" : ",") + child->getName();
    return names;
}

/// How each body's box moves: as many boxes as leave their place when the body does.
std::vector<std::size_t> movedByEachBody(Scene& scene) {
    std::vector<std::size_t> moved;
    for (AgentNode* const child : scene.getRoot().getChildren()) {
        const Boxes before = boxesOf(scene.getGraph());
        child->getRigidBody()->getBody()->setPosition({1000.0 + 10 * double(moved.size()), 0, 0});
        runFrames(scene, 1);
        const Boxes after = boxesOf(scene.getGraph());
        EXPECT_EQ(after.size(), before.size());
        moved.push_back(countMissing(before, after));
    }
    return moved;
}

// COLLADA wants only ids to differ. The first of two bodies keeps the name that they share.
TEST_F(ModelLoaderTest, BodiesWhoseNodesShareANameAreSeenEachAndFoundAgain) {
    const std::string three = placed("a", "brick", 0) + placed("b", "brick", 3) + placed("c", "brick", 6);
    const std::string taken = three + placed("d", "b", 9) + placed("e", "brick 2", 12);
    const std::string scenery = placed("s", "brick", 0, placed("b", "x", 3)) + placed("a", "brick", 6);
    const std::string instanced = "<node><translate>5 0 0</translate><instance_node url='#a'/></node>" + three;
    const SharedNames cases[] = {
        {three.c_str(), "abc", "brick,b,c"},
        {three.c_str(), "cba", "brick,b,a"},
        {taken.c_str(), "abc", "brick,brick 3,c"},    // names that are there already
        {taken.c_str(), "deba", "b,brick 2,brick,a"}, // and are those of bodies, too
        {scenery.c_str(), "a", "brick"},              // a node of the scenery comes first
        {scenery.c_str(), "ab", "brick,x"},
        {instanced.c_str(), "a", "brick"},          // the first instance is the body's
        {instanced.c_str(), "aab", "brick,a,b", 1}, // and two bodies on one node show it each
        {three.c_str(), "aa", "brick,a", 1},
    };
    for (const SharedNames& shared : cases) {
        SCOPED_TRACE(std::string(shared.targets) + " in " + shared.nodes);
        std::string instances;
        for (const char target : std::string(shared.targets))
            instances += instanceText("body", {target});
        const std::filesystem::path file =
            write("same.dae", colladaText("Z_UP", shared.nodes, bodyText("body", box), instances));
        const Boxes wanted = boxesOf(*osgDB::readRefNodeFile(file.string()));
        Scene scene(file);
        EXPECT_EQ(namesOf(scene.getRoot()), shared.names);
        const Boxes shown = boxesOf(scene.getGraph());
        EXPECT_EQ(shown.size(), wanted.size() + shared.moreShown);
        EXPECT_EQ(countMissing(wanted, shown), 0U);

        scene.write(folder / "written.xml");
        const std::vector<std::size_t> each(std::string(shared.targets).size(), 1);
        EXPECT_EQ(movedByEachBody(scene), each);
        Scene again(folder / "written.xml");
        EXPECT_EQ(namesOf(again.getRoot()), shared.names);
        EXPECT_EQ(countMissing(shown, boxesOf(again.getGraph())), 0U);
        EXPECT_EQ(movedByEachBody(again), each);
    }
    write("same.dae",
          colladaText("Z_UP", three, bodyText("body", box), instanceText("body", "a") + instanceText("body", "b")));
    const std::string geometry = "<Component class='GeometryComponent' name='GeometryComponent'/>";
    std::string both;
    for (const std::string name : {"left", "right"})
        both += "<AgentNode name='" + name +
                "'><Component class='VisualModelComponent' name='VisualModelComponent'>"
                "<field name='filePath' value='same.dae'/></Component><AgentNode name='brick'>" +
                geometry + "</AgentNode><AgentNode name='b'>" + geometry + "</AgentNode></AgentNode>";
    Scene two(write("two.xml", "<AgentNode name='root'>" + both + "</AgentNode>"));
    for (AgentNode* const child : two.getRoot().getChildren())
        for (AgentNode* const body : child->getChildren())
            EXPECT_EQ(boxesOf(*body->getOsgTransform()).size(), 1U) << child->getName() << ' ' << body->getName();
}

/// What the documentation shows to hosts.
struct NamingLoader : agent::VisualModelComponentModelLoader {
    osg::ref_ptr<osg::Node> loadModel(const std::string& path) override {
        const osg::ref_ptr<osg::Node> model = VisualModelComponentModelLoader::loadModel(path);
        std::vector<sceneutils::NameOfId> names;
        for (const dynamics::bullet::ColladaBodyNode& body : dynamics::bullet::readColladaBodyNodes(path))
            names.emplace_back(body.nodeId, body.bodyName);
        if (model && isNaming)
            sceneutils::nameNodes(*model, names);
        return model;
    }
    bool isNaming = true;
};

TEST_F(ModelLoaderTest, AHostsLoaderCanNameNodesAfterBodies) {
    const std::string nodes = placed("s", "brick", 50) + placed("a", "brick", 0) + placed("b", "brick", 3) +
                              placed("c", "c", 6) + placed("d", "own", 9);
    const std::filesystem::path file = write(
        "host.dae", colladaText("Z_UP", nodes, bodyText("body", box),
                                instanceText("body", "a") + instanceText("body", "b") + instanceText("body", "d")));
    Scene scene(file); // for its world
    NamingLoader loader;
    agent::VisualModelComponent::setModelLoader(&loader);
    const std::string geometry = "<Component class='GeometryComponent' name='GeometryComponent'/></AgentNode>";
    for (const bool isNaming : {true, false}) {
        loader.isNaming = isNaming;
        const std::unique_ptr<AgentNode> root(AgentNode::createFromXmlString(
            "<AgentNode name='root'><Component class='VisualModelComponent' name='VisualModelComponent'><field "
            "name='filePath' value='" +
            file.string() + "'/></Component><AgentNode name='brick'>" + geometry + "<AgentNode name='b'>" + geometry +
            "<AgentNode name='own'>" + geometry + "</AgentNode>"));
        std::string ids;
        for (AgentNode* const child : root->getChildren()) {
            std::string id;
            osg::Node* const node = child->getComponent("GeometryComponent")->getOsgNode();
            ids += child->getName() + (node->getUserValue("dae_node_id", id) ? "=" + id : " all") + " ";
        }
        EXPECT_EQ(ids, isNaming ? "brick=a b=b own=d " : "brick=s b all own=d ");
    }
    setUpLibrary();
}

TEST_F(ModelLoaderTest, WhatOnlyThePhysicsTellsIsShownToo) {
    const std::string shapes =
        "<shape><translate>0 0 5</translate><rotate>1 0 0 90</rotate><cylinder><height>4</height>"
        "<radius>1 1</radius></cylinder></shape><shape><sphere><radius>2</radius></sphere></shape>";
    const std::string nodes = "<node id='stone'><translate>10 0 0</translate><scale>3 3 3</scale>"
                              "<instance_geometry url='#hull'/></node>"
                              "<node id='lamp'><translate>0 7 0</translate></node>";
    Scene scene(write("physics.dae",
                      colladaText("Z_UP", nodes, bodyText("s", box) + bodyText("l", shapes),
                                  instanceText("s", "stone") + "<instance_rigid_body body='l' target='lamp'/>")));
    const Boxes boxes = boxesOf(scene.getGraph());
    EXPECT_EQ(boxes.size(), 3U);
    const Boxes wanted = {{10, 0, 0, 13, 3, 3}, {-1, 6, 3, 1, 8, 7}, {-2, 5, -2, 2, 9, 2}};
    EXPECT_EQ(countMissing(wanted, boxes), 0U);
}

} // namespace
} // namespace tessarin::viewer
