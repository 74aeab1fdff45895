#include "Fuzz/Fuzzer.h"
#include "LinuxDesktop/Processes/KnownApplication.h"
#include "LinuxDesktop/Processes/ProcessText.h"

#include <algorithm>

// What /proc says of a process; every user of the system chooses what that is for his own.
namespace stemvault {

namespace {

void feedStat(std::string_view text)
{
    const auto stat = parseProcessStat(text);
    if (!stat)
        return;
    std::string again =
        "1 (" + stat->command + ") " + stat->state + " " + std::to_string(stat->parent);
    again += " 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 " + std::to_string(stat->startTime);
    mustHold(parseProcessStat(again) == stat, "what was read of a stat reads the same");
}

void feedProgram(std::string_view text)
{
    const auto end = std::min(text.find('\n'), text.size());
    const Program program = parseProgram(text.substr(0, end), text.substr(end));
    mustHold(program.path.find(program.name) != std::string::npos
            && program.name.find_first_of("/\\") == std::string::npos,
        "a program's name is a part of its path");
    mustHold(isHelper(program) || !isSandboxLauncher(program), "a launcher is a helper");
    const auto known = knownApplication(program, program.path);
    mustHold(!known || (!isHelper(program) && !known->identifier.empty() && !known->name.empty()),
        "a DAW has a name and is no helper");
}

} // namespace

void feed(std::string_view input)
{
    feedStat(input);
    feedProgram(input);
    const auto unit = parseApplicationUnit(input);
    mustHold(!unit
            || (input.find(unit->unit) != std::string_view::npos && !unit->identifier.empty()
                && unit->identifier.size() < unit->unit.size()),
        "an application's unit is a part of its group");
}

} // namespace stemvault
