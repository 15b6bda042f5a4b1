// What a person does at a window: real events of the display server, made by xdotool.

#include <tests/doubles/RecordingComponent.h>
#include <tests/viewer/ColladaText.h>

#include <viewer/FrameLoop.h>
#include <viewer/Framing.h>
#include <viewer/Glow.h>
#include <viewer/Hand.h>
#include <viewer/Scene.h>
#include <viewer/Session.h>
#include <viewer/Window.h>
#include <viewer/input/Bindings.h>

#include <agent/AgentNode.h>
#include <agent/Input.h>

#include <gtest/gtest.h>
#include <osg/ApplicationUsage>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

namespace tessarin::viewer {
namespace {

using agent::AgentEvent;
using agent::AgentNode;
using agent::Input;
using doubles::Journal;
using doubles::RecordingComponent;

/// A place of this run's own: others may run at the same time.
std::filesystem::path temporary(const std::string& name) {
    return std::filesystem::temp_directory_path() / (std::to_string(getpid()) + "_" + name);
}

/// A cube that floats, beside one that stays where it is and before one without a body.
std::filesystem::path writeScene() {
    const std::string shape = "<shape><box><half_extents>0.5 0.5 0.5</half_extents></box>"
                              "<translate>0.5 0.5 0.5</translate></shape>";
    const std::string nodes = "<node id='brick'><instance_geometry url='#cube'/></node>"
                              "<node id='post'><translate>2 0 0</translate><instance_geometry url='#cube'/></node>"
                              "<node id='scenery'><translate>0 3 0</translate><instance_geometry url='#cube'/></node>";
    const std::string brick = "<rigid_body sid='brick'><technique_common>" + shape + "</technique_common></rigid_body>";
    const std::filesystem::path file = temporary("tessarin_hands_on.dae");
    std::ofstream(file) << colladaText("Z_UP", nodes, brick + bodyText("post", shape),
                                       instanceText("brick", "brick") + instanceText("post", "post"));
    return file;
}

constexpr int width = 400, height = 300;

class HandsOnTest : public testing::Test {
protected:
    HandsOnTest() {
        window.standAt(standBefore(findSubject(scene.getGraph()), window.getLens()));
        getAgent("brick").addComponent(new RecordingComponent(
            &journal, "", RecordingComponent::Events{AgentEvent::MOUSE_PRESS, AgentEvent::MOUSE_ENTER}));
        do_("mousemove 5 5");
        EXPECT_TRUE(comes([&] { return isAt(5, 5); }));
    }
    ~HandsOnTest() override { std::filesystem::remove(file); }

    /// Runs frames until something has come; false if it doesn't.
    bool comes(const std::function<bool()>& it) {
        for (int frame = 0; frame < 600; ++frame) {
            session.frame(1.0 / 60);
            if (it())
                return true;
            const FrameLoop::Picture picture(loop);
            window.draw();
        }
        return false;
    }

    static void do_(const std::string& what) { ASSERT_EQ(std::system(("xdotool " + what).c_str()), 0) << what; }

    static bool isAt(int x, int y) {
        int mouseX = 0, mouseY = 0;
        Input::instance()->getMouse(mouseX, mouseY);
        return std::abs(mouseX - x) < 3 && std::abs(mouseY - (height - y)) < 3;
    }

    AgentNode& getAgent(const std::string& name) { return *scene.getRoot().getChild(name); }
    double getX(const std::string& name) { return getAgent(name).getMatrix()(0, 3); }

    /// The middle of a cube in the window, and so many pixels beside it.
    std::string placeOf(const std::string& name, int aside = 0) {
        osg::Camera& camera = *window.getViewer().getCamera();
        const osg::Vec3d place = osg::Vec3d(getX(name) + 0.5, 0.5, 0.5) * camera.getViewMatrix() *
                                 camera.getProjectionMatrix() * camera.getViewport()->computeWindowMatrix();
        return std::to_string(int(place.x()) + aside) + " " + std::to_string(height - int(place.y()));
    }

    bool isRecorded(const std::string& hook) {
        return std::find(journal.begin(), journal.end(), hook) != journal.end();
    }

