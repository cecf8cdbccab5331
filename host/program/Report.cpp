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

hostapi::OSType KeyOf(std::string_view key) {
    hostapi::OSType value = 0;
    for (const char character : key) {
        value = (value << 8) | static_cast<unsigned char>(character);
    }
    return value;
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
    json.Key("done").Boolean(!job.failure.has_value());
    if (job.failure) {
        json.Key("exitCode").Integer(static_cast<int>(job.failure->code));
        json.Key("error").Text(job.failure->text);
    } else {
        WriteDone(json, job);
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

}  // namespace

std::string JobLine(const JobResult& job) {
    std::ostringstream line;
    line.imbue(std::locale::classic());
    line << PathToText(job.input) << " -> " << PathToText(job.output) << ": " << job.picture.width
         << " x " << job.picture.height << ", " << ColourText(job.picture) << ", "
         << Bits(job.picture) << " bit, " << std::fixed << std::setprecision(2) << job.totalSeconds
         << " s";
    return line.str();
}

std::string SummaryLine(const RunReport& report) {
    const auto failed = std::count_if(report.jobs.begin(), report.jobs.end(),
                                      [](const JobResult& job) { return job.failure.has_value(); });
    const auto count = static_cast<std::ptrdiff_t>(report.jobs.size());
    std::string line =
        std::to_string(count - failed) + " of " + std::to_string(count) + " pictures done";
    if (failed > 0) {
        line += ", " + std::to_string(failed) + " failed";
    }
    return line;
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
    json.Key("pictures").BeginArray();
    for (const JobResult& job : report.jobs) {
        WriteJob(json, job);
    }
    json.EndArray();
    json.EndObject();
    return json.Take();
}

}  // namespace mv::host
