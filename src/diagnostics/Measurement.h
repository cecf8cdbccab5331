#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/RecursiveLock.h"

namespace mv {

// One timed stretch, in ticks of the performance counter.
struct MeasurementSample {
    std::int64_t start = 0;
    std::int64_t end = 0;
    std::int64_t ticksPerSecond = 0;
};

using MeasurementMap = std::map<std::string, std::vector<MeasurementSample>>;

// One line per name, shortest total first, with each name's share of the whole time, and a sum.
// Empty for an empty map, and when there is no memory for the text.
std::string StatisticsReport(const MeasurementMap& measurements) noexcept;

// The named samples of one host object, which owns the table. Any thread may add. Nothing in the
// render adds to it by itself: it fills only where a developer's tool asks for that.
class MeasurementTable {
public:
    // A sample for which there is no memory is lost.
    void Add(std::string_view name, const MeasurementSample& sample) noexcept;
    void Clear() noexcept;
    std::string Report() const noexcept;

private:
    mutable RecursiveLock lock_;
    MeasurementMap measurements_;
};

// Adds the time of its life to a table; without a table it costs nothing. Lives on the stack of
// what it measures.
class MeasuringPoint {
public:
    // The name must outlive the point.
    MeasuringPoint(MeasurementTable* table, const char* name) noexcept
        : table_(table), name_(name), start_(table != nullptr ? Now() : 0) {}
    ~MeasuringPoint() {
        if (table_ != nullptr) {
            Finish();
        }
    }
    MeasuringPoint(const MeasuringPoint&) = delete;
    MeasuringPoint& operator=(const MeasuringPoint&) = delete;

private:
    static std::int64_t Now() noexcept;
    void Finish() noexcept;

    MeasurementTable* table_;
    const char* name_;
    std::int64_t start_;
};

// Something that moved data for a while, as the bandwidth report sees it.
class MeasuredItem {
public:
    virtual ~MeasuredItem() = default;
    virtual std::string GetName() const = 0;
    virtual double GetDuration() const = 0;         // seconds
    virtual std::uint64_t GetWorkload() const = 0;  // bytes
    virtual double GetPeakBandwidth() const = 0;    // bytes per second
};

struct BandwidthRow {
    double time = 0.0;
    std::shared_ptr<MeasuredItem> item;
};

// What was moved how fast, and how that compares with what the machine could do. Empty when there
// is no memory for the text.
std::string BandwidthReport(const std::list<BandwidthRow>& rows) noexcept;

// Collects the rows of a bandwidth report, with the time since the last restart. Owned and used by
// one thread.
class BandwidthMeasurement {
public:
    BandwidthMeasurement() noexcept { Restart(); }

    void Restart() noexcept;
    // An item for which there is no memory is lost.
    void Add(std::shared_ptr<MeasuredItem> item) noexcept;
    std::string Report() const noexcept { return BandwidthReport(rows_); }

private:
    std::int64_t start_ = 0;
    std::list<BandwidthRow> rows_;
};

}  // namespace mv
