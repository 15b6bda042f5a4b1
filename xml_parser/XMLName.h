#pragma once

#include <string>

namespace tessarin::xml_parser {

/// True for a name of letters, digits and the marks of ASCII that XML allows in names. Other names may still be good.
bool isPlainXMLName(const std::string& name);

/// The name with each character that an XML name cannot have there replaced by '_', or the name itself. Slow unless the
/// name is plain.
std::string toXMLName(const std::string& name);

} // namespace tessarin::xml_parser
