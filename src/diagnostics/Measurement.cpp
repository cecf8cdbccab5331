#include "diagnostics/Measurement.h"

#include <algorithm>
#include <iomanip>
#include <limits>
#include <locale>
#include <mutex>
#include <sstream>
#include <utility>

#include "platform/Clock.h"

namespace mv {

namespace {

constexpr double kGiga = 1e-09;

struct StatisticsRow {
    std::string name;
    double firstStart = std::numeric_limits<double>::max();
    double lastEnd = 0.0;
    double maxDuration = 0.0;
    double minDuration = std::numeric_limits<double>::max();
    double total = 0.0;
    int count = 0;

    double Envelope() const { return lastEnd - firstStart; }
    double Average() const { return total / count; }
};

// The sums that the last line and all percentages of the statistics refer to.
struct StatisticsSums {
    double envelope = 0.0;
    double maxDuration = 0.0;
    double minDuration = 0.0;
    double average = 0.0;
};

double Seconds(std::int64_t ticks, std::int64_t ticksPerSecond) noexcept {
    return ticksPerSecond > 0 ? static_cast<double>(ticks) / static_cast<double>(ticksPerSecond)
                              : 0.0;
}

// A share of nothing is shown as 0.
double Percentage(double part, double whole) noexcept {
    return whole != 0.0 ? part * 100.0 / whole : 0.0;
}

StatisticsRow MakeRow(const std::string& name, const std::vector<MeasurementSample>& samples) {
    StatisticsRow row;
    row.name = name;
    for (const MeasurementSample& sample : samples) {
        const double start = Seconds(sample.start, sample.ticksPerSecond);
        const double end = Seconds(sample.end, sample.ticksPerSecond);
        row.firstStart = std::min(row.firstStart, start);
        row.lastEnd = std::max(row.lastEnd, end);
        row.maxDuration = std::max(row.maxDuration, end - start);
        row.minDuration = std::min(row.minDuration, end - start);
        row.total += end - start;
        ++row.count;
    }
    return row;
}

StatisticsSums SumUp(const std::vector<StatisticsRow>& rows) {
    StatisticsSums sums;
    double firstStart = std::numeric_limits<double>::max();
    double lastEnd = 0.0;
    for (const StatisticsRow& row : rows) {
        firstStart = std::min(firstStart, row.firstStart);
        lastEnd = std::max(lastEnd, row.lastEnd);
        sums.maxDuration += row.maxDuration;
        sums.minDuration += row.minDuration;
        sums.average += row.Average();
    }
    sums.envelope = lastEnd - firstStart;
    return sums;
}

std::ostringstream MakeStream(int decimals) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    // Without this a stream that runs out of memory would give a torn text.
    stream.exceptions(std::ios::badbit);
    stream << std::fixed << std::setprecision(decimals);
    return stream;
}

// Seven wide, as are all numbers of the statistics.
struct Number {
    double value;
};

std::ostream& operator<<(std::ostream& stream, Number number) {
    return stream << std::setw(7) << number.value;
}

std::string WriteStatistics(const MeasurementMap& measurements) {
    std::vector<StatisticsRow> rows;
    for (const auto& [name, samples] : measurements) {
        if (!samples.empty()) {
            rows.push_back(MakeRow(name, samples));
        }
    }
    if (rows.empty()) {
        return std::string();
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const auto& a, const auto& b) { return a.total < b.total; });
    const StatisticsSums sums = SumUp(rows);
    const auto share = [&sums](double part) { return Number{Percentage(part, sums.envelope)}; };

    std::ostringstream stream = MakeStream(3);
    stream << "[Measure]\n[Combined ]\n";
    for (const StatisticsRow& row : rows) {
        stream << "envelope:" << Number{row.Envelope()} << "(" << share(row.Envelope())
               << "%) | max:" << Number{row.maxDuration} << "(" << share(row.maxDuration)
               << "%) | min:" << Number{row.minDuration} << "(" << share(row.minDuration)
               << "%) | average:" << Number{row.Average()} << " (" << share(row.Average())
               << "%) - (" << row.count << "x) " << row.name << '\n';
    }
    stream << "-------------------------\n";
    stream << "envelope:" << Number{sums.envelope} << "(100.0%) | max:" << Number{sums.maxDuration}
           << "(" << share(sums.maxDuration) << "%) | min:" << Number{sums.minDuration} << "("
           << share(sums.minDuration) << "%) | average:" << Number{sums.average} << "("
           << share(sums.average) << "%)\n";
    return stream.str();
}

