#include "tests/tools/ToolRun.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <thread>

namespace Kestra::Test {

namespace {

/// The value of a call that returns -1 on failure.
int Checked(int value, const char* call) {
    if (value == -1)
        throw std::system_error(errno, std::generic_category(), call);
    return value;
}

/// An open file descriptor.
class Descriptor {
public:
    explicit Descriptor(int openDescriptor) : descriptor(openDescriptor) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    Descriptor(Descriptor&& other) noexcept : descriptor(other.descriptor) {
        other.descriptor = -1;
    }
    ~Descriptor() {
        Close();
    }

    int Get() const {
        return descriptor;
    }

    void Close() {
        if (descriptor != -1)
            close(descriptor);
        descriptor = -1;
    }

private:
    int descriptor;
};

struct Pipe {
    Pipe() : Pipe(Make()) {}

    Descriptor reader;
    Descriptor writer;

private:
    struct Ends {
        int descriptors[2];
    };
    explicit Pipe(Ends ends) : reader(ends.descriptors[0]), writer(ends.descriptors[1]) {}
    static Ends Make() {
        Ends ends;
        Checked(pipe2(ends.descriptors, O_CLOEXEC), "pipe2");
        return ends;
    }
};

struct Terminal {
    Terminal() : Terminal(Make()) {}

    Descriptor master;
    Descriptor slave;

private:
    struct Ends {
        int master;
        int slave;
    };
    explicit Terminal(Ends ends) : master(ends.master), slave(ends.slave) {}
    static Ends Make() {
        Ends ends;
        Checked(openpty(&ends.master, &ends.slave, nullptr, nullptr, nullptr), "openpty");
        Checked(fcntl(ends.master, F_SETFD, FD_CLOEXEC), "fcntl");
        Checked(fcntl(ends.slave, F_SETFD, FD_CLOEXEC), "fcntl");
        termios settings;
        Checked(tcgetattr(ends.slave, &settings), "tcgetattr");
        cfmakeraw(&settings);
        Checked(tcsetattr(ends.slave, TCSANOW, &settings), "tcsetattr");
        return ends;
    }
};

void WriteAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written <= 0)
            return;  // the tool has closed its end
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

/// Waits until a pipe is empty, or has no reader.
void WaitUntilRead(int descriptor) {
    const auto isFull = [descriptor] {
        int count = 0;
        pollfd reader = {descriptor, 0, 0};
        return ioctl(descriptor, FIONREAD, &count) == 0 && count > 0 && poll(&reader, 1, 0) == 0;
    };
    while (isFull())
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

/// Reads until the other end is closed; a terminal says so by an error.
std::string ReadAll(int descriptor) {
    std::string bytes;
    char block[4096];
    while (true) {
        const ssize_t count = read(descriptor, block, sizeof(block));
        if (count <= 0)
            return bytes;
        bytes.append(block, static_cast<std::size_t>(count));
    }
}

/// An open descriptor for a stream of the tool, or one that holds nothing for a stream that is to
/// be closed.
Descriptor OpenSink(Sink sink, const std::filesystem::path& capture, const Terminal& terminal) {
    switch (sink) {
        case Sink::CAPTURED:
            return Descriptor(Checked(open(capture.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600), "open"));
        case Sink::TERMINAL:
            return Descriptor(Checked(fcntl(terminal.slave.Get(), F_DUPFD_CLOEXEC, 0), "fcntl"));
        case Sink::CLOSED:
            break;
        case Sink::CLOSED_PIPE:
            return std::move(Pipe().writer);  // the reader is closed at the end of the statement
        case Sink::UNWRITABLE:
            return Descriptor(Checked(open("/dev/full", O_WRONLY | O_CLOEXEC), "open"));
    }
    return Descriptor(-1);
}

/// In the child: puts a descriptor in the place of a standard stream, or closes the stream.
void Place(int descriptor, int stream) {
    if (descriptor == -1)
        close(stream);
    else
        dup2(descriptor, stream);
}

int StatusOf(pid_t child) {
    int status = 0;
    Checked(waitpid(child, &status, 0), "waitpid");
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

ToolRun RunTool(const std::vector<std::string>& arguments, const ToolSettings& settings) {
    std::signal(SIGPIPE, SIG_IGN);  // the tool may end without reading its input
    const TemporaryFolder folder;
    const std::filesystem::path outputFile = folder.GetPath() / "output";
    const std::filesystem::path errorsFile = folder.GetPath() / "errors";

    std::vector<char*> argv;
    std::string program = KESTRA_TOOL;
    argv.push_back(program.data());
    std::vector<std::string> copies = arguments;
    for (std::string& argument : copies)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    Terminal terminal;
    Pipe input;
    Descriptor output = OpenSink(settings.output, outputFile, terminal);
    Descriptor errors = OpenSink(settings.errors, errorsFile, terminal);

    const pid_t child = Checked(fork(), "fork");
    if (child == 0) {
        std::signal(SIGPIPE, SIG_DFL);
        Place(settings.input ? input.reader.Get() : -1, STDIN_FILENO);
        Place(output.Get(), STDOUT_FILENO);
        Place(errors.Get(), STDERR_FILENO);
        unsetenv("NO_COLOR");
        setenv("TERM", "xterm", 1);
        setenv("ASAN_OPTIONS", "exitcode=99", 1);  // none of the tool's own
        setenv("UBSAN_OPTIONS", "exitcode=99", 1);
        for (const auto& [name, value] : settings.environment)
            setenv(name.c_str(), value.c_str(), 1);
        if (settings.largestFile) {
            const rlimit limit = {*settings.largestFile, *settings.largestFile};
            setrlimit(RLIMIT_FSIZE, &limit);
            std::signal(SIGXFSZ, SIG_IGN);  // so that a write fails
        }
        if (settings.folder.empty() || chdir(settings.folder.c_str()) == 0)
            execv(argv[0], argv.data());
        _exit(127);
    }
    output.Close();
    errors.Close();
    terminal.slave.Close();
    input.reader.Close();

    std::thread writer([&] {
        WriteAll(input.writer.Get(), settings.input.value_or(""));
        if (settings.pause.count() > 0)
            WaitUntilRead(input.writer.Get());
        std::this_thread::sleep_for(settings.pause);
        WriteAll(input.writer.Get(), settings.inputAfterPause);
        input.writer.Close();
    });
    const std::string shown = ReadAll(terminal.master.Get());
    ToolRun run;
    run.status = StatusOf(child);
    writer.join();
    run.output = settings.output == Sink::TERMINAL ? shown : ReadFile(outputFile);
    run.errors = settings.errors == Sink::TERMINAL ? shown : ReadFile(errorsFile);
    return run;
}

std::string GetReason(Sink sink) {
    return sink == Sink::UNWRITABLE ? "No space left on device" : "Bad file descriptor";
}

ToolRun RunToolOn(std::string_view input, const std::vector<std::string>& arguments) {
    ToolSettings settings;
    settings.input = std::string(input);
    return RunTool(arguments, settings);
}

}  // namespace Kestra::Test
