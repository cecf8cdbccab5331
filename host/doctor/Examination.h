// What can be said of a filter module from its bytes alone.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace mv::host {

enum class FindingLevel {
    Good,     // as it should be
    Note,     // worth knowing
    Warning,  // some hosts, or some machines, will have trouble
    Fault,    // hosts cannot use the file
};

// One sentence, and what to do about it, which is empty for what is good.
struct Finding {
    FindingLevel level = FindingLevel::Good;
    std::string text;
    std::string advice;
};

// Something that the file says of itself. The key is for programs, the label for people.
struct Fact {
    std::string key;
    std::string label;
    std::vector<std::string> values;
};

// Belongs to the caller; holds texts only, fit to be printed whatever the file held.
struct Examination {
    std::string kind;  // "a filter module for 64-bit Windows"
    std::vector<Fact> facts;
    std::vector<Finding> findings;

    void Add(FindingLevel level, std::string text, std::string advice = {}) {
        findings.push_back({level, std::move(text), std::move(advice)});
    }
    void State(std::string key, std::string label, std::vector<std::string> values) {
        facts.push_back({std::move(key), std::move(label), std::move(values)});
    }
    std::size_t Count(FindingLevel level) const;
};

// Looks at the bytes as data and runs none of them, so a Windows module can be looked at anywhere.
// Whatever the bytes are, it ends soon. The name is the file's own, without folders: its ending
// counts, as hosts look for it.
Examination Examine(std::span<const std::uint8_t> bytes, std::string_view fileName);

// The report for people, line by line, with the verdict at the end; and the same for programs.
std::string ExaminationText(const Examination& examination, const std::string& fileName);
std::string ExaminationJson(const Examination& examination, const std::string& fileName);

}  // namespace mv::host
