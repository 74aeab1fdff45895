#include "LinuxDesktop/OpenFiles/ToolRunner.h"

#include "Foundation/PathText.h"
#include "LinuxDesktop/OpenFiles/LsofFallback.h"
#include "LinuxDesktop/OpenFiles/MountNamespace.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <poll.h>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace stemvault {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// How long a killed tool may take to go. One that takes longer waits for something in the kernel.
constexpr milliseconds graceAfterKill { 200 };

std::vector<std::string> environmentOfTools()
{
    std::vector<std::string> entries { "LC_ALL=C.UTF-8" };
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry)
        if (!std::string_view(*entry).starts_with("LC_ALL="))
            entries.emplace_back(*entry);
    return entries;
}

bool isLsof(const std::string& executable)
{
    return lastPathComponent(executable) == "lsof";
}

/// The process that a call of lsof asks about, when it is asked in just the form `-p PID -Fn`.
std::optional<pid_t> processAskedAbout(
    const std::string& executable, const std::vector<std::string>& arguments)
{
    if (!isLsof(executable) || arguments.size() != 3 || arguments[0] != "-p"
        || arguments[2] != "-Fn")
        return std::nullopt;
    const std::string& text = arguments[1];
    pid_t process = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), process);
    const bool isNumber = failure == std::errc() && end == text.data() + text.size();
    return isNumber && process > 0 ? std::optional(process) : std::nullopt;
}

int remaining(steady_clock::time_point deadline)
{
    const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
    return static_cast<int>(std::max(left, milliseconds::zero()).count());
}

bool hasEndedBy(const ChildProcess& child, steady_clock::time_point deadline)
{
    pollfd ending { child.ending(), POLLIN, 0 };
    int ready = 0;
    do
        ready = ::poll(&ending, 1, remaining(deadline));
    while (ready < 0 && errno == EINTR);
    return ready > 0;
}

/// Takes what is in the pipe now; closes it at its end.
void takeOutput(ChildProcess& child, std::string& output, std::size_t most)
{
    std::array<char, 65536> portion; // NOLINT(*-member-init): read fills what is used of it.
    while (output.size() <= most && child.standardOutput() >= 0) {
        const ssize_t count = ::read(child.standardOutput(), portion.data(), portion.size());
        if (count > 0)
            output.append(portion.data(), static_cast<std::size_t>(count));
        else if (count < 0 && errno == EINTR)
            continue;
        else if (count < 0 && errno == EAGAIN)
            return;
        else
            child.closeStandardOutput();
    }
}

/// Reads until the child ends, says too much, or the time is up; says whether it ended by itself.
/// The pipe's own end means little: what the child has started may hold it open for ever.
bool readUntilEnd(
    ChildProcess& child, std::string& output, std::size_t most, steady_clock::time_point deadline)
{
    while (output.size() <= most) {
        std::array<pollfd, 2> awaited { { { child.ending(), POLLIN, 0 },
            { child.standardOutput(), POLLIN, 0 } } };
        const int ready = ::poll(awaited.data(), awaited.size(), remaining(deadline));
        if (ready == 0)
            return false;
        if (awaited[0].revents != 0)
            return true;
        takeOutput(child, output, most);
    }
    return false;
}

} // namespace

ToolRunner::ToolRunner() : ToolRunner(Limits {}) { }

ToolRunner::ToolRunner(Limits allowed) : limits(allowed), environment(environmentOfTools()) { }

std::string ToolRunner::pathForTool(const std::string& name) const
{
    for (const char* folder : { "/usr/bin", "/usr/sbin", "/bin" })
        if (auto path = appendingPathComponent(folder, name); ::access(path.c_str(), X_OK) == 0)
            return path;
    return appendingPathComponent("/usr/bin", name);
}

std::optional<std::string> ToolRunner::run(
    const std::string& executable, const std::vector<std::string>& arguments)
{
    collectGone();
    const auto process = processAskedAbout(executable, arguments);
    if (!process)
        return runToEnd(executable, arguments).output;
    auto names = openFiles(executable, arguments, *process);
    return names ? std::optional(namesSeenFromHere(*std::move(names), *process)) : std::nullopt;
}

std::optional<std::string> ToolRunner::openFiles(
    const std::string& executable, const std::vector<std::string>& arguments, pid_t process)
{
    if (!beginLook(process))
        return lsofFallback(process);
    Outcome outcome = runToEnd(executable, arguments);
    endLook(process, outcome.isOverdue);
    return outcome.isOverdue ? lsofFallback(process) : std::move(outcome.output);
}

/// Whether lsof may be asked about the process now. Waits for its turn, but not long.
bool ToolRunner::beginLook(pid_t process)
{
    std::unique_lock lock(mutex);
    const auto isDecided = [&] {
        return isLsofOutOfUseLocked() || !processesLookedAt.contains(process);
    };
    if (!lookFinished.wait_for(lock, limits.turn, isDecided) || isLsofOutOfUseLocked())
        return false;
    processesLookedAt.insert(process);
    return true;
}

void ToolRunner::endLook(pid_t process, bool isOverdue)
{
    {
        const std::lock_guard lock(mutex);
        processesLookedAt.erase(process);
        if (isOverdue)
            restsUntil = steady_clock::now() + limits.rest;
    }
    lookFinished.notify_all();
}

ToolRunner::Outcome ToolRunner::runToEnd(
    const std::string& executable, const std::vector<std::string>& arguments)
{
    auto child = ChildProcess::start(executable, arguments, environment);
    if (!child)
        return {};
    std::string output;
    const auto deadline = steady_clock::now() + limits.time;
    const bool ended = readUntilEnd(*child, output, limits.output, deadline);
    child->killGroup();
    if (ended)
        takeOutput(*child, output, limits.output);
    const bool isOverdue = !ended && output.size() <= limits.output;
    if (!hasEndedBy(*child, steady_clock::now() + graceAfterKill) || !child->isGone())
        setAside(std::move(*child), isLsof(executable) && isOverdue);
    if (!ended || output.size() > limits.output)
        return { std::nullopt, isOverdue };
    return { std::move(output), false };
}

void ToolRunner::setAside(ChildProcess child, bool isLsof)
{
    child.closeStandardOutput();
    const std::lock_guard lock(mutex);
    stuck.push_back({ std::move(child), isLsof });
}

void ToolRunner::collectGone()
{
    const std::lock_guard lock(mutex);
    std::erase_if(stuck, [](SetAside& one) { return one.child.isGone(); });
}

bool ToolRunner::isLsofOutOfUseLocked() const
{
    return steady_clock::now() < restsUntil || std::ranges::any_of(stuck, &SetAside::isLsof);
}

} // namespace stemvault
