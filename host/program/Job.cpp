#include "program/Job.h"

#include <chrono>
#include <new>
#include <utility>

#include "pictures/PictureConversion.h"
#include "pictures/PictureFile.h"
#include "program/ProgressBar.h"
#include "program/System.h"

namespace mv::host {
namespace {

// Seconds since it was made.
class Stopwatch {
public:
    double Seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

std::string SizeText(const Picture& picture) {
    return std::to_string(picture.width) + " x " + std::to_string(picture.height);
}

Failure FailureOf(const PictureError& error) {
    switch (error.fault) {
        case PictureFault::CannotRead:
            return {ExitCode::CannotRead, error.text};
        case PictureFault::CannotWrite:
            return {ExitCode::CannotWrite, error.text};
        case PictureFault::Stopped:
            return {ExitCode::Aborted, error.text};
        case PictureFault::Unsupported:
            break;
    }
    return {ExitCode::UnsupportedPicture, error.text};
}

Failure RenderFailure(const JobResult& result, HostSession& session, hostapi::OSErr status) {
    const std::string name = "'" + PathToText(result.input) + "'";
    if (status == hostapi::userCanceledErr && Interrupted()) {
        return {ExitCode::Aborted, "stopped; '" + PathToText(result.output) + "' was not written"};
    }
    if (status == hostapi::memFullErr) {
        return {ExitCode::RenderFailed,
                "not enough memory to blur " + name + " with its " + SizeText(result.picture) +
                    " pixels; reduce it, or use a machine with more memory"};
    }
    if (status == hostapi::errReportString) {
        const hostapi::Str255& text = *session.Record().errorString;
        return {ExitCode::RenderFailed,
                "the filter refuses " + name + ": " + std::string(text + 1, text + 1 + text[0])};
    }
    return {ExitCode::RenderFailed, "the filter failed on " + name + " with status " +
                                        std::to_string(status) +
                                        "; try another picture or other values"};
}

std::optional<Failure> CheckMask(const JobSettings& settings, const JobResult& result) {
    if (!settings.mask || (settings.mask->width == result.picture.width &&
                           settings.mask->height == result.picture.height)) {
        return {};
    }
    return Failure{ExitCode::MaskMismatch,
                   "the mask '" + settings.maskName + "' has " + SizeText(*settings.mask) +
                       " pixels but '" + PathToText(result.input) + "' has " +
                       SizeText(result.picture) + "; give a mask of the same size"};
}

std::optional<Failure> Render(const JobSettings& settings, JobResult& result) {
    ProgressBar bar(settings.showProgress, PathToText(result.input.filename()));
    HostDocument document = TakeDocument(
        result.picture, settings.mask ? ToMask(*settings.mask) : std::vector<std::uint8_t>());
    HostSession session(
        settings.entryPoint, std::move(document),
        {.timingSuite = settings.timing, .freshBytes = FreshBytes::Unset, .sparesCopies = true});
    session.Hooks().progress = [&bar](std::int32_t done, std::int32_t total) {
        bar.Show(done, total);
    };
    session.Hooks().abortAsked = Interrupted;
    session.Hooks().timing = [&result](const std::string& report) { result.timing = report; };
    session.Play(settings.values);
    const RunOutcome outcome = session.Run();
    bar.Clear();
    result.renderSeconds = outcome.startSeconds;
    result.counts = session.Counts();
    result.complaints = session.GetComplaints();
    result.usedValues = session.Recorded().value_or(ScriptValues());
    if (!outcome.stored) {
        return RenderFailure(result, session, outcome.status);
    }
    PutImage(session.TakeResult(), result.picture);
    return {};
}

// Outputs appear whole, so one that is there is complete; an empty file is somebody's place-holder.
bool IsThere(const std::filesystem::path& output) {
    std::error_code error;
    return std::filesystem::is_regular_file(output, error) &&
           std::filesystem::file_size(output, error) > 0 && !error;
}

std::optional<Failure> RunSteps(const JobSettings& settings, JobResult& result) {
    const Stopwatch reading;
    if (const PictureResult error = ReadPicture(result.input, result.picture, Interrupted)) {
        return FailureOf(*error);
    }
    result.readSeconds = reading.Seconds();
    if (std::optional<Failure> failure = CheckMask(settings, result); failure) {
        return failure;
    }
    // Better told now than after the computation.
    if (const PictureResult error = CheckTarget(result.output, result.picture.type)) {
        return FailureOf(*error);
    }
    if (std::optional<Failure> failure = Render(settings, result); failure) {
        return failure;
    }
    const Stopwatch writing;
    if (const PictureResult error = WritePicture(result.output, result.picture, Interrupted)) {
        return FailureOf(*error);
    }
    result.writeSeconds = writing.Seconds();
    return {};
}

}  // namespace

std::optional<Failure> ReadMask(const std::string& name, JobSettings& settings) {
    Picture mask;
    if (const PictureResult error = ReadPicture(PathFromText(name), mask, Interrupted)) {
        return FailureOf(*error);
    }
    settings.mask = std::move(mask);
    settings.maskName = name;
    return {};
}

JobResult RunJob(const std::filesystem::path& input, const std::filesystem::path& output,
                 const JobSettings& settings) {
    const Stopwatch total;
    JobResult result;
    result.input = input;
    result.output = output;
    if (settings.skipExisting && IsThere(output)) {
        result.skipped = true;
        return result;
    }
    try {
        result.failure = RunSteps(settings, result);
    } catch (const std::bad_alloc&) {
        result.failure = {ExitCode::RenderFailed, "not enough memory for '" + PathToText(input) +
                                                      "'; reduce it, or use a machine with more"};
    }
    result.picture.samples = {};
    result.totalSeconds = total.Seconds();
    return result;
}

}  // namespace mv::host
