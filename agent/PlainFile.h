#pragma once

#include <set>
#include <string>

namespace tessarin::agent {

/// Why a path isn't read, as a line that begins with it: it leads to no regular file, or to none with an extension of a
/// known kind, or to one that names a library of programs by its path. Empty if nothing speaks against it.
/// @param kinds extensions in lower case, without a point.
/// @param what the files are, in one word.
std::string findFaultOfFile(const std::string& path, const std::set<std::string>& kinds, const char* what);

} // namespace tessarin::agent
