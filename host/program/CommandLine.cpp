#include "program/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <deque>
#include <span>
#include <string_view>
#include <vector>

#include "program/NearestWord.h"
#include "program/ParameterTable.h"
#include "program/presets/PresetCommand.h"

namespace mv::host {
namespace {

constexpr std::string_view kHint = "; 'radial-blur --help' shows how it is used";

// A parameter's option with the places that the parser fills.
struct ParameterOption {
    const ParameterInfo* parameter = nullptr;
    std::string text;
    bool flag = false;
    CLI::Option* option = nullptr;
};

Failure UsageFailure(const std::string& text) {
    return {ExitCode::Usage, text};
}

void AddParameterOption(CLI::App& app, ParameterOption& target) {
    const ParameterInfo& parameter = *target.parameter;
    std::string names = "--" + std::string(parameter.option);
    if (!parameter.alias.empty()) {
        names += ",--" + std::string(parameter.alias);
    }
    if (parameter.kind == ParameterKind::Switch) {
        names += ",!--no-" + std::string(parameter.option);
        target.option = app.add_flag(names, target.flag);
    } else {
        target.option = app.add_option(names, target.text);
    }
    // Later words win, as in a line that is called back and extended.
    target.option->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
}

// The option that was probably meant, or nothing.
std::string NearestOption(const CLI::App& app, std::string_view unknown) {
    std::vector<std::string> known;
    for (const CLI::Option* const option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            known.push_back("--" + name);
        }
    }
    return NearestWord(unknown.substr(0, unknown.find('=')), known);
}

std::optional<Failure> Parse(CLI::App& app, std::vector<std::string> arguments) {
    std::reverse(arguments.begin(), arguments.end());  // as this parser takes them
    try {
        app.parse(arguments);
    } catch (const CLI::ArgumentMismatch& error) {
        const std::string text = error.what();
        return UsageFailure(text.substr(0, text.find(':')) + " needs a value" + std::string(kHint));
    } catch (const CLI::ConversionError& error) {
        // Only switches have values of the parser's own kind.
        const std::string text = error.what();
        return UsageFailure("'" + text.substr(text.rfind("--")) +
                            "' makes no sense: the option is given alone" + std::string(kHint));
    } catch (const CLI::Error& error) {
        return UsageFailure(std::string(error.what()) + std::string(kHint));
    }
    for (const std::string& unknown : app.remaining()) {
        // Behind "--" all words are names; the parser keeps the mark itself.
        if (unknown != "--") {
            const std::string nearest = NearestOption(app, unknown);
            return UsageFailure("there is no option '" + unknown + "'" +
                                (nearest.empty() ? "" : "; did you mean '" + nearest + "'?") +
                                std::string(nearest.empty() ? kHint : ""));
        }
    }
    return {};
}

std::optional<Failure> ReadValues(const std::deque<ParameterOption>& options,
                                  ScriptValues& values) {
    for (const ParameterOption& given : options) {
        if (given.option->count() == 0) {
            continue;
        }
        const std::string text = given.parameter->kind == ParameterKind::Switch
                                     ? (given.flag ? "true" : "false")
                                     : given.text;
        if (const std::optional<std::string> mistake = ReadValue(*given.parameter, text, values)) {
            return UsageFailure(*mistake);
        }
    }
    return {};
}

// An option whose value is the name of a file, a folder or a preset.
struct NameOption {
    const char* name = nullptr;
    std::string* target = nullptr;
};

// An empty name comes, for example, from a script's variable that was never set. The option was
// meant all the same, so a run without it would do something else than was asked for.
std::optional<Failure> CheckNames(const CLI::App& app, std::span<const NameOption> options) {
    for (const NameOption& option : options) {
        if (app.count(option.name) > 0 && option.target->empty()) {
            return UsageFailure(std::string(option.name) + " was given an empty name" +
                                std::string(kHint));
        }
    }
    return {};
}

// What belongs to a run on pictures: its files, and options that mean nothing by themselves.
std::optional<Failure> ReadRun(std::vector<std::string> files, CommandLine& result) {
    if (result.force && result.savePreset.empty()) {
        return UsageFailure(
            "--force lets --save-preset replace a preset, and that was not given; "
            "outputs that exist are replaced without it");
    }
    if (files.empty()) {
        return UsageFailure("no picture was named" + std::string(kHint));
    }
    if (result.outputFolder.empty()) {
        if (files.size() == 1) {
            return UsageFailure("'" + files.front() +
                                "' has no output: name a second file, or a folder with --out-dir");
        }
        if (files.size() > 2) {
            return UsageFailure("more than two files were named: several inputs need --out-dir");
        }
        result.output = files.back();
        files.pop_back();
    }
    result.inputs = std::move(files);
    return {};
}

std::string ValueWord(const ParameterInfo& parameter) {
    switch (parameter.kind) {
        case ParameterKind::Position:
            return " X,Y";
        case ParameterKind::Number:
            return " NUMBER";
        case ParameterKind::Choice:
            return " NAME";
        case ParameterKind::Switch:
            break;
    }
    return "";
}

// Breaks at blanks into lines of at most 100 characters behind an indentation.
std::string Wrapped(const std::string& text, std::size_t indentation) {
    constexpr std::size_t kWidth = 100;
    std::string result;
    std::string line;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t blank = std::min(text.find(' ', start), text.size());
        const std::string word = text.substr(start, blank - start);
        if (!line.empty() && indentation + line.size() + 1 + word.size() > kWidth) {
            result += std::string(indentation, ' ') + line + "\n";
            line.clear();
        }
        line += (line.empty() ? "" : " ") + word;
        start = blank + 1;
    }
    return result + std::string(indentation, ' ') + line + "\n";
}

