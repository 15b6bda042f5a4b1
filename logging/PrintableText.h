#pragma once

#include <logging/Export.h>

#include <string>
#include <string_view>

namespace tessarin::logging {

/// The text without anything that speaks to a terminal, begins a line of its own or turns the direction of writing:
/// control characters (those of ASCII, U+0080 to U+009F, and the marks of lines and directions) become escapes such as
/// "\n" and "\u009b", bytes that are no UTF-8 become escapes such as "\x9b". All else stays as it is.
///
/// It is for what is shown to a person: a message may quote anybody's document.
TESSARIN_LOGGING_EXPORT std::string printableText(std::string_view text);

/// Foreign text for a message, in double quotes, its end left out if it is long.
TESSARIN_LOGGING_EXPORT std::string quotedText(std::string_view text);

} // namespace tessarin::logging
