#pragma once

#include <bench/Row.h>

#include <map>
#include <string>
#include <vector>

namespace tessarin::bench {

/// Collects the repetitions of all benchmarks and prints each row's two medians, their ratio, and whether it holds.
class Table : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;

    /// @param tolerance a factor on all bounds.
    /// @return true if all rows hold.
    bool print(double tolerance);

    /// True if something could not be measured.
    bool hasFailed() const { return !errors.empty(); }

private:
    bool printRow(const Row& row, double tolerance);
    double medianOf(const std::string& benchmarkName);

    /// Seconds, or values, of one iteration each.
    std::map<std::string, std::vector<double>> figures;
    std::map<std::string, std::string> errors;
};

} // namespace tessarin::bench
