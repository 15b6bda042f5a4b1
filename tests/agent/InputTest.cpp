#include <agent/Input.h>
#include <tests/agent/AgentTest.h>

#include <cmath>

namespace tessarin::agent {
namespace {

/// "pr=" for a press, a release and the level, "-" in the place of each that is false.
std::string flags(bool pressed, bool released, bool isPressed) {
    return {pressed ? 'p' : '-', released ? 'r' : '-', isPressed ? '=' : '-'};
}

/// An input of the test's own, with what is protected within reach.
class OpenInput : public Input {
public:
    using Input::getInputStatus;

    /// Plays words: +code presses, -code releases, "|" begins a frame, "off" and "on" disable and enable, a number is a
    /// value of axis 2 of joystick -1. Words with questions check: name?flags, axis?flags for that axis, name=value for
    /// what getAxis gives.
    void play(const std::string& script) {
        SCOPED_TRACE(script);
        std::istringstream words(script);
        for (std::string word; words >> word;) {
            const std::size_t question = word.find('?'), equals = word.find('=');
            if (question != std::string::npos)
                EXPECT_EQ(flagsOf(word.substr(0, question)), word.substr(question + 1)) << word;
            else if (equals != std::string::npos)
                EXPECT_EQ(getAxis(word.substr(0, equals)), std::stof(word.substr(equals + 1))) << word;
            else if (word == "|")
                update();
            else if (word == "on" || word == "off")
                setEnabled(word == "on");
            else if (word[0] == '+')
                pressButton(word.substr(1));
            else if (word[0] == '-' && std::isalpha(word[1]))
                releaseButton(word.substr(1));
            else
                setJoystickAxisValue(-1, 2, std::stof(word));
        }
    }

    std::string flagsOf(const std::string& name) const {
        const InputStatus& axis = getJoystickAxis(-1, 2);
        return name == "axis" ? flags(axis.wasPressed, axis.wasReleased, axis.isPressed)
                              : flags(wasButtonPressed(name), wasButtonReleased(name), isButtonPressed(name));
    }

