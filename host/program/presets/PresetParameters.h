// The filter's parameters as the module's own classes hold them, made from the program's table.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ScriptValues.h"
#include "parameters/pfParameters.h"

namespace mv {

class pfParameter;

}  // namespace mv

namespace mv::host {

// A set of parameters with their defaults, on which the preset operations of the module work. Owns
// its parameters; used on one thread.
class PresetParameters {
public:
    PresetParameters();
    ~PresetParameters();
    PresetParameters(const PresetParameters&) = delete;
    PresetParameters& operator=(const PresetParameters&) = delete;

    mv::pfParameters& Set() { return set_; }
    // Values under keys that no parameter has are passed over; hard bounds win in the end.
    void Take(const ScriptValues& values);
    // All of them, in the order of the table.
    ScriptValues Values() const;
    // As a preset file has them: the parameter lines of a block.
    std::string Lines() const;

private:
    std::vector<std::unique_ptr<mv::pfParameter>> owned_;  // in the order of the table
    mv::pfParameters set_;
};

}  // namespace mv::host
