// Prints benchmark results as rows of a Markdown table, medians only.
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <utility>
#include <vector>

namespace mv::benchmarks {

// Columns are counters of the benchmarks; the first is the name, the second the time.
class MarkdownTable : public benchmark::BenchmarkReporter {
public:
    struct Column {
        std::string title;
        std::string counter;
        int decimals;
    };

    explicit MarkdownTable(std::vector<Column> columns) : columns_(std::move(columns)) {}

    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;

private:
    std::vector<Column> columns_;
};

}  // namespace mv::benchmarks
