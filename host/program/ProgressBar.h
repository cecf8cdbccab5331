// A bar on the terminal while the filter works.
#pragma once

#include <string>

namespace mv::host {

// Draws on stderr, where it vanishes at the end; draws nothing when told that it is not wanted.
// Called from the module's threads, one at a time.
class ProgressBar {
public:
    ProgressBar(bool wanted, std::string label);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void Show(int done, int total);
    void Clear();

private:
    bool wanted_;
    std::string label_;
    int percent_ = -1;
};

}  // namespace mv::host
