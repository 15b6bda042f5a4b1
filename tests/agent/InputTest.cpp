#include <agent/Input.h>
#include <tests/doubles/LogCapture.h>
#include <tests/doubles/RecordingComponent.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace tessarin::agent {

namespace {

using doubles::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

/// An input of the test's own, with what is protected within reach.
class OpenInput : public Input {
public:
    OpenInput() = default;
    OpenInput(const OpenInput&) = default;
    OpenInput& operator=(const OpenInput&) = default;
    using Input::getInputStatus;
    using Input::getVirtualInputPtr;

    VirtualInput& bind(const std::string& name, const std::string& pos, const std::string& neg = {}, int axis = -1,
                       float dead = 0.0f, float scale = 1.0f) {
        VirtualInput input;
        input.name = name;
        input.pos = pos;
        input.neg = neg;
        input.axis = axis;
        input.dead = dead;
        input.scale = scale;
        addVirtualInput(input);
        return getVirtualInput(name);
    }

    std::string dump() const {
        std::ostringstream stream;
        dumpInfo(stream);
        return stream.str();
    }
};

/// "pr=" for a press, a release and the level, "-" in the place of each that is false.
std::string flags(bool pressed, bool released, bool isPressed) {
    return {pressed ? 'p' : '-', released ? 'r' : '-', isPressed ? '=' : '-'};
}

std::string flags(const InputStatus& status) {
    return flags(status.wasPressed, status.wasReleased, status.isPressed);
}

std::string codeFlags(const Input& input, const std::string& code) {
    return flags(input.wasButtonCodePressed(code), input.wasButtonCodeReleased(code), input.isButtonCodePressed(code));
}

std::string nameFlags(const Input& input, const std::string& name) {
    return flags(input.wasButtonPressed(name), input.wasButtonReleased(name), input.isButtonPressed(name));
}

} // namespace

TEST(VirtualInput, IsComparedByTheBytesOfItsNameAlone) {
    VirtualInput a, b;
    a.name = b.name = "turn";
    b.axis = 3;
    b.pos = "key d";
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a < b || b < a);
    for (const auto& [low, high] : {std::pair("turn", "turn left"), {"Turn", "turn"}, {"", "a"}, {"z", "\xc3\xa4"}}) {
        a.name = low;
        b.name = high;
        EXPECT_TRUE(a < b && !(b < a) && !(a == b)) << low;
    }
}

TEST(VirtualInput, HasADeadZoneThatHoldsBothItsEnds) {
    VirtualInput input;
    EXPECT_TRUE(input.inDeadZone(0.0f) && input.inDeadZone(-0.0f) && input.inDeadZone(notANumber));
    EXPECT_FALSE(input.inDeadZone(1e-30f) || input.inDeadZone(-1e-30f));
    input.dead = 0.1f;
    EXPECT_TRUE(input.inDeadZone(0.1f) && input.inDeadZone(-0.1f));
    EXPECT_FALSE(input.inDeadZone(std::nextafter(0.1f, 1.0f)) || input.inDeadZone(std::nextafter(-0.1f, -1.0f)));
}

TEST(InputTables, KeepTheFirstDefinitionAndLogBoth) {
    OpenInput input;
    EXPECT_THAT(input.getVirtualInputNames(), IsEmpty());
    LogCapture log("input");
    input.bind("turn", "key d", "key a", 2, 0.25f, 3.0f);
    EXPECT_THAT(log.take(), ElementsAre("600 Adding virtual input turn\n  axis   2\n  joyNum -1\n  pos    key d\n"
                                        "  neg    key a\n  dead   0.25"));
    VirtualInput& stored = input.bind("turn", "other");
    EXPECT_THAT(log.take(), ElementsAre("600 Adding virtual input turn\n  axis   -1\n  joyNum -1\n  pos    other\n"
                                        "  neg    \n  dead   0"));
    EXPECT_EQ(stored.pos + stored.neg, "key dkey a");
    EXPECT_EQ(stored.axis, 2);
    EXPECT_EQ(stored.scale, 3.0f);

    EXPECT_EQ(input.getVirtualInputPtr("Turn"), nullptr);
    EXPECT_EQ(input.getVirtualInput("Turn").name, "");
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_THAT(input.getVirtualInputNames(), ElementsAre("Turn", "turn"));
}

