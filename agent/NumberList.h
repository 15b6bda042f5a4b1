#pragma once

#include <string>
#include <vector>

namespace tessarin::agent {

/// Reads the text of a Translate or Rotate element: numbers parted by blanks, and by nothing but blanks. A number may
/// have white space before it and any other text behind it, which is not looked at.
/// @return one entry for each token; not a number where the token begins with none.
std::vector<double> readNumberList(const std::string& text);

/// Writes numbers with six significant digits, parted by single blanks.
std::string writeNumberList(const double* numbers, int count);

} // namespace tessarin::agent