    std::string dump() const {
        std::ostringstream stream;
        dumpInfo(stream);
        return stream.str();
    }
};

TEST(VirtualInputs, KeepTheFirstDefinitionUnderTheirNameAndStayWhereTheyAre) {
    OpenInput input;
    LogCapture log("input");
    input.addVirtualInput({"turn", "key d", "key a", 1.0f, 0.25f, 2});
    EXPECT_THAT(log.take(), ElementsAre("600 Adding virtual input turn\n  axis   2\n  joyNum -1\n  pos    key d\n"
                                        "  neg    key a\n  dead   0.25"));
    input.addVirtualInput({"turn", "other", ""});
    VirtualInput& turn = input.getVirtualInput("turn");
    const InputStatus& axis = input.getJoystickAxis(0, 0);
    for (int i = -200; i < 200; ++i) {
        input.getVirtualInput(std::to_string(i));
        input.setJoystickAxisValue(i, i, 0.5f);
    }
    EXPECT_EQ(input.getVirtualInputNames().size(), 401u);
    EXPECT_TRUE(turn.pos == "key d" && turn.axis == 2 && axis.value == 0.5f);
}

TEST(Buttons, HaveLevelsAndEdgesOfOneFrame) {
    OpenInput input;
    input.addVirtualInput({"jump", "k", ""});
    input.play("k?--- jump?--- +k k?p-= k?p-= jump?p-= | jump?--= +k jump?--= | -k jump?-r- +k jump?pr= -k k?pr- | "
               "-k k?--- +k -k +k -k k?pr- | +k k?p-=");
    input.play("| -k | off +k k?--- jump?--- on k?--- +k off k?--- -k on k?p-= off | on k?--=");
}

TEST(Buttons, HaveCodesThatAreLoggedAndKeptOnlyWhileEnabled) {
    OpenInput input;
    input.addVirtualInput({"turn", "pos", "neg"});
    for (const bool enabled : {false, true}) {
        LogCapture log("input");
        input.setEnabled(enabled);
        input.pressJoystickButton(-1, 3);
        input.releaseJoystickButton(-2, 0);
        input.pressMouseButton(4);
        input.releaseMouseButton(4);
        input.pressButton("");
        Journal lines = log.take();
        EXPECT_EQ(take(lines), enabled ? "600 Press \"joystick button 3\" 600 Release \"joystick -2 button 0\" "
                                         "600 Press \"mouse 4\" 600 Release \"mouse 4\" 600 Press \"\""
                                       : "");
        input.getAxis("turn"); // questions keep nothing
        EXPECT_EQ(input.flagsOf("turn") + input.flagsOf("code") + input.flagsOf("unbound"), "---------");
        for (const char* const code : {"", "pos", "neg", "code", "unbound", "mouse 4", "joystick button 3"})
            EXPECT_EQ(input.getInputStatus(code) != nullptr, enabled) << code;
    }
    EXPECT_EQ(input.flagsOf("") + input.flagsOf("mouse 4"), "---pr-");
}

// The edge zone of every axis ends at 0.11; names have edges at their own dead zones.
TEST(Axes, HaveEdgesExactlyAtTheEndsOfTheirZones) {
    OpenInput input;
    input.addVirtualInput({"wide", "k", "", 1.0f, 0.5f, 2});
    input.addVirtualInput({"tight", "", "", 1.0f, 0.05f, 2});
    for (const char* const frame :
         {"axis?--- wide?--- tight?---", "0.1 axis?--- wide?--- tight?p-=", "0.11 axis?--- wide?--- tight?--=",
          "0.11000001 axis?p-= wide?---", "0.5 axis?--= wide?---", "0.50000006 axis?--= wide?p-= tight?--=",
          "axis?--= wide?--= tight?--=", "0.5 0.9 axis?--= wide?pr= tight?--=", "-1 0.05 axis?-r- wide?-r- tight?-r-",
          "0.7 -0.7 axis?p-= wide?pr- tight?pr-", "-0.11 axis?-r- wide?---", "-0.11000001 +k axis?p-= wide?p-=",
          "nan -k axis?-r- wide?-r-", "off -7 0 0.8 axis?pr= wide?--- tight=0 on wide?p-= tight?p-= tight=0.8"}) {
        input.play(std::string("| ") + frame);
        EXPECT_FALSE(input.getJoystickAxis(2, -1).isPressed || input.getJoystickAxis(0, 2).isPressed);
    }
    input.getVirtualInput("wide").dead = 0.9f;
    input.play("wide?---"); // the dead zone is that of now
}

TEST(VirtualInputs, CombineAxisAndButtonsAndFollowNamesOneLevel) {
    OpenInput input;
    input.addVirtualInput({"turn", "p", "n", -2.0f, 0.25f, 2});
    input.play(
        "0.25 turn=0 turn?--- +p turn=1 turn?p-= -p -0.25 +n turn=-1 | -0.5 turn=1 turn?--- 0.5 turn=-1 turn?p-= "
        "0.25000003 turn=-0.50000006 nan turn=-1 | +p turn=1 turn?p-= -0.75 turn=1.5 off turn=0 turn?---");
    EXPECT_TRUE(input.isAxis("turn") && !input.isAxis("p"));

    input.addVirtualInput({"fire", "f", ""});
    input.addVirtualInput({"alarm", "fire", ""}); // a name where getAxis follows it, and a code otherwise
    input.addVirtualInput({"siren", "alarm", "fire"});
    input.play("on +f fire?p-= f?p-= alarm?--- alarm=1 siren=-1 f=0 nobody=0");
}

TEST(AxisMovesProperty, MatchesAListOfAllValues) {
    std::mt19937 random(1);
    const auto draw = [&] { return random() % 16 > 0 ? static_cast<float>(random() % 41) : NAN; };
    for (int frame = 0; frame < 20000; ++frame) {
        AxisMoves moves;
        const float threshold = draw();
        bool rose = false, fell = false;
        float last = draw();
        for (auto count = random() % 8; count > 0; --count) {
            const float next = draw();
            moves.add(last, next);
            rose = rose || (!(last > threshold) && next > threshold);
            fell = fell || (last > threshold && !(next > threshold));
            last = next;
        }
        ASSERT_TRUE(moves.roseAbove(threshold) == rose && moves.cameBackTo(threshold) == fell) << frame;
    }
}

TEST(InputDump, ShowsAllNamesAndWhatIsNotAtRest) {
    OpenInput input;
    input.addVirtualInput({"turn", "right", "left", 0.5f, 0.0f, 2});
    input.addVirtualInput({"jump", "k", ""});
    input.play("+k -0.25");
    for (const float value : {1.0f, 0.0f})
        input.setJoystickAxisValue(2, 0, value);
    input.setJoystickAxisValue(0, 3, 0.11f); // in the zone and never out of it
    EXPECT_EQ(input.dump(), ",jump=1,turn=-0.125,k  wasPressed isPressed, joy -1:2  -0.25 wasPressed isPressed"
                            ", joy 2:0  wasPressed wasReleased");
    EXPECT_EQ(OpenInput(input).dump(), "") << "copies start with empty tables";
    input.play("| -k off");
    EXPECT_EQ(input.dump(), ",jump=0,turn=0,k  wasReleased, joy -1:2  -0.25 isPressed");
}

TEST(Mouse, GoesOnWhileDisabledButForTheScrollingFlag) {
    EXPECT_EQ(RecordingComponent().input(), Input::instance());
    OpenInput input;
    const auto mouse = [&] {
        int x = 0, y = 0;
        double delta = 0.0;
        input.getMouse(x, y);
        input.getMouseScrollDelta(delta);
        return testing::PrintToString(std::tuple(x, y, delta, input.isMouseScrolling()));
    };
    EXPECT_EQ(mouse(), "(0, 0, 0, false)");
    input.setEnabled(false);
    input.setMouse(3, -4);
    input.updateMouseScrollDelta(-2);
    input.update();
    EXPECT_EQ(mouse(), "(3, -4, -2, false)");
    input.setEnabled(true);
    EXPECT_EQ(mouse(), "(3, -4, -2, true)");
    input.updateMouseScrollDelta(0);
    EXPECT_EQ(mouse(), "(3, -4, 0, false)");
}

} // namespace
} // namespace tessarin::agent
