// Modules on disk as "doctor" looks at them: whatever the bytes are, it ends soon, gives a verdict,
// and says nothing that a terminal could take for a command.
#include <algorithm>
#include <span>

#include "FuzzTarget.h"
#include "doctor/Examination.h"
#include "support/ModuleFile.h"

namespace {

using fuzzing::Require;

bool IsPrintable(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](char character) { return character >= ' ' && character <= '~'; });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const mv::host::Examination result =
        mv::host::Examine(std::span<const std::uint8_t>(data, size), "radial_blur.8bf");
    Require(!result.kind.empty() && !result.findings.empty(), "every file gets a verdict");
    for (const mv::host::Fact& fact : result.facts) {
        Require(std::all_of(fact.values.begin(), fact.values.end(), IsPrintable),
                "facts are fit to be printed");
    }
    for (const mv::host::Finding& finding : result.findings) {
        Require(IsPrintable(finding.text), "findings are fit to be printed");
        Require(finding.level == mv::host::FindingLevel::Good || !finding.advice.empty(),
                "what is not good comes with what to do");
    }
    return 0;
}

std::vector<std::string> fuzzing::Seeds() {
    using mv::host::test::ModuleFile;
    std::vector<std::string> seeds = {"MZ", "text", "<html>", std::string("PK\x03\x04")};
    const auto add = [&seeds](const ModuleFile& module) {
        const mv::host::test::Bytes bytes = module.Build();
        seeds.emplace_back(bytes.begin(), bytes.end());
    };
    ModuleFile module;
    add(module);
    module.summed = false;
    add(module);
    module.signature = {16, 0, 0, 0, 0, 2, 2, 0, 1, 2, 3, 4, 5, 6, 7, 8};
    module.wide = false;
    module.machine = 0x014C;
    add(module);
    std::string elf(256, '\0');
    elf.replace(0, 7,
                std::string("\x7F"
                            "ELF\x02\x01\x01",
                            7));
    elf[16] = 3;
    elf[18] = 62;
    elf[40] = 64;  // three sections, of which the second is a table of symbols
    elf[60] = 3;
    elf[64 + 64 + 4] = 11;
    seeds.push_back(elf);
    return seeds;
}
