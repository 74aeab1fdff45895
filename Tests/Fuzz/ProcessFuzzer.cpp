#include "Fuzz/Fuzzer.h"
#include "LinuxDesktop/OpenFiles/MountNamespace.h"
#include "LinuxDesktop/Workspace/KnownApplication.h"
#include "LinuxDesktop/Workspace/ProcessText.h"

#include <algorithm>
#include <cstdint>
#include <string>

// Parses the files that /proc has for a process; its user can choose most of their content.
namespace stemvault {

namespace {

void feedStat(std::string_view text)
{
    const auto stat = workspace::parseProcessStat(text);
    if (!stat)
        return;
    std::string again =
        "1 (" + stat->command + ") " + stat->state + " " + std::to_string(stat->parent);
    again += " 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 " + std::to_string(stat->startTime);
    again += " 23 24 25";
    for (const std::uint64_t address : stat->image)
        again += " " + std::to_string(address);
    require(workspace::parseProcessStat(again) == stat, "what was read of a stat reads the same");
}

void feedProgram(std::string_view text)
{
    const auto end = std::min(text.find('\n'), text.size());
    const workspace::Program program =
        workspace::parseProgram(text.substr(0, end), text.substr(end));
    require(program.path.find(program.name) != std::string::npos
            && program.name.find_first_of("/\\") == std::string::npos,
        "a program's name is a part of its path");
    require(workspace::isHelper(program) || !workspace::isSandboxLauncher(program),
        "a launcher is a helper");
    const auto known = workspace::knownApplication(program, program.path);
    require(!known
            || (!workspace::isHelper(program) && !known->identifier.empty()
                && !known->name.empty()),
        "a DAW has a name and is no helper");
}

void feedMounts(std::string_view text)
{
    const auto end = std::min(text.find('\0'), text.size());
    const open_files::MountView here(text.substr(0, end));
    const open_files::MountView there(text.substr(std::min(end + 1, text.size())));
    const std::string names = "p1\nn/a b/c\nn/\n";
    require(open_files::namesThatLeadToTheSame(names, here, here) == names,
        "the same mounts hide nothing");
    require(names.starts_with(open_files::namesThatLeadToTheSame(names, here, there).substr(0, 3)),
        "what is no path stays");
}

void feedEnvironment(std::string_view text)
{
    const auto prefix = workspace::parseWinePrefix(text);
    require(!prefix || !prefix->empty(), "a prefix is a folder");
}

} // namespace

void feed(std::string_view input)
{
    feedStat(input);
    feedProgram(input);
    feedMounts(input);
    feedEnvironment(input);
    const auto unit = workspace::parseApplicationUnit(input);
    require(!unit
            || (input.find(unit->unit) != std::string_view::npos && !unit->identifier.empty()
                && unit->identifier.size() < unit->unit.size()),
        "an application's unit is a part of its group");
}

} // namespace stemvault
