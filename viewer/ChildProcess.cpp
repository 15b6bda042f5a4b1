#include <viewer/ChildProcess.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>

namespace tessarin::viewer {

namespace {

/// Before each message from the child.
struct Head {
    std::uint64_t size = 0;
    bool isResult = false;
};

/// A file descriptor that is closed with its scope.
class Descriptor {
public:
    explicit Descriptor(int descriptor) : number(descriptor) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    void close() {
        if (number >= 0)
            ::close(number);
        number = -1;
    }
    int get() const { return number; }

private:
    int number;
};

bool writeAll(int descriptor, const void* data, std::size_t size) {
    const char* place = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t written = ::write(descriptor, place, size);
        if (written < 0 && errno != EINTR)
            return false;
        place += written > 0 ? written : 0;
        size -= written > 0 ? static_cast<std::size_t>(written) : 0;
    }
    return true;
}

std::string shortly(double number) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.3g", number);
    return text;
}

void becomeQuiet() {
    const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::dup2(nowhere, stream);
    for (const int crash : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGPIPE})
        ::signal(crash, SIG_DFL);
    const rlimit none = {0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    ::prctl(PR_SET_DUMPABLE, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
}

[[noreturn]] void runChild(const std::function<std::string()>& task, int output) {
    output = ::fcntl(output, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    becomeQuiet();
    std::string text;
    Head head;
    try {
        text = task();
        head.isResult = true;
    } catch (const std::exception& error) {
        text = error.what();
    } catch (...) {
        text = "an unknown exception";
    }
    head.size = text.size();
    const bool isWritten = writeAll(output, &head, sizeof(head)) && writeAll(output, text.data(), text.size());
    ::_exit(isWritten ? 0 : 1); // nothing of the copy is torn down, nor are buffers of this process written twice
}

std::size_t residentBytes(pid_t process) {
    std::ifstream stream("/proc/" + std::to_string(process) + "/statm");
    std::size_t all = 0, resident = 0;
    stream >> all >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

/// A child that runs; it ends with its scope at the latest.
class Child {
public:
    Child(const std::function<std::string()>& task, int output, const ChildLimits& childLimits)
        : limits(childLimits), bytesBefore(residentBytes(::getpid())), process(::fork()) {
        if (process == 0)
            runChild(task, output);
        if (process < 0)
            throw ViewerError(std::string("no process for it can be started: ") + std::strerror(errno));
    }
    ~Child() { wait(true); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// Reads all that comes, and ends the child if it takes too much.
    /// @throws ChildFailure
    std::string read(int input) {
        using Clock = std::chrono::steady_clock;
        const auto begin = Clock::now();
        constexpr int pause = 20; // milliseconds
        constexpr std::size_t blockSize = 1 << 16;
        std::string text;
        std::array<char, blockSize> block{};
        while (true) {
            pollfd waiting = {input, POLLIN, 0};
            const int ready = ::poll(&waiting, 1, pause);
            const ssize_t count = ready > 0 ? ::read(input, block.data(), block.size()) : -1;
            if (ready > 0 && count == 0)
                return text;
            if (count > 0)
                text.append(block.data(), static_cast<std::size_t>(count));
            else if (ready != 0 && errno != EINTR)
                throw ChildFailure(std::string("can't be heard: ") + std::strerror(errno));
            else
                checkMemory();
            if (text.size() > limits.bytes)
                throw ChildFailure("became more than " + std::to_string(limits.bytes >> 20) + " MB");
            if (std::chrono::duration<double>(Clock::now() - begin).count() > limits.seconds)
                throw ChildFailure("took more than " + shortly(limits.seconds) + " s");
        }
    }

    /// How it ended, in words; empty for good.
    std::string takeEnd() {
        const int status = wait(false);
        if (WIFSIGNALED(status))
            return std::string("crashed (") + ::strsignal(WTERMSIG(status)) + ")";
        return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? std::string() : "ended early";
    }

private:
    void checkMemory() const {
        if (residentBytes(process) > bytesBefore + limits.bytes)
            throw ChildFailure("took more than " + std::to_string(limits.bytes >> 20) + " MB of memory");
    }

    int wait(bool isToEnd) {
        if (process <= 0)
            return 0;
        if (isToEnd)
            ::kill(process, SIGKILL);
        int status = 0;
        while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
        }
        process = 0;
        return status;
    }

    const ChildLimits limits;
    const std::size_t bytesBefore;
    pid_t process;
};

} // namespace

std::string runInChild(const std::function<std::string()>& task, const ChildLimits& limits) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw ViewerError(std::string("no process for it can be started: ") + std::strerror(errno));
    Descriptor input(ends[0]), output(ends[1]);
    Child child(task, output.get(), limits);
    output.close();
    std::string text = child.read(input.get());
    const std::string end = child.takeEnd();

    Head head;
    if (text.size() >= sizeof(head))
        std::memcpy(&head, text.data(), sizeof(head));
    if (text.size() < sizeof(head) || head.size != text.size() - sizeof(head))
        throw ChildFailure(end.empty() ? "ended early" : end);
    text.erase(0, sizeof(head));
    if (!head.isResult)
        throw ViewerError(text);
    return text;
}

} // namespace tessarin::viewer
