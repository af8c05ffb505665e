// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/kernel/ChildProcess.h"

#include "kits/support/Descriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>

#include <fcntl.h>
#include <linux/close_range.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kits {

namespace {

using Clock = std::chrono::steady_clock;

bool IsProgram(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           ::access(path.c_str(), X_OK) == 0;
}

/// Returns the path of the program called `name`; empty if there is none.
std::string FindProgram(const std::string& name) {
    if (name.find('/') != std::string::npos)
        return IsProgram(name) ? name : std::string();
    const char* variable = std::getenv("PATH");
    std::string_view folders = variable ? variable : "/usr/local/bin:/usr/bin:/bin";
    while (!folders.empty()) {
        const std::string_view folder = folders.substr(0, folders.find(':'));
        folders.remove_prefix(std::min(folders.size(), folder.size() + 1));
        std::string path = std::string(folder) + "/" + name;
        if (folder.starts_with('/') && IsProgram(path))
            return path;
    }
    return {};
}

/// Returns the caller's environment, with TMPDIR set to `folder`.
std::vector<std::string> Environment(const std::filesystem::path& folder) {
    constexpr std::string_view kTemporary = "TMPDIR=";
    std::vector<std::string> variables;
    for (char** variable = environ; *variable; variable++) {
        if (folder.empty() || !std::string_view(*variable).starts_with(kTemporary))
            variables.emplace_back(*variable);
    }
    if (!folder.empty())
        variables.push_back(std::string(kTemporary) + std::filesystem::absolute(folder).string());
    return variables;
}

std::vector<char*> Pointers(std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    pointers.reserve(strings.size() + 1);
    for (std::string& string : strings)
        pointers.push_back(string.data());
    pointers.push_back(nullptr);
    return pointers;
}

struct Pipe {
    Descriptor out;
    Descriptor in;
};

/// Makes a pipe whose descriptors lie above the three standard ones, which the caller may have
/// closed. Reading from it does not wait.
Pipe MakePipe() {
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return {Descriptor(), Descriptor()};
    const Descriptor out(ends[0]);
    const Descriptor in(ends[1]);
    ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
    return {Descriptor(::fcntl(out.Number(), F_DUPFD_CLOEXEC, 3)),
            Descriptor(::fcntl(in.Number(), F_DUPFD_CLOEXEC, 3))};
}

/// A pseudo-terminal that is nobody's controlling terminal yet. When the last descriptor of its
/// master side is closed, which the system does also for a process that is killed, the program that
/// has it as its controlling terminal gets SIGHUP, and so do all in its process group.
class HangUpLine {
  public:
    HangUpLine() : master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        if (!master || ::grantpt(master.Number()) != 0 || ::unlockpt(master.Number()) != 0 ||
            ::ptsname_r(master.Number(), name.data(), name.size()) != 0)
            name[0] = 0;
    }
    /// Returns null if the system cannot provide a terminal.
    const char* Name() const { return name[0] ? name.data() : nullptr; }

  private:
    Descriptor master;
    std::array<char, 64> name{};
};

/// Everything that the child needs between its start and that of the program.
struct Start {
    const char* path;
    char* const* arguments;
    char* const* environment;
    /// Null: the caller's folder.
    const char* folder;
    int standardError;
    /// The program's controlling terminal; null if it has none.
    const char* terminal;
    /// The pipe that takes the errno of a failed step; the program's start closes it.
    int failure;
    std::array<std::pair<int, rlim_t>, 4> limits;
};

/// The child's part. It shares the memory of the process that waits for it, so it only makes system
/// calls.
[[noreturn]] void BecomeProgram(const Start& start) {
    // The program gets the default action of every signal. All signals are blocked until then,
    // because the parent's handlers must not run here.
    struct sigaction initial {};
    initial.sa_handler = SIG_DFL;
    for (int number = 1; number < NSIG; number++)
        ::sigaction(number, &initial, nullptr);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);

    // The child gets a process group of its own.
    bool ready = ::setsid() >= 0;
    if (start.terminal)
        ready = ready && ::open(start.terminal, O_RDWR | O_CLOEXEC) >= 0;
    ::umask(S_IRWXG | S_IRWXO);
    // Stays open, because it may itself have become one of the standard descriptors.
    const int nothing = ::open("/dev/null", O_RDWR);
    ready = ready && ::dup2(nothing, STDIN_FILENO) >= 0 && ::dup2(nothing, STDOUT_FILENO) >= 0 &&
            ::dup2(start.standardError, STDERR_FILENO) >= 0;
    // On a kernel without this call, files that other libraries opened without O_CLOEXEC stay open.
    ::syscall(SYS_close_range, 3U, ~0U, CLOSE_RANGE_CLOEXEC);
    for (const auto& [resource, most] : start.limits) {
        rlimit limit{};
        ready = ready && ::getrlimit(static_cast<__rlimit_resource>(resource), &limit) == 0;
        limit.rlim_max = std::min(limit.rlim_max, most);
        limit.rlim_cur = limit.rlim_max;
        ready = ready && ::setrlimit(static_cast<__rlimit_resource>(resource), &limit) == 0;
    }
    ready = ready && (!start.folder || ::chdir(start.folder) == 0);
    if (ready)
        ::execve(start.path, start.arguments, start.environment);
    const int number = errno;
    // If even this fails, the exit status reports the failure.
    [[maybe_unused]] const ssize_t written = ::write(start.failure, &number, sizeof number);
    ::_exit(127);
}

