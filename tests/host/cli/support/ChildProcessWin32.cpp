#include <windows.h>

#include <stdexcept>
#include <thread>

#include "pictures/PictureFile.h"
#include "support/ChildProcess.h"

namespace mv::host::test {
namespace {

std::wstring Wide(const std::string& text) {
    return PathFromText(text).wstring();
}

// Quotes a word as the system's own splitting undoes it; no word of the tests ends in '\'.
std::wstring Quoted(const std::string& word) {
    return L"\"" + Wide(word) + L"\"";
}

struct Pipe {
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
};

Pipe MakePipe() {
    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    Pipe pipe;
    if (CreatePipe(&pipe.readEnd, &pipe.writeEnd, &inherit, 0) == 0) {
        throw std::runtime_error("no pipe");
    }
    SetHandleInformation(pipe.readEnd, HANDLE_FLAG_INHERIT, 0);
    return pipe;
}

void Drain(HANDLE pipe, std::string& text) {
    char buffer[4096];
    DWORD count = 0;
    while (ReadFile(pipe, buffer, sizeof buffer, &count, nullptr) != 0 && count > 0) {
        text.append(buffer, count);
    }
}

// Text streams end their lines in two characters there.
void DropCarriageReturns(std::string& text) {
    std::erase(text, '\r');
}

}  // namespace

void SetFakeWords(const std::string& words) {
    SetEnvironmentVariableW(L"FAKE_MODULE", words.empty() ? nullptr : Wide(words).c_str());
}

bool IsReadable(const void* address) {
    MEMORY_BASIC_INFORMATION page{};
    return VirtualQuery(address, &page, sizeof page) != 0 && page.State == MEM_COMMIT &&
           (page.Protect & (PAGE_NOACCESS | PAGE_GUARD)) == 0;
}

// Does in the child what the console does on Ctrl-C, as tests have no console to type into: it runs
// the system's own routine there, which stands at the same address in every process.
void SendControlC(HANDLE process) {
    void* const routine =
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernelbase.dll"), "CtrlRoutine"));
    const HANDLE thread =
        CreateRemoteThread(process, nullptr, 0, reinterpret_cast<LPTHREAD_START_ROUTINE>(routine),
                           reinterpret_cast<void*>(std::uintptr_t{CTRL_C_EVENT}), 0, nullptr);
    if (thread != nullptr) {
        CloseHandle(thread);
    }
}

void WatchSignal(const PROCESS_INFORMATION& process, const RunOptions& options) {
    constexpr DWORD kStep = 10;  // ms
    while (WaitForSingleObject(process.hProcess, kStep) == WAIT_TIMEOUT) {
        if (options.signal && options.signal() != 0) {
            SendControlC(process.hProcess);
        }
    }
}

ProgramRun RunChild(const std::vector<std::string>& words, const RunOptions& options) {
    std::wstring line;
    for (const std::string& word : words) {
        line += (line.empty() ? L"" : L" ") + Quoted(word);
    }
    // Wine starts its desktop with the first process that needs one, and the desktop would hold the
    // pipes of a child open for ever. So it is started here, without pipes.
    GetDesktopWindow();
    const Pipe out = MakePipe();
    const Pipe err = MakePipe();
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = out.writeEnd;
    startup.hStdError = err.writeEnd;
    PROCESS_INFORMATION process{};
    const std::wstring folder = options.folder.wstring();
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                       folder.empty() ? nullptr : folder.c_str(), &startup, &process) == 0) {
        throw std::runtime_error("no process");
    }
    CloseHandle(out.writeEnd);
    CloseHandle(err.writeEnd);
    ProgramRun run;
    std::thread errors([&] { Drain(err.readEnd, run.err); });
    std::thread output([&] { Drain(out.readEnd, run.out); });
    WatchSignal(process, options);
    errors.join();
    output.join();
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    run.code = static_cast<int>(code);
    for (const HANDLE handle : {out.readEnd, err.readEnd, process.hThread, process.hProcess}) {
        CloseHandle(handle);
    }
    DropCarriageReturns(run.out);
    DropCarriageReturns(run.err);
    return run;
}

}  // namespace mv::host::test
