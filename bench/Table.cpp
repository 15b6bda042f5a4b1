#include <bench/Table.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace tessarin::bench {

namespace {

const Row* findRow(const std::string& benchmarkName) {
    const std::string name = benchmarkName.substr(0, benchmarkName.find('/'));
    const std::vector<Row>& rows = getRows();
    const auto found = std::find_if(rows.begin(), rows.end(), [&](const Row& row) { return row.name == name; });
    return found == rows.end() ? nullptr : &*found;
}

const char* suffixOf(Unit unit) {
    switch (unit) {
    case Unit::bytes:
        return "bytes";
    case Unit::times:
        return "times";
    default:
        return "ns";
    }
}

/// "row/ours" of "row/ours/manual_time" and the like.
std::string shortName(const std::string& benchmarkName) {
    return benchmarkName.substr(0, benchmarkName.find('/', benchmarkName.find('/') + 1));
}

} // namespace

bool Table::ReportContext(const Context&) {
    return true;
}

void Table::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        const std::string name = shortName(run.benchmark_name());
        if (run.error_occurred) {
            errors[name] = run.error_message;
            continue;
        }
        const Row* const row = findRow(name);
        if (run.run_type != Run::RT_Iteration || !row) {
            continue;
        }
        const double seconds = row->isManual ? run.real_accumulated_time : run.cpu_accumulated_time;
        figures[name].push_back(seconds / static_cast<double>(run.iterations));
    }
    std::fputc('.', stderr);
}

double Table::medianOf(const std::string& benchmarkName) {
    std::vector<double>& values = figures[benchmarkName];
    if (values.empty()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

bool Table::print(double tolerance) {
    std::printf("\n%-18s %14s %14s %7s %7s\n", "figure", "ours", "floor", "ratio", "bound");
    bool isGood = true;
    for (const Row& row : getRows()) {
        isGood = printRow(row, tolerance) && isGood;
    }
    return isGood;
}

bool Table::printRow(const Row& row, double tolerance) {
    const std::string ours = std::string(row.name) + "/ours";
    const std::string floor = std::string(row.name) + "/floor";
    for (const std::string& side : {ours, floor}) {
        if (errors.count(side) != 0) {
            std::printf("%-18s failed: %s\n", side.c_str(), errors[side].c_str());
            return false;
        }
    }
    if (figures.count(ours) == 0) {
        return true; // The row was not asked for.
    }
    const double factor = 1e9 / static_cast<double>(row.items);
    const double cost = medianOf(ours) * factor;
    const double floorCost = medianOf(floor) * factor;
    const double ratio = cost / floorCost;
    const double bound = row.bound * tolerance;
    const bool holds = ratio <= bound;
    std::printf("%-18s %8.4g %-5s %8.4g %-5s %7.2f %7.2f  %s\n", row.name, cost, suffixOf(row.unit), floorCost,
                suffixOf(row.unit), ratio, bound, holds ? "holds" : "BROKEN");
    return holds;
}

} // namespace tessarin::bench
