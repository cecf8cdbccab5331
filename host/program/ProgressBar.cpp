#include "program/ProgressBar.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <utility>

namespace mv::host {
namespace {

constexpr int kBarWidth = 30;
constexpr std::size_t kLabelWidth = 32;

}  // namespace

ProgressBar::ProgressBar(bool wanted, std::string label)
    : wanted_(wanted), label_(std::move(label)) {
    if (label_.size() > kLabelWidth) {
        label_.clear();  // cutting it could cut a character in two
    }
}

ProgressBar::~ProgressBar() {
    Clear();
}

void ProgressBar::Show(int done, int total) {
    if (!wanted_ || total <= 0) {
        return;
    }
    const int clamped = std::clamp(done, 0, total);
    const auto percent = static_cast<int>(std::int64_t{clamped} * 100 / total);
    // After the end the filter resets the host's bar; there is nothing to draw then.
    if (percent == percent_ || percent < percent_) {
        return;
    }
    percent_ = percent;
    const int filled = percent * kBarWidth / 100;
    std::string line = "\r" + label_ + (label_.empty() ? "[" : " [");
    line.append(static_cast<std::size_t>(filled), '#');
    line.append(static_cast<std::size_t>(kBarWidth - filled), '.');
    line += "] " + std::to_string(percent) + " %";
    std::fputs(line.c_str(), stderr);
    std::fflush(stderr);
}

void ProgressBar::Clear() {
    if (wanted_ && percent_ >= 0) {
        const std::string blanks(label_.size() + kBarWidth + 12, ' ');
        std::fputs(("\r" + blanks + "\r").c_str(), stderr);
        std::fflush(stderr);
    }
    percent_ = -1;
    wanted_ = false;
}

}  // namespace mv::host
