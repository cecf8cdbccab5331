#include "MarkdownTable.h"

#include <cstdio>

namespace mv::benchmarks {

bool MarkdownTable::ReportContext(const Context&) {
    std::string rule = "|---|---:|";
    std::printf("| case | ms |");
    for (const Column& column : columns_) {
        std::printf(" %s |", column.title.c_str());
        rule += "---:|";
    }
    std::printf("\n%s\n", rule.c_str());
    std::fflush(stdout);
    return true;
}

void MarkdownTable::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        if (run.error_occurred || run.aggregate_name != "median") {
            continue;
        }
        std::printf("| %s | %.0f |", run.run_name.function_name.c_str(), run.GetAdjustedRealTime());
        for (const Column& column : columns_) {
            const auto found = run.counters.find(column.counter);
            if (found != run.counters.end()) {
                std::printf(" %.*f |", column.decimals, static_cast<double>(found->second));
            } else {
                std::printf(" |");
            }
        }
        std::printf("\n");
        std::fflush(stdout);
    }
}

}  // namespace mv::benchmarks