TEST(InputTables, GiveReferencesThatStayValid) {
    OpenInput input;
    VirtualInput& first = input.getVirtualInput("m");
    const InputStatus& axis = input.getJoystickAxis(0, 0);
    input.isButtonCodePressed("m");
    const InputStatus* const button = input.getInputStatus("m");
    ASSERT_NE(button, nullptr);
    for (int i = -500; i < 500; ++i) {
        input.getVirtualInput(std::to_string(i)).pos = "x";
        input.setJoystickAxisValue(i, i, 0.5f);
        input.pressButton(std::to_string(i));
    }
    input.pressButton("m");
    first.pos = "m";
    EXPECT_EQ(input.getVirtualInputPtr("m"), &first);
    EXPECT_TRUE(input.isButtonPressed("m") && button->isPressed);
    EXPECT_EQ(axis.value, 0.5f);
}

TEST(ButtonCodes, AreTextsThatHostsCanWrite) {
    OpenInput input;
    EXPECT_EQ(input.createJoystickCode(-1, 3), "joystick button 3");
    EXPECT_EQ(input.createJoystickCode(-2, 0), "joystick -2 button 0");
    EXPECT_EQ(input.createJoystickCode(0, INT_MIN), "joystick 0 button -2147483648");
    EXPECT_EQ(input.createMouseCode(4), "mouse 4");
    EXPECT_EQ(input.createMouseCode(-1), "mouse -1");
    EXPECT_EQ(input.getInputStatus("mouse 4"), nullptr);
    input.pressJoystickButton(2, 7);
    input.pressMouseButton(1);
    EXPECT_EQ(codeFlags(input, "joystick 2 button 7") + codeFlags(input, "mouse 1"), "p-=p-=");
    input.releaseJoystickButton(2, 7);
    input.releaseMouseButton(1);
    EXPECT_EQ(codeFlags(input, "joystick 2 button 7") + codeFlags(input, "mouse 1"), "pr-pr-");
}

// p press, r release, u update, d disable, e enable; then what the code, and a name bound to it, read.
TEST(Buttons, HaveLevelsAndEdgesOfOneFrame) {
    for (const auto& [calls, expected] : std::initializer_list<std::pair<const char*, const char*>>{
             {"", "---"},      {"p", "p-="},    {"pu", "--="},     {"ppp", "p-="}, {"pup", "--="},  {"pr", "pr-"},
             {"pur", "-r-"},   {"purp", "pr="}, {"puruu", "---"},  {"r", "---"},   {"puu", "--="},  {"prpr", "pr-"},
             {"dp", "---"},    {"dpe", "---"},  {"pdre", "p-="},   {"pd", "---"},  {"pude", "--="}, {"pdue", "--="},
             {"pdrer", "pr-"}, {"dpre", "---"}, {"pudrepu", "--="}}) {
        OpenInput input;
        input.bind("jump", "key space");
        for (const char* call = calls; *call; ++call)
            switch (*call) {
            case 'p':
                input.pressButton("key space");
                break;
            case 'r':
                input.releaseButton("key space");
                break;
            case 'u':
                input.update();
                break;
            default:
                input.setEnabled(*call == 'e');
            }
        EXPECT_EQ(codeFlags(input, "key space"), expected) << calls;
        EXPECT_EQ(codeFlags(input, "key space"), expected) << "reading clears nothing: " << calls;
        EXPECT_EQ(nameFlags(input, "jump"), expected) << calls;
    }
}

TEST(Buttons, LogEveryCallThatIsHeard) {
    OpenInput input;
    LogCapture log("input");
    input.pressButton("a");
    input.pressButton("a");
    input.releaseButton("never pressed");
    input.pressButton("");
    input.releaseMouseButton(2);
    EXPECT_THAT(log.take(), ElementsAre("600 Press \"a\"", "600 Press \"a\"", "600 Release \"never pressed\"",
                                        "600 Press \"\"", "600 Release \"mouse 2\""));
    EXPECT_NE(input.getInputStatus("never pressed"), nullptr);
    EXPECT_EQ(flags(*input.getInputStatus("")), "p-=");
    EXPECT_EQ(codeFlags(input, "") + nameFlags(input, ""), "------");
    EXPECT_EQ(input.dump(), ",  wasPressed isPressed,a  wasPressed isPressed");

    input.setEnabled(false);
    input.pressButton("b");
    input.releaseButton("b");
    input.pressJoystickButton(0, 0);
    input.pressMouseButton(1);
    EXPECT_THAT(log.take(), IsEmpty());
    for (const char* const code : {"b", "joystick 0 button 0", "mouse 1"})
        EXPECT_EQ(input.getInputStatus(code), nullptr) << code;
}

