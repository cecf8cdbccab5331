#include "diagnostics/Measurement.h"

#include <gtest/gtest.h>

#include <chrono>
#include <locale>
#include <optional>
#include <sstream>
#include <thread>
#include <utility>

#include "support/AllocationFault.h"

namespace mv {
namespace {

TEST(StatisticsReport, EmptyTableGivesAnEmptyText) {
    EXPECT_EQ(StatisticsReport({}), "");
    EXPECT_EQ(MeasurementTable().Report(), "");
}

// Two names, ticks of a millisecond: "blur" 1.0 to 3.0 and 4.0 to 5.0 s, "copy" 0.5 to 1.0 s.
// T = 5.0 - 0.5 = 4.5 s.
TEST(StatisticsReport, HasOneLineForEachNameAndASum) {
    MeasurementTable table;
    table.Add("blur", {1000, 3000, 1000});
    table.Add("blur", {4000, 5000, 1000});
    table.Add("copy", {500, 1000, 1000});
    EXPECT_EQ(table.Report(),
              "[Measure]\n"
              "[Combined ]\n"
              "envelope:  0.500( 11.111%) | max:  0.500( 11.111%) | min:  0.500( 11.111%)"
              " | average:  0.500 ( 11.111%) - (1x) copy\n"
              "envelope:  4.000( 88.889%) | max:  2.000( 44.444%) | min:  1.000( 22.222%)"
              " | average:  1.500 ( 33.333%) - (2x) blur\n"
              "-------------------------\n"
              "envelope:  4.500(100.0%) | max:  2.500( 55.556%) | min:  1.500( 33.333%)"
              " | average:  2.000( 44.444%)\n");
}

TEST(MeasuringPoint, AddsTheTimeOfItsLife) {
    MeasurementTable table;
    {
        const MeasuringPoint outer(&table, "outer");
        const MeasuringPoint inner(&table, "inner");
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    const std::string text = table.Report();
    EXPECT_NE(text.find("(1x) outer\n"), std::string::npos);
    EXPECT_NE(text.find("(1x) inner\n"), std::string::npos);
    // "envelope:  0.020(": the sleep was not shorter, and nobody waits for minutes.
    const double seconds = std::stod(text.substr(text.find("envelope:") + 9));
    EXPECT_GE(seconds, 0.019);
    EXPECT_LT(seconds, 60.0);
}

TEST(MeasuringPoint, WithoutATableDoesNothing) {
    const MeasuringPoint point(nullptr, "nothing");
}

TEST(MeasuringPoint, WithoutMemoryTheSampleIsLost) {
    MeasurementTable table;
    std::optional<MeasuringPoint> point;
    point.emplace(&table, "a name that is too long to be kept without a block of its own");
    {
        const test::AllocationDrought drought;
        point.reset();
    }
    EXPECT_EQ(table.Report(), "");
}

TEST(StatisticsReport, NamesWithEqualTotalsKeepTheOrderOfTheTable) {
    MeasurementTable table;
    table.Add("c", {0, 1000, 1000});
    table.Add("a", {0, 2000, 1000});
    table.Add("b", {1000, 2000, 1000});
    table.Add("d", {3000, 4000, 1000});
    const std::string text = table.Report();
    const auto b = text.find(" b\n");
    const auto c = text.find(" c\n");
    const auto d = text.find(" d\n");
    const auto a = text.find(" a\n");
    ASSERT_NE(a, std::string::npos);
    EXPECT_LT(b, c);
    EXPECT_LT(c, d);
    EXPECT_LT(d, a);
}

TEST(StatisticsReport, EachSampleHasItsOwnClock) {
    MeasurementTable table;
    table.Add("x", {2000000, 3000000, 1000000});
    table.Add("x", {3, 5, 1});
    const std::string text = table.Report();
    EXPECT_NE(text.find("envelope:  3.000(100.000%) | max:  2.000"), std::string::npos) << text;
    EXPECT_NE(text.find("min:  1.000"), std::string::npos) << text;
}

TEST(StatisticsReport, SamplesWithoutLengthAreNoDivisionByZero) {
    MeasurementTable table;
    table.Add("x", {1000, 1000, 1000});
    table.Add("x", {1000, 1000, 0});
    table.Clear();
    table.Add("x", {1000, 1000, 1000});
    EXPECT_EQ(table.Report(),
              "[Measure]\n"
              "[Combined ]\n"
              "envelope:  0.000(  0.000%) | max:  0.000(  0.000%) | min:  0.000(  0.000%)"
              " | average:  0.000 (  0.000%) - (1x) x\n"
              "-------------------------\n"
              "envelope:  0.000(100.0%) | max:  0.000(  0.000%) | min:  0.000(  0.000%)"
              " | average:  0.000(  0.000%)\n");
}

TEST(StatisticsReport, LongTimesWidenTheirField) {
    MeasurementTable table;
    table.Add("x", {0, 12345678, 1000});
    EXPECT_NE(table.Report().find("envelope:12345.678(100.000%)"), std::string::npos);
}

class Commas : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
};

TEST(StatisticsReport, NumbersLookTheSameInEveryLocale) {
    MeasurementTable table;
    table.Add("x", {0, 500, 1000});
    const std::string expected = table.Report();
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Commas));
    const std::string text = table.Report();
    std::locale::global(before);
    EXPECT_EQ(text, expected);
    EXPECT_NE(text.find("0.500"), std::string::npos);
}

