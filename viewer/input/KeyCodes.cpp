#include <viewer/input/KeyCodes.h>

#include <osgGA/GUIEventAdapter>

#include <array>
#include <cstdio>
#include <unordered_map>
#include <unordered_set>

namespace tessarin::viewer {

namespace {

using Event = osgGA::GUIEventAdapter;

const char* findName(int key) {
    static const std::unordered_map<int, const char*> names = {
        {Event::KEY_Space, "space"},
        {Event::KEY_BackSpace, "backspace"},
        {Event::KEY_Tab, "tab"},
        {Event::KEY_Return, "return"},
        {Event::KEY_Pause, "pause"},
        {Event::KEY_Scroll_Lock, "scroll lock"},
        {Event::KEY_Escape, "escape"},
        {Event::KEY_Delete, "delete"},
        {Event::KEY_Insert, "insert"},
        {Event::KEY_Print, "print"},
        {Event::KEY_Menu, "menu"},
        {Event::KEY_Home, "home"},
        {Event::KEY_End, "end"},
        {Event::KEY_Left, "left"},
        {Event::KEY_Right, "right"},
        {Event::KEY_Up, "up"},
        {Event::KEY_Down, "down"},
        {Event::KEY_Page_Up, "page up"},
        {Event::KEY_Page_Down, "page down"},
        {Event::KEY_Num_Lock, "num lock"},
        {Event::KEY_Caps_Lock, "caps lock"},
        {Event::KEY_Shift_L, "shift left"},
        {Event::KEY_Shift_R, "shift right"},
        {Event::KEY_Control_L, "control left"},
        {Event::KEY_Control_R, "control right"},
        {Event::KEY_Alt_L, "alt left"},
        {Event::KEY_Alt_R, "alt right"},
        {Event::KEY_Meta_L, "meta left"},
        {Event::KEY_Meta_R, "meta right"},
        {Event::KEY_Super_L, "super left"},
        {Event::KEY_Super_R, "super right"},
        {Event::KEY_KP_Enter, "keypad enter"},
        {Event::KEY_KP_Add, "keypad +"},
        {Event::KEY_KP_Subtract, "keypad -"},
        {Event::KEY_KP_Multiply, "keypad *"},
        {Event::KEY_KP_Divide, "keypad /"},
        {Event::KEY_KP_Equal, "keypad ="},
        {Event::KEY_KP_Decimal, "keypad ."},
        {Event::KEY_KP_Separator, "keypad ."},
        {Event::KEY_KP_Delete, "keypad ."},
        {Event::KEY_KP_Insert, "keypad 0"},
        {Event::KEY_KP_End, "keypad 1"},
        {Event::KEY_KP_Down, "keypad 2"},
        {Event::KEY_KP_Page_Down, "keypad 3"},
        {Event::KEY_KP_Left, "keypad 4"},
        {Event::KEY_KP_Begin, "keypad 5"},
        {Event::KEY_KP_Right, "keypad 6"},
        {Event::KEY_KP_Home, "keypad 7"},
        {Event::KEY_KP_Up, "keypad 8"},
        {Event::KEY_KP_Page_Up, "keypad 9"},
    };
    const auto found = names.find(key);
    return found == names.end() ? nullptr : found->second;
}

} // namespace

std::string keyCode(int key) {
    const std::string prefix = "key ";
    if (const char* const name = findName(key))
        return prefix + name;
    if (key >= Event::KEY_F1 && key <= Event::KEY_F35)
        return prefix + "f" + std::to_string(key - Event::KEY_F1 + 1);
    if (key >= Event::KEY_KP_0 && key <= Event::KEY_KP_9)
        return prefix + "keypad " + std::to_string(key - Event::KEY_KP_0);
    if (key > ' ' && key <= '~')
        return prefix + static_cast<char>(key >= 'A' && key <= 'Z' ? key - 'A' + 'a' : key);
    std::array<char, 16> number{};
    std::snprintf(number.data(), number.size(), "0x%x", static_cast<unsigned>(key));
    return prefix + number.data();
}

bool isKeyCode(const std::string& text) {
    static const std::unordered_set<std::string> all = [] {
        constexpr int keys = 0x10000;
        std::unordered_set<std::string> codes;
        for (int key = 1; key < keys; ++key)
            codes.insert(keyCode(key));
        return codes;
    }();
    return all.count(text) > 0;
}

} // namespace tessarin::viewer
