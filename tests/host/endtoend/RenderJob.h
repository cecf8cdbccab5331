// One picture with its settings, sent through the module and through the second computation.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "GuardedBytes.h"
#include "HostSession.h"
#include "oracle/Oracle.h"

namespace endtoend {

// The loaded module; the test program's main loads it before any test runs.
hostapi::EntryPoint Entry();
const std::filesystem::path& ModulePath();

// A picture as the host delivers it: bytes with their row distances, mask, what the record says.
struct RenderJob {
    int width = 0;
    int height = 0;
    oracle::ImageFacts facts;
    std::vector<std::uint8_t> input;
    std::vector<std::uint8_t> output;  // what stands in the destination before the render
    std::vector<std::uint8_t> mask;    // empty: the host has no selection
    int inputRowBytes = 0;
    int outputRowBytes = 0;
    int maskRowBytes = 0;
    oracle::Settings settings;

    int SampleBytes() const { return facts.depth == 32 ? 4 : facts.depth == 16 ? 2 : 1; }
    int PixelBytes() const { return facts.planes * SampleBytes(); }
    // Sizes the buffers for row distances that are so many bytes more than needed.
    void Allocate(int inputPadding, int outputPadding, int maskPadding, bool withMask);
    double Get(int x, int y, int plane) const;
    void Set(int x, int y, int plane, double value);
};

// An RGB, gray or multichannel job, every sample at the given fraction of white.
RenderJob PlainJob(int width, int height, int colors, bool alpha, int depth, double fraction);

// Every value under its script key, in the set's order.
mv::host::ScriptValues ScriptOf(const oracle::Settings& settings);
mv::host::HostDocument DocumentOf(const RenderJob& job);

// A session whose pixel buffers are exact, guarded and laid out as the job says.
class JobSession {
public:
    explicit JobSession(const RenderJob& job, mv::host::HostOffer offer = {},
                        mv::host::HostFaults faults = {}, hostapi::EntryPoint entry = Entry());
    JobSession(const JobSession&) = delete;
    JobSession& operator=(const JobSession&) = delete;

    mv::host::HostSession& Host() { return session_; }
    // Replays the job's settings and runs prepare and start.
    hostapi::OSErr Start();
    // The destination with its row padding.
    std::vector<std::uint8_t> Output() const;
    // Empty when the host has nothing to complain about after a run: no block, handle, suite or
    // token left, rectangles cleared, nothing written where nothing was to be written.
    std::string Reproach() const;

private:
    void Deliver(hostapi::FilterRecord& record);

    const RenderJob& job_;
    mv::host::HostSession session_;
    GuardedBytes input_;
    GuardedBytes output_;
    std::unique_ptr<GuardedBytes> mask_;
};

// The destination as the second computation leaves it; untouched when the shape is not served.
std::vector<std::uint8_t> ExpectedOutput(const RenderJob& job);
// Runs the job through the module; a status other than 0 and every reproach fails the test.
std::vector<std::uint8_t> RenderedOutput(const RenderJob& job);
// Compares the two, exactly.
void ExpectSameBytes(const RenderJob& job);
// Empty when equal, else the first difference in words, with the job.
std::string Difference(const RenderJob& job, const std::vector<std::uint8_t>& actual,
                       const std::vector<std::uint8_t>& expected);
std::string Describe(const RenderJob& job);

}  // namespace endtoend