void WriteHeads(std::ostream& stream, const char* time, const char* name, const char* duration,
                const char* workload, const char* bandwidth) {
    stream << std::right << std::setw(10) << time << std::setw(30) << name << std::setw(27)
           << duration << std::setw(17) << workload << std::setw(37) << bandwidth << '\n';
}

void WriteRule(std::ostream& stream) {
    constexpr const char* kRule = "--------";
    WriteHeads(stream, kRule, kRule, kRule, kRule, kRule);
}

// The two right-hand columns, which the rows and the sum have in common.
void WriteBandwidth(std::ostream& stream, double workload, double duration, double peak) {
    const double bandwidth = duration != 0.0 ? workload / duration : 0.0;
    stream << std::setprecision(2) << std::setw(17) << workload * kGiga << std::setw(17)
           << bandwidth * kGiga << " (" << std::setw(6) << Percentage(bandwidth, peak) << "% of "
           << peak * kGiga << ")\n";
}

std::string WriteBandwidths(const std::list<BandwidthRow>& rows) {
    double duration = 0.0;
    double workload = 0.0;
    double peaks = 0.0;
    for (const BandwidthRow& row : rows) {
        duration += row.item->GetDuration();
        workload += static_cast<double>(row.item->GetWorkload());
        peaks += row.item->GetPeakBandwidth();
    }
    const double peak = rows.empty() ? 0.0 : peaks / static_cast<double>(rows.size());

    std::ostringstream stream = MakeStream(5);
    WriteHeads(stream, "time", "Name", "duration (s)", "workload (gb)", "bandwidth (gb/s)");
    WriteRule(stream);
    for (const BandwidthRow& row : rows) {
        const double itemDuration = row.item->GetDuration();
        stream << std::setprecision(5) << std::setw(10) << row.time << std::left << std::setw(30)
               << row.item->GetName() << std::right << std::setw(17) << itemDuration << " ("
               << std::setprecision(2) << std::setw(6) << Percentage(itemDuration, duration)
               << "%)";
        WriteBandwidth(stream, static_cast<double>(row.item->GetWorkload()), itemDuration,
                       row.item->GetPeakBandwidth());
    }
    WriteRule(stream);
    stream << std::setprecision(5) << std::setw(10 + 30 + 17) << duration << " (100.00%)";
    WriteBandwidth(stream, workload, duration, peak);
    return stream.str();
}

}  // namespace

std::string StatisticsReport(const MeasurementMap& measurements) noexcept {
    try {
        return WriteStatistics(measurements);
    } catch (...) {
        return std::string();
    }
}

void MeasurementTable::Add(std::string_view name, const MeasurementSample& sample) noexcept {
    const std::lock_guard guard(lock_);
    try {
        measurements_[std::string(name)].push_back(sample);
    } catch (...) {
        // A measurement is not worth a failed render.
    }
}

void MeasurementTable::Clear() noexcept {
    const std::lock_guard guard(lock_);
    measurements_.clear();
}

std::string MeasurementTable::Report() const noexcept {
    const std::lock_guard guard(lock_);
    return StatisticsReport(measurements_);
}

std::int64_t MeasuringPoint::Now() noexcept {
    return PerformanceCounter();
}

void MeasuringPoint::Finish() noexcept {
    table_->Add(name_, {start_, Now(), PerformanceFrequency()});
}

std::string BandwidthReport(const std::list<BandwidthRow>& rows) noexcept {
    try {
        return WriteBandwidths(rows);
    } catch (...) {
        return std::string();
    }
}

void BandwidthMeasurement::Restart() noexcept {
    start_ = PerformanceCounter();
    rows_.clear();
}

void BandwidthMeasurement::Add(std::shared_ptr<MeasuredItem> item) noexcept {
    try {
        const double time = Seconds(PerformanceCounter() - start_, PerformanceFrequency());
        rows_.push_back({time, std::move(item)});
    } catch (...) {
        // A measurement is not worth a failed render.
    }
}

}  // namespace mv
