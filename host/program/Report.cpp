#include "program/Report.h"

#include <algorithm>
#include <iomanip>
#include <locale>
#include <sstream>

#include "pictures/PictureFile.h"
#include "program/Json.h"
#include "program/ParameterTable.h"

namespace mv::host {
namespace {

std::string ColourText(const Picture& picture) {
    return std::string(picture.colours == 1 ? "gray" : "RGB") + (picture.alpha ? " + alpha" : "");
}

int Bits(const Picture& picture) {
    return static_cast<int>(picture.SampleBytes() * 8);
}

void WriteValue(JsonWriter& json, const ParameterInfo& parameter, const ScriptValue& value) {
    if (const auto* const number = std::get_if<double>(&value)) {
        json.Number(*number);
    } else if (const auto* const flag = std::get_if<bool>(&value)) {
        json.Boolean(*flag);
    } else if (const auto* const entry = std::get_if<std::int32_t>(&value)) {
        json.Text(EntryText(parameter, *entry));
    }
}

void WriteDone(JsonWriter& json, const JobResult& job) {
    json.Key("width").Integer(job.picture.width);
    json.Key("height").Integer(job.picture.height);
    json.Key("colours").Text(job.picture.colours == 1 ? "gray" : "RGB");
    json.Key("alpha").Boolean(job.picture.alpha);
    json.Key("bits").Integer(Bits(job.picture));
    json.Key("seconds").BeginObject();
    json.Key("read").Number(job.readSeconds);
    json.Key("render").Number(job.renderSeconds);
    json.Key("write").Number(job.writeSeconds);
    json.Key("total").Number(job.totalSeconds);
    json.EndObject();
    json.Key("filterMemory").BeginObject();
    json.Key("peakBytes").Integer(static_cast<std::int64_t>(job.counts.bufferBytesPeak));
    json.Key("blocks").Integer(job.counts.buffersAsked);
    json.Key("blocksLeft").Integer(job.counts.buffersLive);
    json.EndObject();
    WriteValues(json, job.usedValues);
}

void WriteJob(JsonWriter& json, const JobResult& job) {
    json.BeginObject();
    json.Key("input").Text(PathToText(job.input));
    json.Key("output").Text(PathToText(job.output));
    json.Key("done").Boolean(!job.failure && !job.skipped);
    if (job.skipped) {
        json.Key("skipped").Boolean(true);
    } else if (job.failure) {
        json.Key("exitCode").Integer(static_cast<int>(job.failure->code));
        json.Key("error").Text(job.failure->text);
    } else {
        WriteDone(json, job);
        if (!job.timing.empty()) {
            json.Key("timing").Text(job.timing);
        }
    }
    if (!job.complaints.empty()) {
        json.Key("remarks").BeginArray();
        for (const std::string& complaint : job.complaints) {
            json.Text(complaint);
        }
        json.EndArray();
    }
    json.EndObject();
}

// What became of the pictures.
struct Totals {
    std::int64_t done = 0;
    std::int64_t skipped = 0;
    std::int64_t failed = 0;

    explicit Totals(const RunReport& report) {
        for (const JobResult& job : report.jobs) {
            ++(job.failure ? failed : job.skipped ? skipped : done);
        }
    }
};

}  // namespace

void WriteValues(JsonWriter& json, const ScriptValues& values) {
    json.Key("values").BeginObject();
    for (const ParameterInfo& parameter : Parameters()) {
        const ScriptValue* const value = FindValue(values, KeyOf(parameter.key));
        if (value == nullptr) {
            continue;
        }
        json.Key(parameter.name);
        const ScriptValue* const second =
            parameter.secondKey.empty() ? nullptr : FindValue(values, KeyOf(parameter.secondKey));
        if (second != nullptr) {
            json.BeginArray();
            WriteValue(json, parameter, *value);
            WriteValue(json, parameter, *second);
            json.EndArray();
        } else {
            WriteValue(json, parameter, *value);
        }
    }
    json.EndObject();
}

std::string JobLine(const JobResult& job) {
    if (job.skipped) {
        return PathToText(job.input) + " -> " + PathToText(job.output) + ": there already";
    }
    std::ostringstream line;
    line.imbue(std::locale::classic());
    line << PathToText(job.input) << " -> " << PathToText(job.output) << ": " << job.picture.width
         << " x " << job.picture.height << ", " << ColourText(job.picture) << ", "
         << Bits(job.picture) << " bit, " << std::fixed << std::setprecision(2) << job.totalSeconds
         << " s";
    return line.str();
}

std::string TimingText(const JobResult& job) {
    return job.timing.empty() ? "the filter module gave no times\n" : job.timing;
}

std::string SummaryText(const RunReport& report) {
    const Totals totals(report);
    std::string text =
        std::to_string(totals.done) + " of " + std::to_string(report.planned) + " pictures done";
    if (totals.skipped > 0) {
        text += ", " + std::to_string(totals.skipped) + " skipped as they were there already";
    }
    if (totals.failed > 0) {
        text += ", " + std::to_string(totals.failed) + " failed";
    }
    if (report.jobs.size() < report.planned) {
        text += ", " + std::to_string(report.planned - report.jobs.size()) + " not begun";
    }
    text += "\n";
    for (const JobResult& job : report.jobs) {
        if (job.failure) {
            text += "failed: " + PathToText(job.input) + "\n";
        }
    }
    return text;
}

std::string ReportJson(const RunReport& report) {
    JsonWriter json;
    json.BeginObject();
    json.Key("program").Text("radial-blur");
    json.Key("version").Text(RADIAL_BLUR_VERSION);
    json.Key("module").Text(report.module);
    json.Key("exitCode").Integer(static_cast<int>(report.code));
    json.Key("seconds").Number(report.seconds);
    json.Key("peakMemoryBytes").Integer(static_cast<std::int64_t>(report.peakMemoryBytes));
    const Totals totals(report);
    json.Key("done").Integer(totals.done);
    json.Key("skipped").Integer(totals.skipped);
    json.Key("failed").Integer(totals.failed);
    json.Key("pictures").BeginArray();
    for (const JobResult& job : report.jobs) {
        WriteJob(json, job);
    }
    json.EndArray();
    json.EndObject();
    return json.Take();
}

}  // namespace mv::host
