#pragma once

#include <string>

namespace tessarin::viewer {

/// The code under which Input knows a key: "key a", "key left", "key f1", "key keypad 4". The keys of the keypad are
/// called by their digits, with and without Num Lock. A key without a name is called by its number, "key 0xe4".
/// @param key of osgGA::GUIEventAdapter, without modifiers.
std::string keyCode(int key);

/// Whether a text is the code of any key.
bool isKeyCode(const std::string& text);

} // namespace tessarin::viewer
