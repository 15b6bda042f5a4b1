// Prints a table of costs beside their floors, and answers with status 1 if a cost is above its bound.

#include <bench/ChildProcess.h>
#include <bench/Row.h>
#include <bench/Table.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace tessarin::bench {

std::vector<Row>& getRows() {
    static std::vector<Row> rows;
    return rows;
}

namespace {

constexpr const char* help = R"(Usage: tessarin_bench [--quick] [--json FILE] [--only NAME] [--help]
Measures what the library costs beside what the same work costs without it, and prints a table.
  --quick      fewer repetitions, and bounds that are half as strict again, for noisy machines
  --json FILE  writes all measurements to a file too
  --only NAME  measures the rows whose names contain NAME
The status is 1 if a cost is above its bound, and 2 if one could not be measured or an option is wrong.
)";

struct Options {
    bool isQuick = false;
    std::string json;
    std::string only;
};

/// False, which has been reported, if an option is wrong.
bool readOptions(int count, char** words, Options& options) {
    for (int i = 1; i < count; ++i) {
        const std::string word = words[i];
        if (word == "--quick") {
            options.isQuick = true;
        } else if ((word == "--json" || word == "--only") && i + 1 < count) {
            (word == "--json" ? options.json : options.only) = words[++i];
        } else {
            std::fprintf(stderr, "tessarin_bench: '%s' is no option, or lacks its value (see --help).\n", word.c_str());
            return false;
        }
    }
    return true;
}

void registerSide(const Row& row, const char* side, void (*function)(benchmark::State&), const Options& options) {
    benchmark::internal::Benchmark* const registered =
        benchmark::RegisterBenchmark((std::string(row.name) + '/' + side).c_str(), function);
    registered->Repetitions(options.isQuick ? 3 : 9);
    if (row.isManual) {
        registered->UseManualTime();
    }
    if (row.iterations > 0) {
        registered->Iterations(row.iterations);
    } else {
        registered->MinTime(options.isQuick ? 0.02 : 0.1);
    }
}

int run(char* program, const Options& options) {
    std::sort(getRows().begin(), getRows().end(),
              [](const Row& a, const Row& b) { return std::strcmp(a.name, b.name) < 0; });
    for (const Row& row : getRows()) {
        if (std::strstr(row.name, options.only.c_str())) {
            registerSide(row, "ours", row.ours, options);
            registerSide(row, "floor", row.floor, options);
        }
    }
    std::vector<std::string> words = {program, "--benchmark_enable_random_interleaving=true"};
    if (!options.json.empty()) {
        words.push_back("--benchmark_out=" + options.json);
        words.push_back("--benchmark_out_format=json");
    }
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    Table table;
    benchmark::RunSpecifiedBenchmarks(&table);
    const bool holds = table.print(options.isQuick ? 1.5 : 1.0);
    return table.hasFailed() ? 2 : holds ? 0 : 1;
}

} // namespace

} // namespace tessarin::bench

int main(int count, char** words) {
    using namespace tessarin::bench;
    if (count == 4 && std::strcmp(words[1], "--measure") == 0) {
        return runMeasurement(words[2], words[3]);
    }
    if (count == 2 && std::strcmp(words[1], "--help") == 0) {
        std::fputs(help, stdout);
        return 0;
    }
    Options options;
    if (!readOptions(count, words, options)) {
        return 2;
    }
    return run(words[0], options);
}
