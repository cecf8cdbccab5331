// What is remembered between runs: stored values of any size and content, under every name.
#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "FuzzInput.h"
#include "FuzzTarget.h"
#include "frame/pfFilterRadialBlur.h"
#include "interface/InterfaceSettings.h"
#include "interface/LastUsedSettings.h"
#include "platform/KeyValueStore.h"

namespace {

using fuzzing::Require;

// Holds what was written, and for other names what the input says: nothing, or bytes of some
// length, which need not be that of the value.
class HostileStore final : public mv::KeyValueStore {
public:
    explicit HostileStore(fuzzing::FuzzInput& input) : input_(input) {}

    bool Read(const char* name, void* data, std::uint32_t capacity,
              std::uint32_t& length) noexcept override {
        const std::string* const written = Find(name);
        if (written == nullptr && input_.Left() == 0) {
            return false;
        }
        const std::string value = written != nullptr ? *written : Invent(capacity);
        if (value.size() > capacity) {
            // Failures of some systems tell the size that would have been needed.
            length = static_cast<std::uint32_t>(value.size());
            return false;
        }
        std::memcpy(data, value.data(), value.size());
        length = static_cast<std::uint32_t>(value.size());
        return true;
    }

    bool Write(const char* name, mv::ValueKind, const void* data,
               std::uint32_t length) noexcept override {
        std::string value(static_cast<const char*>(data), length);
        if (std::string* const written = Find(name); written != nullptr) {
            *written = std::move(value);
        } else {
            values_.emplace_back(name, std::move(value));
        }
        return true;
    }

    // In the order of their first writing.
    const std::vector<std::pair<std::string, std::string>>& Values() const { return values_; }

private:
    // Some dozens of names: a list serves faster than a tree here.
    std::string* Find(std::string_view name) {
        const auto found = std::find_if(values_.begin(), values_.end(),
                                        [name](const auto& value) { return value.first == name; });
        return found == values_.end() ? nullptr : &found->second;
    }

    std::string Invent(std::uint32_t capacity) {
        const int kind = input_.Below(8);
        if (kind == 0) {
            return std::string(std::size_t{capacity} + 1, 'x');
        }
        if (kind == 1) {
            return input_.Text(static_cast<std::size_t>(input_.Below(12)));
        }
        if (kind < 6 && capacity == sizeof(double)) {
            const double number = input_.Number();
            return {reinterpret_cast<const char*>(&number), sizeof number};
        }
        std::string value = input_.Text(capacity);
        value.resize(capacity);
        return value;
    }

    fuzzing::FuzzInput& input_;
    std::vector<std::pair<std::string, std::string>> values_;
};

void ReadInterface(HostileStore& store) {
    mv::InterfaceSettings settings;
    settings.presetPath = "before";
    mv::ReadInterfaceSettings(store, {1920, 1080}, settings);
    Require(settings.presetPath.size() < mv::kPresetPathCapacity, "a stored path is bounded");
    mv::WindowPlacement placement = mv::kDefaultPreviewPlacement;
    mv::ReadPreviewPlacement(store, {1920, 1080}, placement);
    static_cast<void>(mv::OpensMaximised(placement.state));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static mv::pfFilterRadialBlur filter("fuzz", "fuzz", 1, 2, 6, "fuzz");
    filter.Reset(false);
    fuzzing::FuzzInput input(data, size);
    HostileStore store(input);
    if (input.Flag()) {
        ReadInterface(store);
    }
    mv::ReadLastUsed(filter.GetParameters(), store);
    filter.GetParameters().ValidateAll();
    const mv::RenderSettings settings = filter.MakeRenderSettings(64, 48);
    Require(settings.mode >= 1 && settings.mode <= 2 && settings.blend >= 1 &&
                settings.blend <= 23 && settings.show >= 1 && settings.show <= 4,
            "lists stand on one of their entries");
    Require(settings.intensity >= 0.0 && settings.strength >= 0.0 && settings.hue >= -1.0 &&
                settings.hue <= 1.0 && !std::isnan(settings.zoomStart),
            "hard bounds hold, and no value is no number");
    fuzzing::FuzzInput nothing(nullptr, 0);
    HostileStore first(nothing);
    mv::WriteLastUsed(filter.GetParameters(), first);
    filter.Reset(false);
    mv::ReadLastUsed(filter.GetParameters(), first);
    HostileStore second(nothing);
    mv::WriteLastUsed(filter.GetParameters(), second);
    Require(first.Values().size() == 21 && first.Values() == second.Values(),
            "what is stored comes back");
    return 0;
}

std::vector<std::string> fuzzing::Seeds() {
    std::vector<std::string> seeds = {std::string(), std::string(1, '\x01')};
    for (const char kind : {'\x00', '\x01', '\x02', '\x06', '\x07'}) {
        for (const char flag : {'\x00', '\x01'}) {
            std::string seed(1, flag);
            for (int i = 0; i < 40; ++i) {
                seed += kind;
                seed += std::string("\x00\x10\x20", 3);
                seed += static_cast<char>(i);
            }
            seeds.push_back(seed);
        }
    }
    return seeds;
}
