// Prints a table in Markdown of what the engine makes of motions that have a closed form.

#include <bench/accuracy/Figures.h>

#include <cmath>
#include <cstdio>
#include <vector>

int main() {
    using namespace tessarin::bench;
    std::printf("| case | closed form | value | ours | deviation |\n|---|---|---|---|---|\n");
    for (const auto& figures : {contactFigures(), jointFigures(), spinFigures()}) {
        for (const Figure& figure : figures) {
            std::printf("| %s | %s | %.4g | %.4g | ", figure.what.c_str(), figure.formula.c_str(), figure.expected,
                        figure.found);
            const double off = figure.found - figure.expected;
            if (figure.expected != 0) {
                std::printf("%.2f %% |\n", 100 * std::abs(off / figure.expected));
            } else {
                std::printf("%.1e |\n", std::abs(off));
            }
        }
    }
}
