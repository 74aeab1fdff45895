#include "LinuxDesktop/OpenFiles/LsofOpenFiles.h"

#include "LinuxDesktop/OpenFiles/LsofFallback.h"
#include "LinuxDesktop/OpenFiles/MountNamespace.h"

#include <unistd.h>
#include <utility>

namespace stemvault::open_files {

using std::chrono::steady_clock;

LsofOpenFiles::LsofOpenFiles() : LsofOpenFiles(std::nullopt, Limits {}) { }

LsofOpenFiles::LsofOpenFiles(std::optional<std::string> lsof, Limits allowed)
    : tool(std::move(lsof)), limits(allowed), runner(allowed.tool)
{
}

std::string LsofOpenFiles::standardTool()
{
    for (const char* path : { "/usr/bin/lsof", "/usr/sbin/lsof", "/bin/lsof" })
        if (::access(path, X_OK) == 0)
            return path;
    return "/usr/bin/lsof";
}

std::optional<std::string> LsofOpenFiles::listing(std::int32_t process)
{
    auto names = ask(process);
    return names ? std::optional(namesSeenFromHere(*std::move(names), process)) : std::nullopt;
}

std::optional<std::string> LsofOpenFiles::ask(pid_t process)
{
    if (!beginRun(process))
        return lsofFallback(process);
    ToolRunner::Outcome outcome =
        runner.run(tool ? *tool : standardTool(), { "-p", std::to_string(process), "-Fn" });
    endRun(process, outcome.isOverdue);
    return outcome.isOverdue ? lsofFallback(process) : std::move(outcome.output);
}

/// Whether lsof may run for the process now. Waits up to `limits.turn` for one that already does.
bool LsofOpenFiles::beginRun(pid_t process)
{
    std::unique_lock lock(mutex);
    const auto isDecided = [&] { return isOutOfUseLocked() || !runningFor.contains(process); };
    if (!lookFinished.wait_for(lock, limits.turn, isDecided) || isOutOfUseLocked())
        return false;
    runningFor.insert(process);
    return true;
}

void LsofOpenFiles::endRun(pid_t process, bool isOverdue)
{
    {
        const std::lock_guard lock(mutex);
        runningFor.erase(process);
        if (isOverdue)
            restsUntil = steady_clock::now() + limits.rest;
    }
    lookFinished.notify_all();
}

bool LsofOpenFiles::isOutOfUseLocked()
{
    const bool hasStuckTool = runner.hasStuckTool();
    return hasStuckTool || steady_clock::now() < restsUntil;
}

} // namespace stemvault::open_files
