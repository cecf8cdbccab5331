#pragma once

#include <windows.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "HostSession.h"
#include "Module.h"

namespace mv::windowstest {

// One request for pixels, as the host saw it.
struct AdvanceRequest {
    hostapi::Rect inRect;
    hostapi::Rect outRect;
    hostapi::Rect maskRect;
    hostapi::Fixed inputRate;
};

// The module in a host that shows its dialog. The run goes on a thread of its own, which is the
// host's thread for the module; the test's thread is the user. Waits for the end in its
// destructor, after pressing Cancel if need be.
class DialogRun {
public:
    explicit DialogRun(host::HostDocument document, host::HostOffer offer = {});
    ~DialogRun();
    DialogRun(const DialogRun&) = delete;
    DialogRun& operator=(const DialogRun&) = delete;

    // To be changed before Start.
    host::HostSession& Session() { return *session_; }
    HWND hostWindow = nullptr;
    // Makes a window on the host's thread, which then is the dialog's owner.
    bool withHostWindow = false;

    // False when the dialog did not come up.
    bool Start(bool withParameters = true);
    bool Running() const { return !ended_; }
    // Waits for the end of the run; false when it does not come.
    bool Finish(unsigned milliseconds = 60000);
    const host::RunOutcome& Outcome() const { return outcome_; }
    std::vector<AdvanceRequest> Requests();
    // Whether a quit message was in the thread's queue when the run had ended.
    bool QuitWasLeft() const { return quitWasLeft_; }
    DWORD ThreadId() const { return threadId_; }
    HWND Interface() const { return interface_; }
    HWND Preview() const { return preview_; }
    // Waits until the dialog's own loop has served a message of ours, which a render that drains
    // the queue does not count for. False when it does not in time.
    bool AwaitLoop();

    static host::Module& LoadedModule();
    // Another module than the one beside the test program from the next loading on; empty for that.
    static void UseModule(const std::filesystem::path& path);
    static void UnloadModule();

private:
    void RunOnThread(bool withParameters);
    bool FindWindows();

    std::unique_ptr<host::HostSession> session_;
    hostapi::PlatformData platformData_ = {};
    std::thread thread_;
    std::atomic<bool> ended_{true};
    std::atomic<DWORD> threadId_{0};
    std::mutex mutex_;
    std::vector<AdvanceRequest> requests_;
    host::RunOutcome outcome_;
    bool quitWasLeft_ = false;
    HWND interface_ = nullptr;
    HWND preview_ = nullptr;
    HHOOK hook_ = nullptr;
};

// A picture with edges and colours, so that a wrong row or channel shows.
host::HostImage DrawPicture(int width, int height, int planes, int depth = 8);
host::HostDocument ColorDocument(int width, int height);

}  // namespace mv::windowstest
