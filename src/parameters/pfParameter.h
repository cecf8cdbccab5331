#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "hostapi/HostApi.h"

namespace mv {

class pfParameter;
class pfParameterUI;
class pfUndo;

using pfChangeCallback = void (*)(pfParameter*, void*);

// One setting of the filter and the single owner of its value: controls, preset files, scripts,
// undo records and the render all read and write it here. Instances are members of the filter
// and live as long as it does. Only the host's thread comes here; nothing is locked.
class pfParameter {
public:
    pfParameter() = default;
    virtual ~pfParameter() = default;
    pfParameter(const pfParameter&) = delete;
    pfParameter& operator=(const pfParameter&) = delete;

    virtual void Validate() = 0;
    // Every class forwards to this body: the bound control, if there is one, shows the value.
    virtual void UpdateUI() = 0;
    virtual void WriteScriptParam(hostapi::FilterRecord* record,
                                  hostapi::PIWriteDescriptor token) = 0;
    virtual void ReadScriptParam(hostapi::FilterRecord* record, hostapi::OSType key,
                                 hostapi::PIReadDescriptor token) = 0;
    virtual int GetScriptKeyCount() const = 0;
    // Writes GetScriptKeyCount() keys, packed.
    virtual void GetScriptKeys(hostapi::OSType* keys) const = 0;
    // A record of the present value, owned by the caller; null when no memory is left.
    virtual pfUndo* CreateUndo() = 0;
    virtual void Randomize(double amount) = 0;

    void SetName(std::string name) noexcept { name_ = static_cast<std::string&&>(name); }
    std::string GetName() const { return name_; }
    // The name without a copy, for passes that must not allocate.
    std::string_view GetNameView() const noexcept { return name_; }
    pfParameterUI* GetUI() const noexcept { return ui_; }
    void SetChangeCallback(pfChangeCallback function, void* data) noexcept;
    void SetPersistent(bool value) noexcept { persistent_ = value; }
    void SetUndoable(bool value) noexcept { undoable_ = value; }
    void SetRandomizable(bool value) noexcept { randomizable_ = value; }
    bool GetPersistent() const noexcept { return persistent_; }
    bool GetUndoable() const noexcept { return undoable_; }
    bool GetRandomizable() const noexcept { return randomizable_; }

protected:
    void RunChangeCallback();
    // All common fields but the control. May throw std::bad_alloc, and then nothing has changed.
    void CopyCommonFields(const pfParameter& source);

private:
    friend class pfParameterUI;

    std::string name_;
    pfParameterUI* ui_ = nullptr;
    pfChangeCallback changeCallback_ = nullptr;
    bool persistent_ = true;
    bool undoable_ = true;
    bool randomizable_ = true;
    void* changeCallbackData_ = nullptr;
};

}  // namespace mv
