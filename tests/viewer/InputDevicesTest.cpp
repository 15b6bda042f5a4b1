// Joysticks, by SDL's virtual ones, bindings and highlights; what needs no window.

#include <tests/viewer/ViewerTest.h>

#include <viewer/Glow.h>
#include <viewer/components/HighlightComponent.h>
#include <viewer/input/Bindings.h>
#include <viewer/input/Joysticks.h>
#include <viewer/input/KeyCodes.h>

#include <agent/Input.h>

#include <SDL.h>
#include <osg/ApplicationUsage>
#include <osgGA/GUIEventAdapter>

namespace tessarin::viewer {
namespace {

using agent::Input;

/// A game pad with six axes, ten buttons and a hat.
struct VirtualPad {
    void unplug() const {
        for (int i = 0; i < SDL_NumJoysticks(); ++i)
            if (SDL_JoystickGetDeviceInstanceID(i) == id)
                SDL_JoystickDetachVirtual(i);
    }

    SDL_Joystick* get() const { return SDL_JoystickFromInstanceID(id); }

    const int index = SDL_JoystickAttachVirtual(SDL_JOYSTICK_TYPE_GAMECONTROLLER, 6, 10, 1);
    const SDL_JoystickID id = SDL_JoystickGetDeviceInstanceID(index);
};

TEST(JoysticksTest, FeedTheInputWhileTheyArePluggedInAndLetGoThen) {
    Joysticks joysticks;
    const auto axis = [](int stick, int number) { return Input::instance()->getJoystickAxis(stick, number).value; };
    const auto isPressed = [](const std::string& code) {
        return Input::instance()->isButtonCodePressed("joystick " + code);
    };
    const VirtualPad first, second;
    joysticks.poll();
    SDL_JoystickSetVirtualAxis(first.get(), 1, -32768);
    SDL_JoystickSetVirtualAxis(second.get(), 5, 16384);
    SDL_JoystickSetVirtualButton(second.get(), 3, 1);
    SDL_JoystickSetVirtualHat(second.get(), 0, SDL_HAT_LEFTUP);
    joysticks.poll();
    EXPECT_EQ(axis(0, 1), -1);
    EXPECT_NEAR(axis(1, 5), 0.5, 1e-4);
    EXPECT_TRUE(axis(1, 6) == -1 && axis(1, 7) == 1) << "the hat, to the right and upwards";
    EXPECT_TRUE(isPressed("1 button 3") && !isPressed("0 button 3"));

    SDL_JoystickSetVirtualButton(first.get(), 9, 1);
    joysticks.poll();
    first.unplug();
    joysticks.poll();
    EXPECT_FALSE(isPressed("0 button 9"));
    EXPECT_EQ(axis(0, 1), 0);
    EXPECT_TRUE(isPressed("1 button 3")) << "the other one keeps its number";

    const VirtualPad third;
    joysticks.poll();
    SDL_JoystickSetVirtualButton(third.get(), 0, 1);
    joysticks.poll();
    EXPECT_TRUE(isPressed("0 button 0")) << "it takes the number that is free";
    third.unplug();
    second.unplug();
    joysticks.poll();
    EXPECT_EQ(axis(1, 6), 0);
}

using BindingsTest = ViewerTest;

TEST_F(BindingsTest, AFileGoesOverTheDefaultsAndComesBackAsItWasWritten) {
    const auto file = write("my.xml", "<Bindings><VirtualInput name='steer' neg='key a' pos='key d'/>"
                                      "<VirtualInput name='boost' joyNum='2' axis='4' scale='-0.5' dead='0.25'/>"
                                      "</Bindings>");
    ASSERT_EQ(run({"--bindings", file, "--write-bindings", folder / "all.xml"}), 0) << err.str();
    Bindings bindings;
    bindings.read(folder / "all.xml");
    bindings.giveToInput();

    Input& input = *Input::instance();
    for (const char* key : {"key d", "key up"})
        input.pressButton(key);
    input.setJoystickAxisValue(0, 0, -1);
    input.setJoystickAxisValue(2, 4, 1);
    EXPECT_EQ(input.getAxis("steer"), 1) << "the axis of the default has gone";
    EXPECT_EQ(input.getAxis("drive"), 1) << "what the file doesn't name stays";
    EXPECT_EQ(input.getAxis("boost"), -0.5);
    input.setJoystickAxisValue(2, 4, 0.25);
    EXPECT_EQ(input.getAxis("boost"), 0);
    for (const char* key : {"key d", "key up"})
        input.releaseButton(key);

    EXPECT_EQ(run({"--write-bindings", folder / "again.xml", "--bindings", folder / "all.xml"}), 0);
    EXPECT_EQ(textOf(folder / "all.xml"), textOf(folder / "again.xml"));

    const osg::ref_ptr<osg::ApplicationUsage> usage = new osg::ApplicationUsage;
    bindings.read(write("horn.xml", "<Bindings><VirtualInput name='horn' pos='key g' neg='siren'/>"
                                    "<VirtualInput name='siren' pos='key u' neg='mouse 4'/>"
                                    "<VirtualInput name='bell' pos='key r'/>"
                                    "<VirtualInput name='gong' pos='joystick 11 button 0'/></Bindings>"));
    usage->addKeyboardMouseBinding("a", "another handler's");
    usage->addKeyboardMouseBinding("b", "another handler's");
    bindings.describe(*usage);
    EXPECT_EQ(usage->getKeyboardMouseBindings().at("d, a"), "Steer: right, left");
    EXPECT_EQ(usage->getKeyboardMouseBindings().at("g, siren"), "horn") << "the help screen lists every key";
    EXPECT_EQ(usage->getKeyboardMouseBindings().at("r"), "Begin anew from the files; bell");
    EXPECT_EQ(usage->getKeyboardMouseBindings().count("a"), 0U) << "what is bound is kept from the others";
    EXPECT_EQ(usage->getKeyboardMouseBindings().count("b"), 1U);
}

TEST_F(BindingsTest, WhatIsWrongIsToldInALine) {
    const std::string missing = folder / "missing.xml";
    EXPECT_EQ(failure({"--bindings", missing, "x.xml"}), missing + ": no such file");
    const auto refusal = [&](const std::string& text) {
        const std::string file = write("bad.xml", text);
        std::string line = failure({"--bindings", file, "x.xml"});
        for (std::size_t at; (at = line.find(file)) != std::string::npos;)
            line.replace(at, file.size(), "FILE");
        return line;
    };
    EXPECT_EQ(refusal("<Keys/>"), "FILE: no bindings, its root element is Keys and not Bindings (FILE:1)");
    EXPECT_EQ(refusal("<Bindings><VirtualInput"), "FILE: unclosed token inside <Bindings> of line 1 (FILE:1:11)");
    for (const auto& [binding, line] :
         {std::pair<std::string, std::string>("<Input/>", "unknown element Input"),
          {"<VirtualInput pos='key a'/>", "it has no name"},
          {"<VirtualInput name='a' key='a'/>", "unknown attribute key"},
          {"<VirtualInput name='a' axis='one'/>", "axis=\"one\" is no number"},
          {"<VirtualInput name='a' scale='0'/>", "scale is to be a number other than 0"},
          {"<VirtualInput name='a' scale='nan'/>", "scale is to be a number other than 0"},
          {"<VirtualInput name='a' scale='inf'/>", "scale is to be a number other than 0"},
          {"<VirtualInput name='a' dead='-0.1'/>", "dead is to be 0 or more"},
          {"<VirtualInput name='a' dead='nan'/>", "dead is to be 0 or more"},
          {"<VirtualInput name='a' neg='key Lefft'/>", "no key is called \"key Lefft\""},
          {"<VirtualInput name='a' pos='mouse 3'/>", "no key, button or input is called \"mouse 3\""},
          {"<VirtualInput name='a' pos='joystick 0 button 01'/>",
           "no key, button or input is called \"joystick 0 button 01\""},
          {"<VirtualInput name='a'><pos>key a</pos></VirtualInput>", "unknown element pos"},
          {"<VirtualInput name='a' axis='-2' joyNum='0'/>", "axis is to be 0 or more, or -1 for none"},
          {"<VirtualInput name='a' axis='1'/>", "an axis needs the joyNum of its joystick"}})
        EXPECT_EQ(refusal("<Bindings><VirtualInput name='a'/>" + binding + "</Bindings>"),
                  "FILE: binding 2: " + line + " (FILE:1)");
}

TEST(HighlightTest, GoesWithItsComponent) {
    AgentNode agent("a");
    for (const bool isDeleted : {true, false}) {
        auto* const highlight = new HighlightComponent;
        agent.addComponent(highlight);
        Input::instance()->setClickedNode(agent.getOsgTransform());
        agent.sendEvent(agent::AgentEvent::MOUSE_ENTER);
        EXPECT_GT(getGlow(*agent.getOsgTransform(), Glow::HIGHLIGHT).a(), 0);
        if (!isDeleted)
            agent.removeComponent(highlight);
        delete highlight;
        EXPECT_EQ(getGlow(*agent.getOsgTransform(), Glow::HIGHLIGHT).a(), 0);
    }
}

TEST(KeyCodesTest, AreReadable) {
    using Event = osgGA::GUIEventAdapter;
    const std::pair<int, const char*> codes[] = {{'a', "key a"},
                                                 {'7', "key 7"},
                                                 {'+', "key +"},
                                                 {' ', "key space"},
                                                 {0xe4, "key 0xe4"},
                                                 {Event::KEY_F12, "key f12"},
                                                 {Event::KEY_Page_Up, "key page up"},
                                                 {Event::KEY_Left, "key left"},
                                                 {Event::KEY_KP_4, "key keypad 4"},
                                                 {Event::KEY_KP_Left, "key keypad 4"}};
    for (const auto& [key, code] : codes)
        EXPECT_EQ(keyCode(key), code);
}

} // namespace
} // namespace tessarin::viewer