TEST(Axes, HaveEdgesAtTheEdgeZone) {
    const float outside = std::nextafter(0.11f, 1.0f);
    for (const auto& [values, expected] :
         std::initializer_list<std::pair<std::vector<float>, const char*>>{{{0.0f}, "---"},
                                                                           {{0.11f}, "---"},
                                                                           {{-0.11f}, "---"},
                                                                           {{outside}, "p-="},
                                                                           {{-outside}, "p-="},
                                                                           {{0.5f, -0.5f}, "p-="},
                                                                           {{0.5f, 0.0f}, "pr-"},
                                                                           {{-7.0f, 0.11f, 2.0f}, "pr="},
                                                                           {{notANumber}, "---"},
                                                                           {{1.0f, notANumber}, "pr-"}}) {
        OpenInput input;
        input.setEnabled(false);
        for (const float value : values)
            input.setJoystickAxisValue(-1, 2, value);
        const InputStatus& status = input.getJoystickAxis(-1, 2);
        EXPECT_EQ(flags(status), expected);
        EXPECT_TRUE(status.value == values.back() || std::isnan(values.back())) << status.value;
        input.update();
        EXPECT_EQ(flags(status), std::string("--") + expected[2]);
        EXPECT_EQ(flags(input.getJoystickAxis(2, -1)) + flags(input.getJoystickAxis(0, 2)), "------");
    }
}

TEST(VirtualInputs, CombineAxisAndButtons) {
    struct {
        float value;
        const char* down;
        bool isPressed;
        float axis;
    } const rows[] = {{0.0f, "", false, 0.0f},        {0.25f, "", false, 0.0f},  {0.25f, "p", true, 1.0f},
                      {0.5f, "", true, -1.0f},        {0.5f, "n", true, -1.0f},  {-0.5f, "", false, 1.0f},
                      {-0.5f, "p", true, 1.0f},       {-0.75f, "p", true, 1.5f}, {-0.25f, "n", false, -1.0f},
                      {0.0f, "pn", true, 1.0f},       {0.0f, "n", false, -1.0f}, {3.0f, "", true, -6.0f},
                      {notANumber, "n", false, -1.0f}};
    for (const auto& row : rows) {
        OpenInput input;
        input.bind("turn", "p", "n", 4, 0.25f, -2.0f);
        input.setJoystickAxisValue(-1, 4, row.value);
        for (const char* code = row.down; *code; ++code)
            input.pressButton({*code});
        EXPECT_EQ(input.isButtonPressed("turn"), row.isPressed) << row.value << row.down;
        EXPECT_EQ(input.getAxis("turn"), row.axis) << row.value << row.down;
        input.setEnabled(false);
        EXPECT_FALSE(input.isButtonPressed("turn"));
        EXPECT_EQ(input.getAxis("turn"), 0.0f);
        EXPECT_TRUE(input.isAxis("turn") && !input.isAxis("p"));
    }
}

TEST(VirtualInputs, FollowOtherNamesOneLevelAndCodesOtherwise) {
    OpenInput input;
    input.bind("fire", "key f");
    input.bind("alarm", "fire", "siren"); // names, where getAxis follows them
    input.bind("siren", "alarm");
    input.pressButton("key f");
    EXPECT_EQ(input.getAxis("alarm"), 1.0f);
    EXPECT_EQ(nameFlags(input, "fire") + nameFlags(input, "alarm"), "p-=---");
    EXPECT_EQ(input.getAxis("siren"), 0.0f); // two levels away
    EXPECT_EQ(input.getAxis("key f") + input.getAxis("nobody"), 0.0f);
    EXPECT_EQ(nameFlags(input, "key f"), "p-="); // no virtual input, so a code
    EXPECT_EQ(input.getInputStatus("nobody"), nullptr);

    input.pressButton("alarm"); // a code like any other
    EXPECT_EQ(nameFlags(input, "alarm") + nameFlags(input, "siren"), "---p-=");
    input.getVirtualInput("key f");
    EXPECT_EQ(nameFlags(input, "key f") + codeFlags(input, "key f"), "---p-=");
}

