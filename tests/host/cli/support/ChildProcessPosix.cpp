#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include "support/ChildProcess.h"

namespace mv::host::test {
namespace {

struct Pipe {
    int readEnd = -1;
    int writeEnd = -1;
};

Pipe MakePipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    return {ends[0], ends[1]};
}

Pipe MakeTerminal() {
    Pipe terminal;
    if (openpty(&terminal.readEnd, &terminal.writeEnd, nullptr, nullptr, nullptr) != 0) {
        throw std::runtime_error("no terminal");
    }
    fcntl(terminal.readEnd, F_SETFD, FD_CLOEXEC);
    fcntl(terminal.writeEnd, F_SETFD, FD_CLOEXEC);
    return terminal;
}

[[noreturn]] void BecomeProgram(const std::vector<std::string>& words, const RunOptions& options,
                                int out, int err) {
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    if (!options.folder.empty() && chdir(options.folder.c_str()) != 0) {
        _exit(126);
    }
    if (options.largestFile != 0) {
        const struct rlimit limit { options.largestFile, options.largestFile };
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    _exit(127);
}

// False at the end of the stream; a terminal ends with an error.
bool Drain(int descriptor, std::string& text) {
    std::array<char, 4096> buffer;
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count > 0) {
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return count > 0;
}

void Collect(pid_t child, Pipe out, Pipe err, const RunOptions& options, ProgramRun& run) {
    std::array<struct pollfd, 2> streams = {{{out.readEnd, POLLIN, 0}, {err.readEnd, POLLIN, 0}}};
    while (streams[0].fd >= 0 || streams[1].fd >= 0) {
        poll(streams.data(), streams.size(), 10);
        if (streams[0].revents != 0 && !Drain(out.readEnd, run.out)) {
            streams[0].fd = -1;
        }
        if (streams[1].revents != 0 && !Drain(err.readEnd, run.err)) {
            streams[1].fd = -1;
        }
        const int signal = options.signal ? options.signal() : 0;
        if (signal != 0) {
            kill(child, signal);
        }
    }
}

}  // namespace

void SetFakeWords(const std::string& words) {
    setenv("FAKE_MODULE", words.c_str(), 1);
}

// The system tells of a bad address where this process would die of it.
bool IsReadable(const void* address) {
    const Pipe pipe = MakePipe();
    const bool readable = write(pipe.writeEnd, address, 1) == 1;
    close(pipe.readEnd);
    close(pipe.writeEnd);
    return readable;
}

ProgramRun RunChild(const std::vector<std::string>& words, const RunOptions& options) {
    Pipe out = MakePipe();
    const Pipe err = options.terminal ? MakeTerminal() : MakePipe();
    if (options.closedOutput) {
        close(out.writeEnd);
        out.writeEnd = open("/dev/full", O_WRONLY | O_CLOEXEC);
    }
    const pid_t child = fork();
    if (child < 0) {
        throw std::runtime_error("no process");
    }
    if (child == 0) {
        BecomeProgram(words, options, out.writeEnd, err.writeEnd);
    }
    close(out.writeEnd);
    close(err.writeEnd);
    ProgramRun run;
    Collect(child, out, err, options, run);
    close(out.readEnd);
    close(err.readEnd);
    int status = 0;
    waitpid(child, &status, 0);
    run.code = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    return run;
}

}  // namespace mv::host::test
