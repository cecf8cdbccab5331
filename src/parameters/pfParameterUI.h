#pragma once

namespace mv {

class pfParameter;

// The control side of the binding between a parameter and what shows it. The windowed controls
// derive from it; where there is no window, plain objects of this class stand in for them. The
// filter owns the controls, and they run on the thread that runs the dialog.
class pfParameterUI {
public:
    pfParameterUI() = default;
    virtual ~pfParameterUI() = default;
    pfParameterUI(const pfParameterUI&) = delete;
    pfParameterUI& operator=(const pfParameterUI&) = delete;

    // Run once when the dialog starts.
    virtual void Setup();
    // Copies the parameter into the windows.
    virtual void Refresh();
    // Copies the windows into the parameter; true if the value changed.
    virtual bool ReadWindow();

    // A null parameter, and one that this control has already, change nothing. A parameter that
    // was bound here before keeps pointing at this control.
    void Bind(pfParameter* parameter) noexcept;
    // Hands back the parameter that was bound, or null.
    pfParameter* Unbind() noexcept;
    // Refreshes the control when the state differs.
    void SetEnabled(bool value);
    pfParameter* GetParameter() const noexcept { return parameter_; }
    bool GetEnabled() const noexcept { return enabled_; }
    bool GetVisible() const noexcept { return visible_; }

protected:
    // A control class decides by itself whether it shows.
    void SetVisible(bool value) noexcept { visible_ = value; }

private:
    pfParameter* parameter_ = nullptr;
    bool enabled_ = true;
    bool visible_ = true;
};

}  // namespace mv