TEST(VirtualInputs, AskForEntriesOnlyWhileEnabled) {
    OpenInput input;
    input.bind("turn", "p", "n", 0);
    for (const bool enabled : {false, true}) {
        input.setEnabled(enabled);
        EXPECT_EQ(nameFlags(input, "turn") + codeFlags(input, "code") + nameFlags(input, "unbound"), "---------");
        input.getAxis("turn");
        for (const char* const code : {"p", "n", "code", "unbound"})
            EXPECT_EQ(input.getInputStatus(code) != nullptr, enabled) << code;
        EXPECT_EQ(input.getInputStatus("turn"), nullptr);
    }
}

TEST(VirtualInputs, WithAnAxisHaveEdgesAtTheirDeadZone) {
    OpenInput input;
    const VirtualInput& wide = input.bind("wide", "button", {}, 0, 0.5f);
    input.bind("narrow", {}, {}, 0, 0.05f);
    const auto frame = [&](std::initializer_list<float> values) {
        input.update();
        for (const float value : values)
            input.setJoystickAxisValue(-1, 0, value);
        return nameFlags(input, "wide") + ' ' + nameFlags(input, "narrow");
    };
    EXPECT_EQ(frame({}), "--- ---");
    EXPECT_EQ(frame({0.1f}), "--- p-=");
    EXPECT_EQ(frame({0.5f}), "--- --=");
    EXPECT_EQ(frame({0.6f}), "p-= --=");
    EXPECT_EQ(frame({}), "--= --=") << "held is no edge";
    EXPECT_EQ(frame({0.5f, 0.9f}), "pr= --=") << "gone and back within a frame";
    EXPECT_EQ(frame({-1.0f, 0.05f}), "-r- -r-");
    EXPECT_EQ(frame({0.7f, -0.7f}), "pr- pr-");
    EXPECT_EQ(frame({-1.0f, 0.0f}), "--- ---") << "the negative side presses nothing";
    input.pressButton("button");
    EXPECT_EQ(nameFlags(input, "wide"), "p-=");
    EXPECT_EQ(frame({0.2f}), "--= p-=");
    input.setEnabled(false);
    EXPECT_EQ(frame({0.8f}), "--- ---");
    input.setEnabled(true);
    EXPECT_EQ(nameFlags(input, "wide"), "p-=") << "axes go on while input is disabled";
    input.getVirtualInput("wide").dead = 0.9f;
    EXPECT_EQ(nameFlags(input, "wide"), "--=") << "at the dead zone of now, dead " << wide.dead;
}

TEST(AxisMovesProperty, MatchesAListOfAllValues) {
    std::mt19937 random(1);
    const float lowest = -std::numeric_limits<float>::infinity();
    const float odd[] = {notANumber, lowest, -lowest, -0.0f};
    const auto draw = [&] {
        const auto number = random();
        return number % 16 == 0 ? odd[number / 16 % 4] : static_cast<float>(number / 16 % 41) / 20.0f - 1.0f;
    };
    AxisMoves moves;
    int rises = 0;
    float value = 0.0f;
    for (int frame = 0; frame < 20000; ++frame) {
        std::vector<float> values{value};
        moves.clear();
        for (auto count = random() % 8; count > 0; --count) {
            value = draw();
            moves.add(values.back(), value);
            values.push_back(value);
        }
        for (int i = 0; i < 8; ++i) {
            const float threshold = draw();
            bool rose = false, fell = false;
            for (std::size_t k = 1; k < values.size(); ++k) {
                rose = rose || (!(values[k - 1] > threshold) && values[k] > threshold);
                fell = fell || (values[k - 1] > threshold && !(values[k] > threshold));
            }
            ASSERT_EQ(moves.roseAbove(threshold), rose) << threshold << testing::PrintToString(values);
            ASSERT_EQ(moves.cameBackTo(threshold), fell) << threshold << testing::PrintToString(values);
            rises += rose;
        }
    }
    EXPECT_GT(rises, 10000);
}

