#include "LinuxDesktop/Workspace/ProcessTable.h"

#include "FileManager/DirectoryAccess.h"
#include "Foundation/FileDescriptor.h"
#include "Foundation/NumberText.h"
#include "Foundation/PathText.h"
#include "LinuxDesktop/Workspace/DesktopEntry.h"
#include "LinuxDesktop/Workspace/ReadFile.h"

#include <array>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace stemvault::workspace {

namespace {

// A new process is a copy of its parent until it executes its own program. Under Wine it gets its
// name even later, and the desktop moves an application into its unit only after the start. So the
// data of a process is final only if it was read this long after the start.
constexpr std::uint64_t secondsUntilSettled = 20;

constexpr std::size_t maxBytes = std::size_t { 1 } << 20U;

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

std::optional<pid_t> processNumber(std::string_view name)
{
    const auto process = parseNumber<pid_t>(name);
    return process && *process > 0 ? process : std::nullopt;
}

/// The latest start time of a process that is settled by now.
std::uint64_t latestSettledStart()
{
    timespec sinceStart {};
    ::clock_gettime(CLOCK_BOOTTIME, &sinceStart);
    const auto seconds = static_cast<std::uint64_t>(sinceStart.tv_sec);
    const auto ticks = static_cast<std::uint64_t>(::sysconf(_SC_CLK_TCK));
    return seconds > secondsUntilSettled ? (seconds - secondsUntilSettled) * ticks : 0;
}

/// Every sweep calls this for every process. The kernel returns the whole text in one read.
std::optional<ProcessStat> readStat(int folder, const std::string& path)
{
    const FileDescriptor file(::openat(folder, path.c_str(), O_RDONLY | O_CLOEXEC));
    std::array<char, 1024> text; // NOLINT(*-member-init): read fills the part that is used.
    const ssize_t length = file ? ::read(file.get(), text.data(), text.size()) : -1;
    if (length <= 0)
        return std::nullopt;
    return parseProcessStat({ text.data(), static_cast<std::size_t>(length) });
}

/// A Windows program that was started by its bare name is recognised by the loader that runs it.
bool isUnderWine(const Program& program, const std::string& executable)
{
    return program.isWindows || lastPathComponent(executable).starts_with("wine");
}

bool hasEnded(const ProcessStat& stat)
{
    return stat.state == 'Z' || stat.state == 'X';
}

} // namespace

ProcessTable::ProcessTable(std::string processRoot)
    : ProcessTable(std::move(processRoot), ::geteuid())
{
}

ProcessTable::ProcessTable(std::string processRoot, uid_t user)
    : root(std::move(processRoot)), owner(user)
{
}

void ProcessTable::sweep()
{
    const std::unique_ptr<DIR, CloseFolder> folder(::opendir(root.c_str()));
    if (!folder)
        return;
    settledBefore = latestSettledStart();
    previous = std::exchange(table, {});
    previousForeign = std::exchange(foreign, {});
    // Only this sweep reads this stream.
    while (const dirent* entry = ::readdir(folder.get())) // NOLINT(concurrency-mt-unsafe)
        if (const auto process = processNumber(entry->d_name))
            visit(::dirfd(folder.get()), *process, entry->d_ino);
    previous.clear();
    previousForeign.clear();
}

bool ProcessTable::contains(const ProcessKey& key) const
{
    const auto at = table.find(key.process);
    return at != table.end() && at->second.key == key;
}

void ProcessTable::visit(int folder, pid_t process, std::uint64_t fileNumber)
{
    // The folder of every process has a unique inode number, so the processes of other users need
    // not be checked again.
    const auto unchanged = previousForeign.find(process);
    if (unchanged != previousForeign.end() && unchanged->second.isSettled
        && unchanged->second.fileNumber == fileNumber) {
        foreign.insert(previousForeign.extract(unchanged));
        return;
    }
    const std::string name = std::to_string(process);
    const auto stat = readStat(folder, name + "/stat");
    if (!stat || hasEnded(*stat))
        return;
    const auto known = previous.find(process);
    if (known != previous.end() && known->second.key.startTime == stat->startTime
        && known->second.command == stat->command && known->second.image == stat->image
        && known->second.isSettled) {
        known->second.parent = stat->parent;
        table.insert(previous.extract(known));
    } else if (isOwn(folder, name)) {
        readProcess(folder, process, *stat);
    } else {
        foreign.emplace(process, ForeignProcess { fileNumber, isSettled(stat->startTime) });
    }
}

void ProcessTable::readProcess(int folder, pid_t process, const ProcessStat& stat)
{
    const std::string path = std::to_string(process) + "/";
    Process read;
    read.key = { stat.startTime, process };
    read.parent = stat.parent;
    read.command = stat.command;
    read.image = stat.image;
    read.isSettled = isSettled(stat.startTime);
    const auto commandLine = readFile(folder, path + "cmdline", maxBytes).value_or("");
    const auto command = readFile(folder, path + "comm", maxBytes).value_or("");
    read.program = parseProgram(commandLine, command);
    read.unit = parseApplicationUnit(readFile(folder, path + "cgroup", maxBytes).value_or(""));
    // A sandbox names its application even if the desktop creates no units.
    if (!read.unit && isSandboxed(read))
        read.sandboxIdentifier = parseFlatpakIdentifier(
            readFile(folder, path + "root/.flatpak-info", maxBytes).value_or(""));
    read.isHelper = isHelper(read.program);
    const std::string executable = linkTarget(folder, path + "exe").value_or("");
    read.known = knownApplication(read.program, executable);
    if (isWineServer(read.program) || (read.known && isUnderWine(read.program, executable)))
        read.winePrefix =
            parseWinePrefix(readFile(folder, path + "environ", maxBytes).value_or(""));
    table.emplace(process, std::move(read));
}

bool ProcessTable::isSandboxed(const Process& process) const
{
    for (const auto* processes : { &table, &previous })
        if (const auto parent = processes->find(process.parent); parent != processes->end())
            return isSandboxLauncher(parent->second.program);
    return false;
}

bool ProcessTable::isOwn(int folder, const std::string& name) const
{
    struct stat status { };
    return ::fstatat(folder, name.c_str(), &status, 0) == 0 && status.st_uid == owner;
}

bool ProcessTable::isSettled(std::uint64_t startTime) const
{
    return startTime <= settledBefore;
}

} // namespace stemvault::workspace
