#pragma once

#include <string>
#include <vector>

namespace tessarin::bench {

/// A value that mechanics knows in closed form, beside what the engine makes of it.
struct Figure {
    std::string what;
    std::string formula;
    double expected;
    double found;
};

std::vector<Figure> contactFigures();
std::vector<Figure> jointFigures();
std::vector<Figure> spinFigures();

} // namespace tessarin::bench