TEST(MeasurementTable, TakesSamplesFromManyThreads) {
    MeasurementTable table;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&table] {
            for (int k = 0; k < 250; ++k) {
                table.Add("x", {0, 1, 1});
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_NE(table.Report().find("(1000x) x"), std::string::npos);
}

TEST(MeasurementTable, WhenAnyAllocationFailsTextsAreWholeOrEmpty) {
    const std::string name(100, 'n');
    bool happened = true;
    for (long n = 1; happened && n < 300; ++n) {
        MeasurementTable table;
        table.Add("first", {0, 1, 1});
        std::string text;
        {
            const test::AllocationFault fault(n);
            table.Add(name, {0, 1, 1});
            text = table.Report();
            happened = fault.Happened();
        }
        EXPECT_TRUE(text.empty() || text.compare(text.size() - 2, 2, ")\n") == 0) << text;
        EXPECT_TRUE(happened || text.find(name) != std::string::npos);
    }
    EXPECT_FALSE(happened);
}

class Item : public MeasuredItem {
public:
    Item(std::string name, double duration, std::uint64_t workload, double peak)
        : name_(std::move(name)), duration_(duration), workload_(workload), peak_(peak) {}
    std::string GetName() const override { return name_; }
    double GetDuration() const override { return duration_; }
    std::uint64_t GetWorkload() const override { return workload_; }
    double GetPeakBandwidth() const override { return peak_; }

private:
    std::string name_;
    double duration_;
    std::uint64_t workload_;
    double peak_;
};

std::string Blanks(int count) {
    return std::string(static_cast<std::size_t>(count), ' ');
}

// D = 1.0 s, W = 4e9 bytes, B = (10e9 + 20e9) / 2.
TEST(BandwidthReport, HasARowForEachItemAndASum) {
    const std::list<BandwidthRow> rows = {
        {0.5, std::make_shared<Item>("copy", 0.25, 1000000000u, 10e9)},
        {1.25, std::make_shared<Item>("blur", 0.75, 3000000000u, 20e9)},
    };
    const std::string rule = Blanks(2) + "--------" + Blanks(22) + "--------" + Blanks(19) +
                             "--------" + Blanks(9) + "--------" + Blanks(29) + "--------\n";
    EXPECT_EQ(BandwidthReport(rows),
              Blanks(6) + "time" + Blanks(26) + "Name" + Blanks(15) + "duration (s)" + Blanks(4) +
                  "workload (gb)" + Blanks(21) + "bandwidth (gb/s)\n" + rule + "   0.50000copy" +
                  Blanks(26) + Blanks(10) + "0.25000 ( 25.00%)" + Blanks(13) + "1.00" + Blanks(13) +
                  "4.00 ( 40.00% of 10.00)\n" + "   1.25000blur" + Blanks(26) + Blanks(10) +
                  "0.75000 ( 75.00%)" + Blanks(13) + "3.00" + Blanks(13) +
                  "4.00 ( 20.00% of 20.00)\n" + rule + Blanks(50) + "1.00000 (100.00%)" +
                  Blanks(13) + "4.00" + Blanks(13) + "4.00 ( 26.67% of 15.00)\n");
}

TEST(BandwidthReport, WithoutRowsHasNoDivisionByZero) {
    const std::string text = BandwidthReport({});
    EXPECT_NE(text.find("0.00000 (100.00%)"), std::string::npos);
    EXPECT_NE(text.find("(  0.00% of 0.00)\n"), std::string::npos);
    EXPECT_EQ(text.find("nan"), std::string::npos);
}

TEST(BandwidthMeasurement, RestartClearsTheRowsAndStampsTheStart) {
    BandwidthMeasurement measurement;
    const std::string empty = measurement.Report();
    measurement.Add(std::make_shared<Item>("copy", 0.25, 1000000000u, 10e9));
    EXPECT_NE(measurement.Report(), empty);
    EXPECT_NE(measurement.Report().find("copy"), std::string::npos);
    measurement.Restart();
    EXPECT_EQ(measurement.Report(), empty);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    measurement.Restart();
    measurement.Add(std::make_shared<Item>("late", 0.25, 1u, 1.0));
    // The time of a row counts from the restart.
    std::istringstream lines(measurement.Report());
    std::string line;
    std::getline(lines, line);
    std::getline(lines, line);
    std::getline(lines, line);
    EXPECT_LT(std::stod(line.substr(0, 10)), 0.3) << line;
}

}  // namespace
}  // namespace mv