std::string ParameterHelp() {
    constexpr std::size_t kIndentation = 8;
    std::string text;
    for (const ParameterInfo& parameter : Parameters()) {
        const std::string value = ValueWord(parameter);
        text += "  --" + std::string(parameter.option) + value;
        if (!parameter.alias.empty()) {
            text += ", --" + std::string(parameter.alias) + value;
        }
        if (parameter.kind == ParameterKind::Switch) {
            text += ", --no-" + std::string(parameter.option);
        }
        text += "\n" + Wrapped(std::string(parameter.meaning), kIndentation);
        text += Wrapped(RangeText(parameter) + "; default " + DefaultText(parameter), kIndentation);
    }
    return text;
}

}  // namespace

std::string HelpText() {
    return R"(Radial blur: smears pictures along the lines through a point.

Usage: radial-blur INPUT OUTPUT [OPTION...]
       radial-blur INPUT... --out-dir FOLDER [OPTION...]
       radial-blur --list-parameters [--json]
       radial-blur presets list FILE [--json]
       radial-blur presets show FILE [NAME] [--json]
       radial-blur presets save FILE NAME [OPTION...] [--preset FILE:NAME] [--force]
       radial-blur presets delete FILE NAME
       radial-blur doctor MODULE [--json]

  radial-blur in.png out.png --strength 0.4 --origin 0.3,0.6 --mode abberative --blend screen

Pictures are PNG (8, 16 bit) and TIFF (8, 16 bit, 32 bit float) files in gray or RGB, with or
without transparency, of at most 30000 pixels a side; of a TIFF file with several pictures the
first one counts. The output's name says its format; depth, colour profile and resolution are those
of the input. An output that exists is replaced in one step when the new one is complete, and stays
as it was if anything goes wrong.

Files
  --mask FILE       a picture of the same size that says how much of each pixel takes part,
                    white all of it, black nothing
  --out-dir FOLDER  put the results there under the names of the inputs; made if it is missing
  --skip-existing   leave out inputs whose output is there already, as to go on with a run
                    that was stopped; the values of that run are not compared
  --module FILE     use this filter module instead of the one beside the program

The blur
)" + ParameterHelp() +
           R"(
Names may be written with '-' or '_' for blanks, or as their numbers. Values beyond the usual range
are taken; values beyond a limit are refused. An option that is given twice counts as last given.

Presets are looks under a name in a file that the filter's dialog reads and writes too.
  --preset FILE:NAME       take the preset's values, such as --preset looks.cfg:soft_glow; values
                           that are given as options win over it, wherever they stand
  --save-preset FILE:NAME  keep the values of the run under this name, once all of it succeeded
  --force                  let a preset of the same name be replaced
A blank in a name becomes an underscore. A preset gives every value: what its block in the file
leaves out has its default. 'presets save' takes the same options for values as a run does.

Reports
  --json             write what was done, how long it took and the memory it needed, as JSON
  --quiet            write nothing but errors, and draw no progress bar
  --timing           write how long each stage of the filter took, when a picture is done;
                     also with --quiet, and with --json in there
  --list-parameters  list all parameters with their script keys; with --json as JSON
  --version          write the version
  --help             write this text

Exit codes
  0  done                            5  the mask has another size than the picture
  1  internal error                  6  cannot write: no such folder, no rights, a full disk
  2  wrong use of the command line   7  the filter module is missing or cannot be loaded
  3  an input cannot be read         8  the filter failed, such as for lack of memory
  4  not a picture that is served    9  doctor found a fault in a module
 10  no preset of that name         11  not a preset file of this filter
 12  there is such a preset already 130 stopped by Ctrl-C
With several inputs the rest is done when one fails, the code is that of the first failure, and a
summary at the end names all that failed.
)";
}

std::optional<Failure> ReadCommandLine(std::vector<std::string> arguments, CommandLine& result) {
    const bool isPresets = !arguments.empty() && arguments.front() == "presets";
    if (isPresets) {
        arguments.erase(arguments.begin());
    }
    CLI::App app;
    app.set_help_flag();
    app.allow_extras();
    app.allow_windows_style_options(false);
    bool help = false;
    bool version = false;
    bool listParameters = false;
    std::vector<std::string> files;
    app.add_flag("--help,-h", help);
    app.add_flag("--version", version);
    app.add_flag("--list-parameters", listParameters);
    app.add_flag("--json", result.json);
    app.add_flag("--quiet,-q", result.quiet);
    app.add_flag("--skip-existing", result.skipExisting);
    app.add_flag("--force", result.force);
    app.add_flag("--timing", result.timing);
    const NameOption names[] = {{"--mask", &result.mask},
                                {"--out-dir", &result.outputFolder},
                                {"--module", &result.module},
                                {"--preset", &result.preset},
                                {"--save-preset", &result.savePreset}};
    for (const NameOption& option : names) {
        app.add_option(option.name, *option.target)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    }
    app.add_option("files", files);
    std::deque<ParameterOption> options;  // whose elements stay where they are
    for (const ParameterInfo& parameter : Parameters()) {
        options.push_back({&parameter, {}, false, nullptr});
        AddParameterOption(app, options.back());
    }
    if (std::optional<Failure> failure = Parse(app, std::move(arguments)); failure) {
        return failure;
    }
    if (help || version || listParameters) {
        result.action = help      ? Action::ShowHelp
                        : version ? Action::ShowVersion
                                  : Action::ListParameters;
        return {};
    }
    if (std::optional<Failure> failure = CheckNames(app, names); failure) {
        return failure;
    }
    if (std::optional<Failure> failure = ReadValues(options, result.values); failure) {
        return failure;
    }
    if (isPresets) {
        return ReadPresetCommand(files, result);
    }
    return ReadRun(std::move(files), result);
}

}  // namespace mv::host
