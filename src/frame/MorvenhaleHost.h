#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "diagnostics/Measurement.h"
#include "frame/MorvenhalePlugin.h"
#include "frame/MorvenhaleRenderContext.h"
#include "image/ThreadPool.h"

namespace mv {

// The host object as effect code sees it: status codes, and services with defaults that need no
// host application. Owns the worker pool, whose threads stay between renders.
class MorvenhaleHost : public MorvenhalePlugin, public MorvenhaleRenderContext {
public:
    // The pool has room for so many threads, the caller's included.
    static constexpr std::int32_t kMaximumThreads = 64;

    using MorvenhalePlugin::MorvenhalePlugin;

    // A record with the shape of an image view. Nothing reads one beyond its creation.
    struct ChannelAccess {
        virtual ~ChannelAccess() = default;
        std::int32_t geometry[6] = {};
        std::shared_ptr<void> pixels;
        double scale = 1.0;
    };

    virtual std::string GetSourceChannelName() { return "Source"; }
    virtual std::string GetOutputChannelName() { return "Output"; }
    virtual bool Hook8() { return false; }
    virtual std::int32_t StatusOk() { return 0; }
    virtual std::int32_t StatusOutOfMemory() { return 1; }
    virtual std::int32_t StatusAborted() { return 2; }
    virtual void Hook9(std::string) {}
    virtual std::shared_ptr<ChannelAccess> GetChannelAccess(std::string name);

    std::int32_t ReportProgress(std::int32_t done, std::int32_t total, std::int32_t quiet) override;
    void* AllocateMemory(std::uint32_t size) override;
    void FreeMemory(void* block) override;
    std::int32_t GetThreadCount(std::int32_t wanted) override;
    std::int32_t Iterate(std::int32_t iterations, IterateFunction function) override;
    double GetRangeStart() override { return 0.0; }
    double GetRangeEnd() override { return 1.0; }
    void GetRange(double*, double*) override {}

    MeasurementTable& GetMeasurements() { return measurements_; }
    // Where a render's measuring points add their times: null unless somebody asked for them.
    MeasurementTable* GetActiveMeasurements() { return isMeasuring_ ? &measurements_ : nullptr; }
    void SetMeasuring(bool isMeasuring) { isMeasuring_ = isMeasuring; }

    void SetThreadLimit(std::int32_t limit) { threadLimit_ = limit; }
    void SetProgressCallback(std::function<bool(std::int32_t, std::int32_t)> callback);
    void SetMemoryCallbacks(std::function<void*(std::uint32_t)> allocate,
                            std::function<void(void*)> release);

private:
    ThreadPool pool_;
    MeasurementTable measurements_;
    bool isMeasuring_ = false;
    std::int32_t threadLimit_ = 0;
    std::function<bool(std::int32_t, std::int32_t)> progressCallback_;
    std::function<void*(std::uint32_t)> allocCallback_;
    std::function<void(void*)> freeCallback_;
};

}  // namespace mv
