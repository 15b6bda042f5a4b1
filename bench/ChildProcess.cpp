#include <bench/ChildProcess.h>

#include <bench/Row.h>

#include <cstdio>
#include <cstdlib>
#include <limits>
#include <map>
#include <string>

#include <time.h>
#include <unistd.h>

namespace tessarin::bench {

static std::map<std::string, Measurement>& measurements() {
    static std::map<std::string, Measurement> all;
    return all;
}

MeasurementRegistration::MeasurementRegistration(const char* name, Measurement measurement) {
    measurements().emplace(name, measurement);
}

double measureInChild(const char* name, std::int64_t size) {
    char program[4096] = {};
    if (readlink("/proc/self/exe", program, sizeof(program) - 1) <= 0) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const std::string command = "'" + std::string(program) + "' --measure " + name + ' ' + std::to_string(size);
    std::FILE* const output = popen(command.c_str(), "r");
    double figure = std::numeric_limits<double>::quiet_NaN();
    if (output) {
        if (std::fscanf(output, "%lf", &figure) != 1) {
            figure = std::numeric_limits<double>::quiet_NaN();
        }
        pclose(output);
    }
    return figure;
}

int runMeasurement(const char* name, const char* size) {
    const auto found = measurements().find(name);
    if (found == measurements().end()) {
        std::fprintf(stderr, "There is no measurement called '%s'.\n", name);
        return 2;
    }
    std::printf("%.17g\n", found->second(std::atoll(size)));
    return 0;
}

double processorSeconds() {
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

} // namespace tessarin::bench
