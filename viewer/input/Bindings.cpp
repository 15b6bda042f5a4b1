#include <viewer/input/Bindings.h>

#include <viewer/QuietReader.h>
#include <viewer/ViewerError.h>
#include <viewer/XmlFile.h>
#include <viewer/input/KeyCodes.h>

#include <agent/FieldText.h>
#include <agent/Input.h>
#include <xml_parser/XMLNode.h>

#include <osg/ApplicationUsage>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <map>

namespace tessarin::viewer {

using agent::FieldText;
using agent::VirtualInput;
using xml_parser::XMLNode;

namespace {

struct Default {
    const char* name;
    const char* pos;
    const char* neg;
    int axis; // of joystick 0
    float scale;
    const char* meaning;
};

constexpr Default defaults[] = {
    {"pause", "key space", "", -1, 1, "Pause, and go on"},
    {"step", "key n", "", -1, 1, "Run one frame, and pause"},
    {"reload", "key r", "", -1, 1, "Begin anew from the files"},
    {"home", "key home", "", -1, 1, "Look at the scene as at first"},
    {"follow", "key v", "", -1, 1, "Follow the selected agent with the view, and stop it"},
    {"show input", "key i", "", -1, 1, "Show the state of all input"},
    {"show agent", "key u", "", -1, 1, "Show or hide the text about the agent under the cursor"},
    {"drive", "key up", "key down", 1, -1, "Drive: forwards, backwards"},
    {"steer", "key right", "key left", 0, 1, "Steer: right, left"},
    {"lift", "key page up", "key page down", -1, 1, "Lift: up, down"},
    {"brake", "key x", "", -1, 1, "Brake"},
    {"push right", "key keypad 6", "key keypad 4", 3, 1, "Push the selected body: right, left"},
    {"push away", "key keypad 8", "key keypad 2", 4, -1, "Push the selected body: away, near"},
    {"push up", "key keypad 9", "key keypad 3", -1, 1, "Push the selected body: up, down"},
};

constexpr float defaultDeadZone = 0.15f;
const std::string keyPrefix = "key ";

VirtualInput make(const Default& from) {
    VirtualInput input;
    input.name = from.name;
    input.pos = from.pos;
    input.neg = from.neg;
    if (from.axis >= 0) {
        input.joyNum = 0;
        input.axis = from.axis;
        input.scale = from.scale;
        input.dead = defaultDeadZone;
    }
    return input;
}

template <class Value>
void readValue(const std::string& attribute, const std::string& text, Value& value) {
    if (!FieldText<Value>::read(text, value))
        throw ViewerError(attribute + "=\"" + text + "\" is no number");
}

/// "joystick 0 button 3", in no other spelling.
bool isJoystickButton(const std::string& code) {
    int joystick = -1, button = -1;
    return std::sscanf(code.c_str(), "joystick %9d button %9d", &joystick, &button) == 2 && joystick >= 0 &&
           button >= 0 && code == agent::Input::instance()->createJoystickCode(joystick, button);
}

/// What comes from devices, or a name.
void requireKnown(const std::string& code, const std::map<std::string, std::size_t>& names) {
    if (code.empty() || isKeyCode(code) || code == "mouse 1" || code == "mouse 2" || code == "mouse 4" ||
        isJoystickButton(code) || names.count(code) > 0)
        return;
    const bool isKey = code.rfind(keyPrefix, 0) == 0;
    throw ViewerError((isKey ? "no key is called \"" : "no key, button or input is called \"") + code + "\"");
}

VirtualInput readInput(const XMLNode& element) {
    if (element.tag != "VirtualInput")
        throw ViewerError("unknown element " + element.tag);
    if (element.getNumChildren() > 0)
        throw ViewerError("unknown element " + element.getChild(0)->tag);
    VirtualInput input;
    for (const auto& [attribute, text] : element.attributes) {
        if (attribute == "name")
            input.name = text;
        else if (attribute == "pos")
            input.pos = text;
        else if (attribute == "neg")
            input.neg = text;
        else if (attribute == "joyNum")
            readValue(attribute, text, input.joyNum);
        else if (attribute == "axis")
            readValue(attribute, text, input.axis);
        else if (attribute == "scale")
            readValue(attribute, text, input.scale);
        else if (attribute == "dead")
            readValue(attribute, text, input.dead);
        else
            throw ViewerError("unknown attribute " + attribute);
    }
    if (input.name.empty())
        throw ViewerError("it has no name");
    if (!std::isfinite(input.scale) || input.scale == 0)
        throw ViewerError("scale is to be a number other than 0");
    if (!(input.dead >= 0))
        throw ViewerError("dead is to be 0 or more");
    if (input.axis < -1)
        throw ViewerError("axis is to be 0 or more, or -1 for none");
    if (input.axis != -1 && input.joyNum < 0)
        throw ViewerError("an axis needs the joyNum of its joystick");
    return input;
}

void addTo(XMLNode& root, const VirtualInput& input) {
    std::map<std::string, std::string>& attributes = root.addChild("VirtualInput")->attributes;
    attributes["name"] = input.name;
    if (!input.pos.empty())
        attributes["pos"] = input.pos;
    if (!input.neg.empty())
        attributes["neg"] = input.neg;
    if (input.axis == -1)
        return;
    attributes["joyNum"] = FieldText<std::int32_t>::write(input.joyNum);
    attributes["axis"] = FieldText<std::int32_t>::write(input.axis);
    attributes["scale"] = FieldText<float>::write(input.scale);
    attributes["dead"] = FieldText<float>::write(input.dead);
}

auto findIn(const std::vector<VirtualInput>& inputs, const std::string& name) {
    return std::find_if(inputs.begin(), inputs.end(), [&](const VirtualInput& input) { return input.name == name; });
}

/// As it stands on the key: "page up" for "key page up".
std::string withoutPrefix(const std::string& code) {
    return code.rfind(keyPrefix, 0) == 0 ? code.substr(keyPrefix.size()) : code;
}

/// Both keys in short: "page up, down".
std::string nameKeys(const VirtualInput& input) {
    const std::string pos = withoutPrefix(input.pos), neg = withoutPrefix(input.neg);
    if (pos.empty() || neg.empty())
        return pos + neg;
    const std::size_t words = pos.rfind(' ') + 1;
    return pos + ", " + (pos.compare(0, words, neg, 0, words) == 0 ? neg.substr(words) : neg);
}

} // namespace

Bindings::Bindings() {
    std::transform(std::begin(defaults), std::end(defaults), std::back_inserter(all), make);
}

void Bindings::read(const std::filesystem::path& file) {
    QuietReader reader(file);
    const XMLNode& root = *reader.getRoot();
    if (root.tag != "Bindings")
        throw ViewerError(file.string() + ": no bindings, its root element is " + root.tag + " and not Bindings (" +
                          root.getPlace() + ')');
    std::vector<VirtualInput> result = all;
    std::map<std::string, std::size_t> places;
    for (const VirtualInput& input : all)
        places.emplace(input.name, places.size());
    int i = 0;
    try {
        for (; i < root.getNumChildren(); ++i) {
            const VirtualInput input = readInput(*root.getChild(i));
            const auto [place, isNew] = places.emplace(input.name, result.size());
            if (isNew)
                result.push_back(input);
            else
                result[place->second] = input;
        }
        for (i = 0; i < root.getNumChildren(); ++i)
            for (const char* const button : {"pos", "neg"})
                requireKnown(root.getChild(i)->getAttributeValue(button), places);
    } catch (const ViewerError& error) {
        throw ViewerError(file.string() + ": binding " + std::to_string(i + 1) + ": " + error.what() + " (" +
                          root.getChild(i)->getPlace() + ')');
    }
    all = std::move(result);
}

void Bindings::write(const std::filesystem::path& file) const {
    XMLNode root("Bindings", nullptr);
    for (const VirtualInput& input : all)
        addTo(root, input);
    writeXmlFile(root, file);
}

void Bindings::giveToInput() const {
    for (const VirtualInput& input : all)
        agent::Input::instance()->getVirtualInput(input.name) = input;
}

void Bindings::describe(osg::ApplicationUsage& usage) const {
    osg::ApplicationUsage::UsageMap lines = usage.getKeyboardMouseBindings(), own;
    for (const VirtualInput& input : all) {
        const auto known = std::find_if(std::begin(defaults), std::end(defaults),
                                        [&](const Default& each) { return input.name == each.name; });
        for (const std::string& button : {input.pos, input.neg})
            lines.erase(withoutPrefix(button)); // what it does otherwise
        const std::string names = nameKeys(input);
        if (names.empty())
            continue;
        std::string& line = own[names];
        line += (line.empty() ? "" : "; ") + (known != std::end(defaults) ? known->meaning : input.name);
    }
    own.insert(lines.begin(), lines.end());
    usage.setKeyboardMouseBindings(own);
    usage.addKeyboardMouseBinding("left mouse", "Drag a body; turn the view elsewhere");
}

std::string Bindings::getButton(const std::string& name) const {
    const auto found = findIn(all, name);
    return found == all.end() ? std::string() : found->pos;
}

} // namespace tessarin::viewer
