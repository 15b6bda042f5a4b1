#pragma once

#include <cstdint>

namespace tessarin::bench {

/// Takes a figure of a process that has done nothing else before.
using Measurement = double (*)(std::int64_t size);

/// A static object of this type gives a measurement a name under which a process of its own can run it.
struct MeasurementRegistration {
    MeasurementRegistration(const char* name, Measurement measurement);
};

/// Starts this program anew for one measurement and returns its figure; not a number if that fails.
double measureInChild(const char* name, std::int64_t size);

/// Runs the measurement of that name in this process and prints its figure: the child's side of measureInChild.
/// @return the exit status of the process.
int runMeasurement(const char* name, const char* size);

} // namespace tessarin::bench
