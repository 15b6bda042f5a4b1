#pragma once

#include <stdexcept>

namespace tessarin::viewer {

/// What ends the program with status 1: one line for the person who started it, naming the file or the option.
class ViewerError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace tessarin::viewer
