#include "LinuxDesktop/OpenFiles/ToolRunner.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <poll.h>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace stemvault::open_files {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// How long a killed tool may take to end. One that takes longer is blocked in the kernel.
constexpr milliseconds graceAfterKill { 200 };

std::vector<std::string> environmentOfTools()
{
    std::vector<std::string> entries { "LC_ALL=C.UTF-8" };
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry)
        if (!std::string_view(*entry).starts_with("LC_ALL="))
            entries.emplace_back(*entry);
    return entries;
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

/// Reads what is in the pipe now, and closes the pipe at its end.
void takeOutput(ChildProcess& child, std::string& output, std::size_t most)
{
    std::array<char, 65536> portion; // NOLINT(*-member-init): read fills the part that is used.
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

/// Reads until the child ends, prints more than `most`, or the time is up. Returns whether it ended
/// by itself. Does not wait for the end of the pipe, as the child's own children may keep it open.
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

ToolRunner::ToolRunner(Limits allowed) : limits(allowed), environment(environmentOfTools()) { }

ToolRunner::Outcome ToolRunner::run(
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
        setAside(std::move(*child), isOverdue);
    if (!ended || output.size() > limits.output)
        return { std::nullopt, isOverdue };
    return { std::move(output), false };
}

void ToolRunner::setAside(ChildProcess child, bool isOverdue)
{
    child.closeStandardOutput();
    const std::lock_guard lock(mutex);
    killed.push_back({ std::move(child), isOverdue });
}

bool ToolRunner::hasStuckTool()
{
    const std::lock_guard lock(mutex);
    std::erase_if(killed, [](SetAside& one) { return one.child.isGone(); });
    return std::ranges::any_of(killed, &SetAside::isOverdue);
}

} // namespace stemvault::open_files
