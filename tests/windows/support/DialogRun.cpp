#include "support/DialogRun.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace mv::windowstest {

namespace {

constexpr const char* kInterfaceTitle = "Radial Blur V1.26 ~ ";
constexpr unsigned kOpenTimeout = 60000;

constexpr UINT kProbe = WM_APP + 77;
constexpr unsigned kProbeTimeout = 30000;
std::atomic<unsigned> probesServed{0};

constexpr UINT_PTR kProbeTimer = 0x7077;
std::atomic<bool> probeTimerRuns{false};

// Called by IsDialogMessage alone, so only from the dialog's own loop and on its thread. A timer's
// message comes behind all others, also behind the painting: when it is served, the pass is over.
// The timer goes on until then, so a render that drains the queue cannot swallow it.
LRESULT CALLBACK WatchLoop(int code, WPARAM wParam, LPARAM lParam) {
    if (code == MSGF_DIALOGBOX) {
        const auto* message = reinterpret_cast<const MSG*>(lParam);
        if (message->message == kProbe && !probeTimerRuns.exchange(true)) {
            SetTimer(message->hwnd, kProbeTimer, 1, nullptr);
        } else if (message->message == WM_TIMER && message->wParam == kProbeTimer) {
            KillTimer(message->hwnd, kProbeTimer);
            probeTimerRuns = false;
            ++probesServed;
        }
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

struct Search {
    HWND interfaceWindow = nullptr;
};

BOOL CALLBACK LookForInterface(HWND window, LPARAM parameter) {
    char title[64] = {};
    GetWindowTextA(window, title, sizeof title);
    if (std::string(title) == kInterfaceTitle && IsWindowVisible(window)) {
        reinterpret_cast<Search*>(parameter)->interfaceWindow = window;
        return FALSE;
    }
    return TRUE;
}

std::filesystem::path otherModule;

std::filesystem::path ModulePath() {
    if (!otherModule.empty()) {
        return otherModule;
    }
    const char* chosen = std::getenv("RADIAL_BLUR_MODULE");
    return chosen != nullptr ? std::filesystem::path(chosen) : host::DefaultModulePath();
}

std::unique_ptr<host::Module> loadedModule;

}  // namespace

host::Module& DialogRun::LoadedModule() {
    if (!loadedModule) {
        loadedModule = std::make_unique<host::Module>();
        std::string reason;
        if (!loadedModule->Load(ModulePath(), reason)) {
            std::fprintf(stderr, "%s\n", reason.c_str());
            std::exit(3);
        }
    }
    return *loadedModule;
}

void DialogRun::UseModule(const std::filesystem::path& path) {
    loadedModule.reset();
    otherModule = path;
}

void DialogRun::UnloadModule() {
    loadedModule.reset();
}

DialogRun::DialogRun(host::HostDocument document, host::HostOffer offer) {
    offer.playInfo = hostapi::plugInDialogDisplay;
    session_ = std::make_unique<host::HostSession>(LoadedModule().GetEntryPoint(),
                                                   std::move(document), offer);
    session_->Hooks().afterAdvance = [this](hostapi::FilterRecord& record) {
        const std::lock_guard<std::mutex> lock(mutex_);
        requests_.push_back({record.inRect, record.outRect, record.maskRect, record.inputRate});
    };
    session_->Record().displayPixels = nullptr;
}

DialogRun::~DialogRun() {
    if (!ended_ && interface_ != nullptr) {
        PostMessageA(interface_, WM_COMMAND, IDCANCEL, 0);
    }
    if (thread_.joinable()) {
        thread_.join();
    }
    if (hook_ != nullptr) {
        UnhookWindowsHookEx(hook_);
    }
}

void DialogRun::RunOnThread(bool withParameters) {
    threadId_ = GetCurrentThreadId();
    if (withHostWindow) {
        hostWindow = CreateWindowExA(0, "Static", "host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0,
                                     120, 80, nullptr, nullptr, nullptr, nullptr);
    }
    platformData_.hwnd = hostWindow;
    session_->Record().platformData = &platformData_;
    outcome_ = session_->Run(withParameters);
    MSG message;
    quitWasLeft_ = PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_NOREMOVE) != FALSE;
    if (withHostWindow) {
        DestroyWindow(hostWindow);
    }
    ended_ = true;
}

bool DialogRun::Start(bool withParameters) {
    ended_ = false;
    probeTimerRuns = false;
    thread_ = std::thread([this, withParameters] { RunOnThread(withParameters); });
    const DWORD begin = GetTickCount();
    while (!ended_ && GetTickCount() - begin < kOpenTimeout) {
        if (FindWindows()) {
            hook_ = SetWindowsHookExA(WH_MSGFILTER, WatchLoop, nullptr, threadId_);
            return true;
        }
        Sleep(5);
    }
    return false;
}

bool DialogRun::FindWindows() {
    const DWORD id = threadId_;
    Search search;
    if (id != 0) {
        EnumThreadWindows(id, LookForInterface, reinterpret_cast<LPARAM>(&search));
    }
    if (search.interfaceWindow == nullptr) {
        return false;
    }
    interface_ = search.interfaceWindow;
    preview_ = GetWindow(interface_, GW_OWNER);
    return preview_ != nullptr && IsWindowVisible(preview_);
}

bool DialogRun::AwaitLoop() {
    const unsigned before = probesServed;
    const DWORD begin = GetTickCount();
    // A probe that a render has drained is gone, so others follow it soon.
    while (probesServed == before) {
        if (ended_ || GetTickCount() - begin > kProbeTimeout) {
            return false;
        }
        PostMessageA(interface_, kProbe, 0, 0);
        for (int i = 0; i < 10 && probesServed == before; ++i) {
            Sleep(2);
        }
    }
    return true;
}

bool DialogRun::Finish(unsigned milliseconds) {
    const DWORD begin = GetTickCount();
    while (!ended_ && GetTickCount() - begin < milliseconds) {
        Sleep(2);
    }
    if (!ended_) {
        return false;
    }
    if (thread_.joinable()) {
        thread_.join();
    }
    return true;
}

std::vector<AdvanceRequest> DialogRun::Requests() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return requests_;
}

host::HostImage DrawPicture(int width, int height, int planes, int depth) {
    host::HostImage image(width, height, planes, depth);
    const double white = depth == 8 ? 255.0 : depth == 16 ? 32768.0 : 1.0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double u = static_cast<double>(x) / width;
            const double v = static_cast<double>(y) / height;
            const bool square = (x / 16 + y / 16) % 2 == 0;
            const double disc = std::hypot(u - 0.3, v - 0.35) < 0.12 ? 1.0 : 0.0;
            const double values[4] = {std::max(disc, square ? u : 0.15), std::max(disc, v * 0.9),
                                      square ? 0.8 - 0.6 * u : 0.1, 1.0};
            for (int plane = 0; plane < planes; ++plane) {
                image.Set(x, y, plane, values[plane % 4] * white);
            }
        }
    }
    return image;
}

host::HostDocument ColorDocument(int width, int height) {
    return host::MakeDocument(DrawPicture(width, height, 3), false);
}

}  // namespace mv::windowstest
