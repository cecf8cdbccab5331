#include "doctor/Examination.h"
#include "program/Json.h"

namespace mv::host {
namespace {

const char* LevelWord(FindingLevel level) {
    switch (level) {
        case FindingLevel::Good:
            return "ok";
        case FindingLevel::Note:
            return "note";
        case FindingLevel::Warning:
            return "warning";
        case FindingLevel::Fault:
            break;
    }
    return "FAULT";
}

std::string Padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

std::string Counted(std::size_t count, const std::string& word) {
    return std::to_string(count) + " " + word + (count == 1 ? "" : "s");
}

std::string Verdict(const Examination& examination) {
    const std::size_t faults = examination.Count(FindingLevel::Fault);
    const std::size_t warnings = examination.Count(FindingLevel::Warning);
    if (faults > 0) {
        return Counted(faults, "fault") + ": hosts cannot use this file.";
    }
    if (warnings > 0) {
        return "No fault, " + Counted(warnings, "warning") + ": most hosts can use this file.";
    }
    return "No fault: hosts can use this file.";
}

}  // namespace

std::string ExaminationText(const Examination& examination, const std::string& fileName) {
    constexpr std::size_t kLabelWidth = 18;
    constexpr std::size_t kLevelWidth = 9;
    std::string text = fileName + ": " + examination.kind + "\n\n";
    for (const Fact& fact : examination.facts) {
        std::string label = fact.label;
        for (const std::string& value : fact.values) {
            text += "  " + Padded(label, kLabelWidth) + value + "\n";
            label.clear();
        }
    }
    text += "\n";
    for (const Finding& finding : examination.findings) {
        text += "  " + Padded(LevelWord(finding.level), kLevelWidth) + finding.text + "\n";
        if (!finding.advice.empty()) {
            text += "  " + Padded("", kLevelWidth) + "-> " + finding.advice + "\n";
        }
    }
    return text + "\n" + Verdict(examination) + "\n";
}

std::string ExaminationJson(const Examination& examination, const std::string& fileName) {
    JsonWriter json;
    json.BeginObject();
    json.Key("file").Text(fileName);
    json.Key("kind").Text(examination.kind);
    json.Key("usable").Boolean(examination.Count(FindingLevel::Fault) == 0);
    json.Key("facts").BeginObject();
    for (const Fact& fact : examination.facts) {
        json.Key(fact.key).BeginArray();
        for (const std::string& value : fact.values) {
            json.Text(value);
        }
        json.EndArray();
    }
    json.EndObject();
    json.Key("findings").BeginArray();
    for (const Finding& finding : examination.findings) {
        json.BeginObject();
        json.Key("level").Text(LevelWord(finding.level));
        json.Key("text").Text(finding.text);
        if (!finding.advice.empty()) {
            json.Key("advice").Text(finding.advice);
        }
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
    return json.Take();
}

}  // namespace mv::host
