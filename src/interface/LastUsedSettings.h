// What is remembered between runs: the names of the stored values, and the parameter values of
// the last accepted run.
#pragma once

namespace mv {

class KeyValueStore;
class pfParameters;

constexpr const char* kSettingsKey = "SOFTWARE\\Morvenhale\\Photoshop\\RadialBlur";
constexpr const char* kLastUsedKey = "SOFTWARE\\Morvenhale\\Photoshop\\RadialBlur\\LastUsed";

constexpr const char* kInterfaceX = "Interface Position X";
constexpr const char* kInterfaceY = "Interface Position Y";
constexpr const char* kPresetPath = "Preset Path";
// Both bytes hold the inverse of what their names say; that is how they are stored.
constexpr const char* kHideHandle = "Interface HideHandle";
constexpr const char* kFixedPreview = "Interface FixedPreview";
constexpr const char* kPreviewX = "Preview Position X";
constexpr const char* kPreviewY = "Preview Position Y";
constexpr const char* kPreviewWidth = "Preview Position Width";
constexpr const char* kPreviewHeight = "Preview Position Height";
constexpr const char* kPreviewState = "Preview State";

// A stored path with its closing zero fits in this many bytes, or is not read.
constexpr unsigned kPresetPathCapacity = 256;

// Only persistent parameters, in the set's order. A value that cannot be written is left out.
void WriteLastUsed(const pfParameters& parameters, KeyValueStore& store) noexcept;

// Values go through the setters. A position or a colour is stored only if all of it was read.
void ReadLastUsed(const pfParameters& parameters, KeyValueStore& store);

}  // namespace mv