/// Starts the child. Returns -1, with errno set, on failure. The child uses this process's memory,
/// not a copy, while this thread waits, as with posix_spawn, which cannot set limits.
pid_t StartChild(const Start& start) {
    sigset_t all;
    sigset_t before;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t child = ::vfork(); // NOLINT(clang-analyzer-security.insecureAPI.vfork)
    if (child == 0)
        BecomeProgram(start);
    const int number = errno;
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = number;
    return child;
}

/// Appends the available bytes of the pipe to `text`, up to a length of `most`; returns false at
/// the pipe's end. It returns even if the writer never pauses.
bool ReadAvailable(int pipe, std::string& text, std::size_t most) {
    std::array<char, 16384> buffer;
    for (int turn = 0; turn < 16; turn++) {
        const ssize_t count = ::read(pipe, buffer.data(), buffer.size());
        if (count > 0)
            text.append(buffer.data(),
                        std::min(static_cast<std::size_t>(count), most - text.size()));
        else if (count == 0)
            return false;
        else if (errno != EINTR)
            return errno == EAGAIN;
    }
    return true;
}

/// The reason why the wait for the child is over.
enum class Waited { ended, timedOut, stopped };

/// Reads the child's standard error until the child has ended, its time is over or `stop` returns
/// true.
Waited WaitForEnd(pid_t child, int pipe, std::string& text, const ChildProgram& program,
                  Clock::time_point end) {
    const Descriptor process(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
    std::array<pollfd, 2> waits{{{process.Number(), POLLIN, 0}, {pipe, POLLIN, 0}}};
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        if (left <= 0)
            return Waited::timedOut;
        if (program.stop && program.stop())
            return Waited::stopped;
        // Without a descriptor for the process (an old kernel), its end is polled.
        const decltype(left) interval = !process ? 10 : program.stop ? 50 : left;
        const auto pause = std::min(left, interval);
        if (::poll(waits.data(), waits.size(), static_cast<int>(pause)) < 0 && errno != EINTR)
            return Waited::timedOut;
        if (waits[1].revents && !ReadAvailable(pipe, text, program.limits.standardError))
            waits[1].fd = -1;
        siginfo_t info{};
        if (::waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT) != 0 ||
            info.si_pid == child)
            return Waited::ended;
    }
}

} // namespace

ChildResult RunProgram(const ChildProgram& program) {
    ChildResult result;
    std::vector<std::string> arguments = program.arguments;
    const std::string path = arguments.empty() ? std::string() : FindProgram(arguments.front());
    if (path.empty()) {
        result.end = ChildResult::End::notFound;
        return result;
    }
    std::vector<std::string> environment = Environment(program.folder);
    const std::vector<char*> argumentPointers = Pointers(arguments);
    const std::vector<char*> environmentPointers = Pointers(environment);
    Pipe standardError = MakePipe();
    Pipe failure = MakePipe();
    const HangUpLine line;
    if (!standardError.in || !failure.in) {
        result.number = errno;
        return result;
    }

    const ChildLimits& limits = program.limits;
    const auto end = Clock::now() + limits.time;
    const pid_t child =
        StartChild({path.c_str(),
                    argumentPointers.data(),
                    environmentPointers.data(),
                    program.folder.empty() ? nullptr : program.folder.c_str(),
                    standardError.in.Number(),
                    line.Name(),
                    failure.in.Number(),
                    {{{RLIMIT_CPU, static_cast<rlim_t>(limits.processorTime.count())},
                      {RLIMIT_AS, limits.memory},
                      {RLIMIT_FSIZE, limits.fileSize},
                      {RLIMIT_CORE, 0}}}});
    if (child < 0) {
        result.number = errno;
        return result;
    }
    standardError.in.Close();
    failure.in.Close();

    const Waited waitedFor =
        WaitForEnd(child, standardError.out.Number(), result.standardError, program, end);
    // The child's process id, and with it the group's, stays reserved until waitpid.
    ::kill(-child, SIGKILL);
    int status = 0;
    pid_t waited;
    do
        waited = ::waitpid(child, &status, 0);
    while (waited < 0 && errno == EINTR);
    ReadAvailable(standardError.out.Number(), result.standardError, limits.standardError);

    int number = 0;
    if (waited < 0) {
        result.number = errno;
    } else if (::read(failure.out.Number(), &number, sizeof number) == sizeof number) {
        result.number = number;
    } else if (waitedFor != Waited::ended) {
        result.end =
            waitedFor == Waited::stopped ? ChildResult::End::stopped : ChildResult::End::timedOut;
    } else if (WIFSIGNALED(status)) {
        result.end = ChildResult::End::signalled;
        result.number = WTERMSIG(status);
    } else {
        result.end = ChildResult::End::exited;
        result.number = WEXITSTATUS(status);
    }
    return result;
}

} // namespace kits
