#include "LinuxDesktop/OpenFiles/ChildProcess.h"

#include "LinuxDesktop/Workspace/ProcessDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace stemvault::open_files {

namespace {

constexpr rlim_t maxDescriptors = 1024;

struct Pipe {
    FileDescriptor reading;
    FileDescriptor writing;
};

std::optional<Pipe> makePipe()
{
    std::array<int, 2> ends {};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return std::nullopt;
    return Pipe { FileDescriptor(ends[0]), FileDescriptor(ends[1]) };
}

/// All that the child needs, prepared because it may make only system calls between vfork and exec.
struct Plan {
    const char* executable;
    char* const* arguments;
    char* const* environment;
    int devNull;
    int output;
    int failure;
};

/// Signals stay blocked until the handlers are reset, because a handler would run in the parent's
/// memory.
void forgetSignalHandlers()
{
    struct sigaction standard { };
    standard.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal)
        ::sigaction(signal, &standard, nullptr);
    sigset_t none;
    ::sigemptyset(&none);
    ::pthread_sigmask(SIG_SETMASK, &none, nullptr);
}

/// lsof's helper closes every descriptor number up to the soft limit one by one, which takes
/// minutes under the limits that some systems set.
void limitDescriptors()
{
    rlimit limit {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return;
    limit.rlim_cur = std::min(limit.rlim_cur, maxDescriptors);
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

void becomeTool(const Plan& plan)
{
    ::setpgid(0, 0);
    forgetSignalHandlers();
    ::dup2(plan.devNull, STDIN_FILENO);
    ::dup2(plan.output, STDOUT_FILENO);
    ::dup2(plan.devNull, STDERR_FILENO);
    ::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    limitDescriptors();
    ::execve(plan.executable, plan.arguments, plan.environment);
    [[maybe_unused]] const auto written = ::write(plan.failure, "!", 1);
    ::_exit(127);
}

/// Uses vfork, because posix_spawn cannot set limits, and fork would copy the page tables of the
/// whole program at each call.
[[gnu::noinline]] pid_t spawn(const Plan& plan)
{
    sigset_t all;
    sigset_t before;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t child = ::vfork(); // NOLINT(*vfork,bugprone-unsafe-functions)
    if (child == 0)
        becomeTool(plan); // NOLINT(clang-analyzer-unix.Vfork): it makes system calls only.
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return child;
}

std::vector<char*> pointersTo(const std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const std::string& text : texts)
        pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

/// A successful exec closes the pipe; after a failed one, the pipe holds a byte.
bool wasStarted(const FileDescriptor& failure)
{
    char byte = 0;
    ssize_t count = 0;
    do
        count = ::read(failure.get(), &byte, 1);
    while (count < 0 && errno == EINTR);
    return count == 0;
}

} // namespace

std::optional<ChildProcess> ChildProcess::start(const std::string& executable,
    const std::vector<std::string>& arguments, const std::vector<std::string>& environment)
{
    const FileDescriptor devNull(::open("/dev/null", O_RDWR | O_CLOEXEC));
    auto output = makePipe();
    auto failure = makePipe();
    if (!devNull || !output || !failure)
        return std::nullopt;
    ::fcntl(output->reading.get(), F_SETFL, O_NONBLOCK);

    std::vector<std::string> words { executable };
    words.insert(words.end(), arguments.begin(), arguments.end());
    const auto argv = pointersTo(words);
    const auto envp = pointersTo(environment);
    const pid_t child = spawn({ executable.c_str(), argv.data(), envp.data(), devNull.get(),
        output->writing.get(), failure->writing.get() });
    if (child < 0)
        return std::nullopt;

    failure->writing.reset();
    ChildProcess started(child, std::move(output->reading));
    if (wasStarted(failure->reading) && started.processEnding)
        return started;
    started.killGroup();
    ::waitpid(child, nullptr, 0);
    return std::nullopt;
}

ChildProcess::ChildProcess(pid_t child, FileDescriptor readingEnd)
    : process(child), output(std::move(readingEnd)), processEnding(workspace::openProcess(child))
{
}

void ChildProcess::killGroup() const
{
    if (!isCollected) // Until the child is collected, the group's number is not reused.
        ::kill(-process, SIGKILL);
}

bool ChildProcess::hasEnded()
{
    if (!isCollected)
        isCollected = ::waitpid(process, nullptr, WNOHANG) != 0;
    return isCollected;
}

bool ChildProcess::isGone()
{
    return hasEnded() && ::kill(-process, 0) != 0;
}

} // namespace stemvault::open_files
