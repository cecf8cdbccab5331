#include "program/Run.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <exception>
#include <set>
#include <utility>

#include "Module.h"
#include "pictures/PictureFile.h"
#include "program/CommandLine.h"
#include "program/Doctor.h"
#include "program/Job.h"
#include "program/ParameterTable.h"
#include "program/Report.h"
#include "program/System.h"
#include "program/presets/PresetCommand.h"

namespace mv::host {
namespace {

namespace fs = std::filesystem;

struct FilePair {
    fs::path input;
    fs::path output;
};

void Say(const std::string& text) {
    std::fputs(text.c_str(), stdout);
}

void Complain(const std::string& text) {
    std::fputs(("radial-blur: " + text + "\n").c_str(), stderr);
}

int End(const Failure& failure) {
    Complain(failure.text);
    return static_cast<int>(failure.code);
}

// Names that the file system takes for the same must not meet in one folder.
std::string ComparableName(const fs::path& name) {
    std::string text = PathToText(name);
#ifdef _WIN32
    for (char& character : text) {
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    }
#endif
    return text;
}

std::optional<Failure> PairFiles(const CommandLine& commandLine, std::vector<FilePair>& pairs) {
    if (commandLine.outputFolder.empty()) {
        pairs.push_back(
            {PathFromText(commandLine.inputs.front()), PathFromText(commandLine.output)});
        if (!FormatOfName(pairs.front().output)) {
            return Failure{ExitCode::Usage, "the output '" + commandLine.output +
                                                "' must have a name in .png, .tif or .tiff"};
        }
        return {};
    }
    const fs::path folder = PathFromText(commandLine.outputFolder);
    std::set<std::string> names;
    for (const std::string& input : commandLine.inputs) {
        const fs::path path = PathFromText(input);
        if (!names.insert(ComparableName(path.filename())).second) {
            return Failure{ExitCode::Usage,
                           "two inputs are called '" + PathToText(path.filename()) +
                               "' and would have one output; put them into different folders"};
        }
        pairs.push_back({path, folder / path.filename()});
    }
    return {};
}

std::optional<Failure> MakeOutputFolder(const std::string& name) {
    if (name.empty()) {
        return {};
    }
    std::error_code error;
    const fs::path folder = PathFromText(name);
    if (fs::exists(folder, error) && !fs::is_directory(folder, error)) {
        return Failure{ExitCode::CannotWrite,
                       "'" + name + "' is a file; --out-dir needs a folder, made if it is missing"};
    }
    fs::create_directories(folder, error);
    if (!fs::is_directory(folder, error)) {
        return Failure{ExitCode::CannotWrite,
                       "cannot make the folder '" + name + "'; name one that can be written to"};
    }
    return {};
}

std::optional<Failure> LoadModule(const CommandLine& commandLine, Module& module,
                                  RunReport& report) {
    const bool named = !commandLine.module.empty();
    const fs::path path = named ? PathFromText(commandLine.module) : DefaultModulePath();
    report.module = PathToText(path);
    std::string reason;
    if (module.Load(path, reason)) {
        return {};
    }
    return Failure{ExitCode::ModuleProblem,
                   "cannot load the filter module '" + report.module + "': " + reason +
                       (named ? ""
                              : std::string("; put ") + ModuleFileName() +
                                    " beside the program, or name it with --module")};
}

void RunJobs(const std::vector<FilePair>& pairs, const JobSettings& settings,
             const CommandLine& commandLine, RunReport& report) {
    const bool lines = !commandLine.quiet && !commandLine.json;
    report.planned = pairs.size();
    for (const FilePair& pair : pairs) {
        if (Interrupted()) {
            report.code = ExitCode::Aborted;
            break;
        }
        JobResult job = RunJob(pair.input, pair.output, settings);
        if (job.failure) {
            Complain(job.failure->text);
            if (report.code == ExitCode::Success || job.failure->code == ExitCode::Aborted) {
                report.code = job.failure->code;
            }
        } else if (lines) {
            Say(JobLine(job) + "\n");
        }
        if (settings.timing && !commandLine.json && !job.failure && !job.skipped) {
            Say(TimingText(job));
        }
        report.jobs.push_back(std::move(job));
    }
    if (lines && pairs.size() > 1) {
        Say(SummaryText(report));
    }
}

// What failed to be kept is told like a picture that failed.
void KeepPreset(const CommandLine& commandLine, const JobSettings& settings, RunReport& report) {
    if (report.code != ExitCode::Success) {
        return;
    }
    if (const std::optional<Failure> failure = SavePresetOfRun(commandLine, settings.values)) {
        Complain(failure->text);
        report.code = failure->code;
    }
}

int Render(const CommandLine& commandLine) {
    const auto start = std::chrono::steady_clock::now();
    RunReport report;
    std::vector<FilePair> pairs;
    if (const std::optional<Failure> failure = PairFiles(commandLine, pairs)) {
        return End(*failure);
    }
    ScriptValues values;
    if (const std::optional<Failure> failure = CollectValues(commandLine, values)) {
        return End(*failure);
    }
    if (const std::optional<Failure> failure = CheckSavePreset(commandLine)) {
        return End(*failure);
    }
    Module module;
    if (const std::optional<Failure> failure = LoadModule(commandLine, module, report)) {
        return End(*failure);
    }
    JobSettings settings;
    settings.entryPoint = module.GetEntryPoint();
    settings.values = std::move(values);
    settings.timing = commandLine.timing;
    settings.skipExisting = commandLine.skipExisting;
    settings.showProgress = !commandLine.quiet && StandardErrorIsTerminal();
    if (!commandLine.mask.empty()) {
        if (const std::optional<Failure> failure = ReadMask(commandLine.mask, settings)) {
            return End(*failure);
        }
    }
    if (const std::optional<Failure> failure = MakeOutputFolder(commandLine.outputFolder)) {
        return End(*failure);
    }
    RunJobs(pairs, settings, commandLine, report);
    KeepPreset(commandLine, settings, report);
    report.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    report.peakMemoryBytes = PeakMemoryBytes();
    if (commandLine.json) {
        Say(ReportJson(report));
    }
    return static_cast<int>(report.code);
}

int DoPresets(const CommandLine& commandLine) {
    CatchInterrupts();
    std::string text;
    std::string remark;
    if (const std::optional<Failure> failure = RunPresetCommand(commandLine, text, remark)) {
        return End(*failure);
    }
    if (!remark.empty()) {
        Complain(remark);
    }
    Say(text);
    return 0;
}

int Dispatch(const CommandLine& commandLine) {
    switch (commandLine.action) {
        case Action::ShowHelp:
            Say(HelpText());
            return 0;
        case Action::ShowVersion:
            Say("radial-blur " RADIAL_BLUR_VERSION "\n");
            return 0;
        case Action::ListParameters:
            Say(commandLine.json ? ListParametersJson() : ListParametersText());
            return 0;
        case Action::Presets:
            return DoPresets(commandLine);
        case Action::Render:
            break;
    }
    CatchInterrupts();
    return Render(commandLine);
}

// What was promised on stdout must have arrived.
int Finish(int code) {
    if (std::fflush(stdout) != 0 && code == 0) {
        return End({ExitCode::CannotWrite, "cannot write to the standard output"});
    }
    return code;
}

}  // namespace

int RunProgram(std::vector<std::string> arguments) {
    const Utf8Console console;
    try {
        if (!arguments.empty() && arguments.front() == "doctor") {
            arguments.erase(arguments.begin());
            return Finish(RunDoctor(arguments));
        }
        CommandLine commandLine;
        if (const std::optional<Failure> failure =
                ReadCommandLine(std::move(arguments), commandLine)) {
            return End(*failure);
        }
        return Finish(Dispatch(commandLine));
    } catch (const std::exception& error) {
        return End({ExitCode::Internal, std::string("internal error: ") + error.what()});
    }
}

}  // namespace mv::host