TEST(InputDump, ShowsAllNamesAndWhatIsNotAtRest) {
    OpenInput input;
    EXPECT_EQ(input.dump(), "");
    input.bind("turn", "right", "left", 1, 0.0f, 0.5f);
    input.bind("jump", "key space");
    input.bind("sleep", {}, {}, 9);
    input.pressButton("key space");
    input.setJoystickAxisValue(0, 3, 0.11f); // in the zone and never out of it
    input.setJoystickAxisValue(-1, 1, -0.25f);
    input.setJoystickAxisValue(2, 0, 1.0f);
    input.setJoystickAxisValue(2, 0, 0.0f);
    EXPECT_EQ(input.dump(), ",jump=1,sleep=0,turn=-0.125,key space  wasPressed isPressed"
                            ", joy -1:1  -0.25 wasPressed isPressed, joy 2:0  wasPressed wasReleased");
    input.update();
    input.releaseButton("key space");
    EXPECT_EQ(input.dump(), ",jump=0,sleep=0,turn=-0.125,key space  wasReleased, joy -1:1  -0.25 isPressed");
    input.update();
    input.setEnabled(false);
    std::ostringstream stream;
    stream.precision(1);
    stream << std::fixed;
    input.dumpInfo(stream);
    EXPECT_EQ(stream.str(), ",jump=0.0,sleep=0.0,turn=0.0, joy -1:1  -0.2 isPressed");
}

TEST(Mouse, GoesOnWhileDisabledButForTheScrollingFlag) {
    OpenInput input;
    int x = -1, y = -1;
    double delta = -1.0;
    const auto read = [&] { input.getMouse(x, y), input.getMouseScrollDelta(delta); };
    read();
    EXPECT_THAT(std::vector<double>({double(x), double(y), delta}), ElementsAre(0, 0, 0));
    input.setEnabled(false);
    input.setMouse(3, -4);
    input.updateMouseScrollDelta(-2);
    input.update();
    read();
    EXPECT_THAT(std::vector<double>({double(x), double(y), delta}), ElementsAre(3, -4, -2));
    EXPECT_FALSE(input.isMouseScrolling());
    input.setEnabled(true);
    EXPECT_TRUE(input.isMouseScrolling());
    input.setMouseScrolling(false);
    read();
    EXPECT_TRUE(!input.isMouseScrolling() && delta == -2);
    input.setMouseScrolling(true);
    input.updateMouseScrollDelta(0);
    read();
    EXPECT_TRUE(!input.isMouseScrolling() && delta == 0);
}

TEST(ClickedNode, IsNullOnceTheNodeIsGone) {
    OpenInput input;
    EXPECT_EQ(input.getClickedNode(), nullptr);
    osg::ref_ptr<osg::Node> node = new osg::Node, other = new osg::Node;
    input.setClickedNode(node);
    EXPECT_EQ(input.getClickedNode(), node.get());
    EXPECT_EQ(node->referenceCount(), 1);
    node = nullptr;
    EXPECT_EQ(input.getClickedNode(), nullptr);
    input.setClickedNode(other);
    EXPECT_EQ(input.getClickedNode(), other.get());
    input.setClickedNode(nullptr);
    EXPECT_EQ(input.getClickedNode(), nullptr);
}

TEST(TheOneInput, IsWhatComponentsAsk) {
    doubles::RecordingComponent component;
    Input* const input = component.input();
    ASSERT_NE(input, nullptr);
    EXPECT_EQ(Input::instance(), input);
    static_assert(std::has_virtual_destructor_v<Input> && !std::is_copy_constructible_v<Input> &&
                  !std::is_copy_assignable_v<Input>);
}

TEST(CopiesOfInput, StartWithEmptyTables) {
    OpenInput input;
    input.bind("jump", "key space");
    input.pressButton("key space");
    input.setJoystickAxisValue(0, 0, 1.0f);
    const OpenInput copy(input);
    EXPECT_EQ(copy.dump(), "");
    OpenInput assigned;
    assigned.bind("turn", "t");
    assigned = input;
    EXPECT_EQ(assigned.dump(), ",turn=0");
}

} // namespace tessarin::agent
