#include "LinuxDesktop/OpenFiles/MountNamespace.h"

#include "Foundation/FieldText.h"
#include "LinuxDesktop/OpenFiles/LsofFallback.h"
#include "LinuxDesktop/Workspace/ReadFile.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <system_error>

namespace stemvault::open_files {

namespace {

/// A path as lsof prints it, except that "/" becomes the empty string.
std::string printedPath(std::string_view escaped)
{
    std::string path = nameAsPrinted(unescapedOctal(escaped));
    if (path.ends_with('/'))
        path.pop_back();
    return path;
}

bool isInOrBelow(std::string_view path, std::string_view folder)
{
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

std::optional<std::string> mountNamespace(const std::string& process)
{
    std::error_code failure;
    const auto link = std::filesystem::read_symlink("/proc/" + process + "/ns/mnt", failure);
    return failure ? std::nullopt : std::optional(link.native());
}

} // namespace

MountView::MountView(std::string_view mountInfo)
{
    while (!mountInfo.empty()) {
        auto line = takeField(mountInfo, '\n');
        std::array<std::string_view, 5> fields;
        for (std::string_view& field : fields)
            field = takeField(line, ' ');
        if (!fields.back().empty())
            mounts.push_back({ std::string(fields[0]), std::string(fields[1]),
                std::string(fields[2]), printedPath(fields[3]), printedPath(fields[4]) });
    }
}

std::string MountView::resolvedLocation(std::string_view path) const
{
    const Mount* mount = rootMount();
    if (mount == nullptr)
        return {};
    // Mounts form a tree, but a malformed text could contain a cycle, so the steps are limited.
    for (std::size_t passed = 0; passed < mounts.size(); ++passed)
        if (const Mount* next = firstMountBelow(*mount, path))
            mount = next;
        else
            break;
    return mount->device + mount->root + std::string(path.substr(mount->point.size()));
}

/// The mount at "/" whose parent is not in the list.
const MountView::Mount* MountView::rootMount() const
{
    const auto found = std::ranges::find_if(mounts, [this](const Mount& mount) {
        return mount.point.empty()
            && (mount.parent == mount.identifier
                || std::ranges::find(mounts, mount.parent, &Mount::identifier) == mounts.end());
    });
    return found == mounts.end() ? nullptr : &*found;
}

/// The first mount on `mount` along the path.
const MountView::Mount* MountView::firstMountBelow(const Mount& mount, std::string_view path) const
{
    const Mount* first = nullptr;
    for (const Mount& each : mounts)
        if (each.parent == mount.identifier && each.identifier != mount.identifier
            && isInOrBelow(path, each.point)
            && (first == nullptr || each.point.size() < first->point.size()))
            first = &each;
    return first;
}

std::string namesThatLeadToTheSame(
    std::string_view lsofOutput, const MountView& there, const MountView& here)
{
    std::string text;
    while (!lsofOutput.empty()) {
        const auto line = takeField(lsofOutput, '\n');
        if (!line.starts_with("n/")
            || there.resolvedLocation(line.substr(1)) == here.resolvedLocation(line.substr(1)))
            text.append(line).append("\n");
    }
    return text;
}

std::string namesSeenFromHere(std::string lsofOutput, pid_t process)
{
    const std::string number = std::to_string(process);
    const auto there = mountNamespace(number);
    if (!there || there == mountNamespace("self"))
        return lsofOutput;
    const auto mountsThere = workspace::readFile("/proc/" + number + "/mountinfo");
    const auto mountsHere = workspace::readFile("/proc/self/mountinfo");
    return mountsThere && mountsHere
        ? namesThatLeadToTheSame(lsofOutput, MountView(*mountsThere), MountView(*mountsHere))
        : std::string();
}

} // namespace stemvault::open_files
