#pragma once

#include <cstdint>

namespace mv {

class pfParameterPosition;
class pfParameterBool;
class pfParameterInt;
class pfParameterFloat;
class pfParameterList;
class pfParameterRGB;

// The value that a parameter had before a change. Apply swaps it with the present one, so one
// record serves undo and redo alike. Records are plain blocks that own nothing: they come from
// pfParameter::CreateUndo and go through Release, which runs no destructor. Host's thread only.
class pfUndo {
public:
    pfUndo() = default;
    pfUndo(const pfUndo&) = delete;
    pfUndo& operator=(const pfUndo&) = delete;

    virtual void Apply() = 0;

    // Gives the block back. Null is allowed.
    static void Release(pfUndo* record) noexcept;

protected:
    ~pfUndo() = default;
};

class pfUndoParameterPosition final : public pfUndo {
public:
    explicit pfUndoParameterPosition(pfParameterPosition* parameter) noexcept;
    void Apply() override;

private:
    pfParameterPosition* parameter_;
    double x_ = 0.0;
    double y_ = 0.0;
};

class pfUndoParameterBool final : public pfUndo {
public:
    explicit pfUndoParameterBool(pfParameterBool* parameter) noexcept;
    void Apply() override;

private:
    pfParameterBool* parameter_;
    bool value_ = false;
};

class pfUndoParameterInt final : public pfUndo {
public:
    explicit pfUndoParameterInt(pfParameterInt* parameter) noexcept;
    void Apply() override;

private:
    pfParameterInt* parameter_;
    std::int32_t value_ = 0;
};

class pfUndoParameterFloat final : public pfUndo {
public:
    explicit pfUndoParameterFloat(pfParameterFloat* parameter) noexcept;
    void Apply() override;

private:
    pfParameterFloat* parameter_;
    double value_ = 0.0;
};

class pfUndoParameterList final : public pfUndo {
public:
    explicit pfUndoParameterList(pfParameterList* parameter) noexcept;
    void Apply() override;

private:
    pfParameterList* parameter_;
    std::int32_t value_ = 1;
};

class pfUndoParameterRGB final : public pfUndo {
public:
    explicit pfUndoParameterRGB(pfParameterRGB* parameter) noexcept;
    void Apply() override;

private:
    pfParameterRGB* parameter_;
    double red_ = 1.0;
    double green_ = 1.0;
    double blue_ = 1.0;
};

}  // namespace mv
