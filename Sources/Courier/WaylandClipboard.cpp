#include "Courier/WaylandClipboard.h"

#include "Foundation/FileDescriptor.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace stemvault {

namespace {

using Deadline = WaylandClipboard::Deadline;

/// The arguments of a program to start, and the redirection of its output.
struct Start {
    Start(std::vector<std::string> its, int output) : arguments(std::move(its))
    {
        for (std::string& argument : arguments)
            pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
        ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;
    ~Start() { ::posix_spawn_file_actions_destroy(&actions); }

    std::vector<std::string> arguments;
    std::vector<char*> pointers;
    posix_spawn_file_actions_t actions {};
};

bool waitForOutput(int output, Deadline deadline)
{
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd waiting { output, POLLIN, 0 };
    return left.count() > 0 && ::poll(&waiting, 1, static_cast<int>(left.count())) > 0;
}

std::string outputUntil(int output, Deadline deadline)
{
    std::string text;
    std::array<char, 65536> portion {};
    while (waitForOutput(output, deadline)) {
        const ssize_t size = ::read(output, portion.data(), portion.size());
        if (size <= 0)
            return text;
        text.append(portion.data(), static_cast<std::size_t>(size));
    }
    return {};
}

/// Everything that the command prints; empty if it does not end in time. Absent when there is no
/// such program.
std::optional<std::string> outputOf(std::vector<std::string> command, Deadline deadline)
{
    std::array<int, 2> ends {};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return std::nullopt;
    const FileDescriptor reading(ends[0]);
    FileDescriptor writing(ends[1]);
    pid_t process = 0;
    const Start start(std::move(command), writing.get());
    if (::posix_spawnp(&process, start.pointers.front(), &start.actions, nullptr,
            start.pointers.data(), environ)
        != 0)
        return std::nullopt;
    writing = FileDescriptor();
    std::string text = outputUntil(reading.get(), deadline);
    // It has ended, or it has taken too long.
    ::kill(process, SIGKILL);
    ::waitpid(process, nullptr, 0);
    return text;
}

} // namespace

std::optional<std::vector<std::string>> WaylandClipboard::formats(Deadline deadline)
{
    const auto listed = outputOf({ "wl-paste", "--list-types" }, deadline);
    if (!listed)
        return std::nullopt;
    std::vector<std::string> formats;
    std::istringstream lines(*listed);
    for (std::string line; std::getline(lines, line);)
        formats.push_back(line);
    return formats;
}

std::string WaylandClipboard::read(std::string_view format, Deadline deadline)
{
    return outputOf({ "wl-paste", "--no-newline", "--type", std::string(format) }, deadline)
        .value_or("");
}

} // namespace stemvault