    const std::filesystem::path file = writeScene();
    Journal journal;
    Scene scene{file};
    osg::ref_ptr<osg::ApplicationUsage> usage = new osg::ApplicationUsage;
    Window window{*Window::open("hands on", width, height), scene.getGraph(), *usage};
    FrameLoop loop{scene};
    Bindings bindings;
    Session session{scene, loop, window, bindings};
    Input& input = *Input::instance();
};

TEST_F(HandsOnTest, KeysAndWheelReachTheInputAndNothingSticks) {
    do_("keydown Left keydown shift keydown a keydown F1");
    EXPECT_TRUE(comes([&] { return input.isButtonCodePressed("key f1"); }));
    EXPECT_TRUE(input.isButtonCodePressed("key a") && input.isButtonCodePressed("key shift left"));
    EXPECT_EQ(input.getAxis("steer"), -1);
    do_("keyup shift keyup a keyup F1");
    EXPECT_TRUE(comes([&] { return !input.isButtonCodePressed("key a"); })) << "though it came up without shift";

    do_("click 4 click 4");
    double notches = 0, sum = 0;
    EXPECT_TRUE(comes([&] {
        input.getMouseScrollDelta(notches);
        return (sum += notches) == 2;
    }));
    session.frame(0);
    input.getMouseScrollDelta(notches);
    EXPECT_EQ(notches, 0) << "a wheel turns for a frame";

    const osg::ref_ptr<osg::GraphicsContext> other = Window::open("another window", 50, 50);
    other->realize();
    do_("mousemove 200 290 mousedown 1");
    EXPECT_TRUE(comes([&] { return input.isButtonCodePressed("mouse 1"); }));
    EXPECT_TRUE(input.isButtonCodePressed("key left"));
    do_("search --sync --name 'another window' windowfocus");
    EXPECT_TRUE(comes([&] { return !input.isButtonCodePressed("key left"); }));
    EXPECT_TRUE(comes([&] { return !input.isButtonCodePressed("mouse 1"); }));
    do_("keyup Left mouseup 1 mousemove 200 290 windowfocus 1 keydown x"); // the focus is where the cursor is
    EXPECT_TRUE(comes([&] { return input.isButtonCodePressed("key x"); }));
    do_("mousemove 700 590");
    EXPECT_TRUE(comes([&] { return !input.isButtonCodePressed("key x"); }));
    do_("keyup x");
}

TEST_F(HandsOnTest, TheCursorHighlightsSelectsAndDrags) {
    osg::Transform& brick = *getAgent("brick").getOsgTransform();
    do_("mousemove " + placeOf("brick"));
    EXPECT_TRUE(comes([&] { return isRecorded("mouseEnter"); }));
    EXPECT_GT(getGlow(brick, Glow::HIGHLIGHT).a(), 0);
    EXPECT_FALSE(isRecorded("mousePress"));

    const osg::Matrixd view = window.getViewer().getCamera()->getViewMatrix();
    do_("mousedown 1");
    EXPECT_TRUE(comes([&] { return isRecorded("mousePress"); }));
    EXPECT_EQ(Hand::instance().getSelected(), &getAgent("brick"));
    const double before = getX("brick");
    do_("mousemove " + placeOf("brick", -60));
    EXPECT_TRUE(comes([&] { return getX("brick") < before - 0.1; }));
    EXPECT_EQ(window.getViewer().getCamera()->getViewMatrix(), view) << "the camera keeps still meanwhile";
    getAgent("brick").getComponent("DragComponent")->setAsString("frequency", "-3");
    for (int frame = 0; frame < 60; ++frame)
        session.frame(1.0 / 60);
    EXPECT_NEAR(getX("brick"), before, 10) << "what is no frequency throws nothing about";
    do_("mouseup 1");
    EXPECT_TRUE(comes([&] { return !Hand::instance().isHolding(); }));

    do_("mousemove " + placeOf("post"));
    EXPECT_TRUE(comes([&] { return getGlow(brick, Glow::HIGHLIGHT).a() == 0; }));
    do_("mousedown 1 mousemove_relative 100 30");
    EXPECT_TRUE(comes([&] { return window.getViewer().getCamera()->getViewMatrix() != view; }))
        << "what can't be dragged lets the camera turn";
    EXPECT_EQ(Hand::instance().getSelected(), &getAgent("post"));
    do_("mouseup 1");
}

TEST_F(HandsOnTest, RaysReachSubjectsOfAnySizeBeforeTheFirstPicture) {
    for (const double size : {1e-3, 1.0, 1e6}) {
        window.standAt(standBefore(osg::BoundingBoxd(0, 0, 0, size, size, size), window.getLens()));
        const osg::Camera& camera = *window.getViewer().getCamera();
        double angle = 0, aspect = 0, near = 0, far = 0;
        camera.getProjectionMatrixAsPerspective(angle, aspect, near, far);
        const double distance = -(osg::Vec3d(size, size, size) / 2 * camera.getViewMatrix()).z();
        EXPECT_TRUE(near < distance - size && distance + size < far) << size;
    }
}

TEST_F(HandsOnTest, TheSelectedBodyIsPushedAsThePersonLooksAndFollowed) {
    Hand::instance().select(&getAgent("brick"));
    const osg::Vec3d right = Hand::instance().getRight();
    const auto getEye = [&] {
        return osg::Matrixd::inverse(window.getViewer().getCamera()->getViewMatrix()).getTrans();
    };
    const osg::Vec3d eye = getEye();
    do_("key v keydown KP_6");
    EXPECT_TRUE(comes([&] { return getX("brick") > 0.5 * right.x(); }));
    EXPECT_NEAR(getAgent("brick").getMatrix()(1, 3) / getX("brick"), right.y() / right.x(), 0.05);
    EXPECT_NEAR((getEye() - eye).x(), getX("brick"), 1e-3) << "the view follows";
    do_("keyup KP_6");
    EXPECT_EQ(getX("post"), 2);
}

TEST_F(HandsOnTest, TheKeysOfTheViewerPauseStepReloadAndEnd) {
    do_("key space");
    EXPECT_TRUE(comes([&] { return session.isPaused(); }));
    const double time = loop.getTime();
    for (int i = 0; i < 5; ++i)
        session.frame(1.0 / 60);
    EXPECT_EQ(loop.getTime(), time);
    do_("key n");
    EXPECT_TRUE(comes([&] { return loop.getTime() > time; }));
    EXPECT_NEAR(loop.getTime(), time + 1.0 / 60, 1e-9);
    EXPECT_TRUE(session.isPaused());

    getAgent("brick").setName("renamed");
    do_("key r");
    EXPECT_TRUE(comes([&] { return scene.getRoot().getChild("brick") != nullptr; }));
    std::filesystem::remove(file);
    getAgent("brick").setName("renamed");
    do_("key r key space");
    EXPECT_TRUE(comes([&] { return !session.isPaused(); }));
    EXPECT_TRUE(scene.getRoot().getChild("renamed")) << "a file that has gone leaves the scene as it was";

    window.getViewer().getUsage(*usage);
    EXPECT_EQ(usage->getKeyboardMouseBindings().at("space"), "Pause, and go on");

    Journal rootJournal;
    RecordingComponent* const recorder =
        new RecordingComponent(&rootJournal, "", RecordingComponent::Events{AgentEvent::WINDOW_RESIZE});
    scene.getRoot().addComponent(recorder);
    do_("search --name 'hands on' windowsize 500 350");
    EXPECT_TRUE(comes([&] { return std::count(rootJournal.begin(), rootJournal.end(), "windowResize") > 0; }));
    recorder->record(nullptr, "");

    do_("key Escape");
    EXPECT_TRUE(comes([&] { return window.isDone(); }));
}

TEST_F(HandsOnTest, AWatchedDocumentIsAppliedEachTimeItIsSaved) {
    const std::filesystem::path document = temporary("tessarin_watched.xml");
    const auto save = [&](const std::string& text) { std::ofstream(document) << text; };
    const auto moveTo = [&](const std::string& x) {
        save("<AgentNode><AgentNode name='post'><Transform><Translate>" + x +
             " 0 0</Translate><Rotate>0 0 0 1</Rotate></Transform></AgentNode></AgentNode>");
    };
    moveTo("3");
    session.watch(document);
    session.frame(0);
    const double first = getX("post");
    moveTo("14.5");
    EXPECT_TRUE(comes([&] { return getX("post") != first; }));
    save("<AgentNode><AgentNode");
    session.frame(0);
    moveTo("5");
    EXPECT_TRUE(comes([&] { return getX("post") == 5; })) << "half a document is waited out";
    EXPECT_EQ(first, 3);
    const AgentNode* const before = &scene.getRoot();
    do_("key r");
    EXPECT_TRUE(comes([&] { return &scene.getRoot() != before; }));
    EXPECT_EQ(getX("post"), 5) << "it holds after a reload too";

    const std::filesystem::path next = temporary("tessarin_next.xml");
    std::filesystem::rename(document, next);
    moveTo("6");
    std::filesystem::rename(document, temporary("tessarin_watched.tmp"));
    std::filesystem::rename(next, document);
    session.frame(0);
    std::filesystem::rename(temporary("tessarin_watched.tmp"), next);
    std::filesystem::last_write_time(next, std::filesystem::last_write_time(document));
    std::filesystem::rename(next, document);
    session.frame(0);
    EXPECT_EQ(getX("post"), 6) << "another file, though of the same size and time";

    getAgent("post").setName("renamed");
    std::filesystem::remove(file);
    do_("key r key space");
    EXPECT_TRUE(comes([&] { return session.isPaused(); }));
    EXPECT_EQ(scene.getRoot().getChild("post"), nullptr) << "a reload that fails changes nothing";
    std::filesystem::remove(document);
}

} // namespace
} // namespace tessarin::viewer
