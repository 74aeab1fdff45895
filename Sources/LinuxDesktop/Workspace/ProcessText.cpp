#include "LinuxDesktop/Workspace/ProcessText.h"

#include "Foundation/ASCIIText.h"
#include "Foundation/FieldText.h"
#include "Foundation/NumberText.h"

#include <algorithm>
#include <utility>

namespace stemvault::workspace {

namespace {

bool endsWithExe(std::string_view name)
{
    constexpr std::string_view suffix = ".exe";
    return name.size() > suffix.size()
        && std::ranges::equal(
            name.substr(name.size() - suffix.size()), suffix, {}, asciiLowercased);
}

bool isWindowsPath(std::string_view path)
{
    return path.find('\\') != std::string_view::npos || endsWithExe(path);
}

std::optional<char> unescapedByte(std::string_view text)
{
    if (text.size() < 4 || !text.starts_with("\\x"))
        return std::nullopt;
    const auto code = parseNumber<unsigned char>(text.substr(2, 2), 16);
    return code ? std::optional(static_cast<char>(*code)) : std::nullopt;
}

std::string unescapedUnitName(std::string_view text)
{
    std::string name;
    while (!text.empty()) {
        const auto byte = unescapedByte(text);
        name += byte.value_or(text.front());
        text.remove_prefix(byte ? 4 : 1);
    }
    return name;
}

/// app[-<launcher>]-<id>-<random>.scope or app[-<launcher>]-<id>[@<random>].service. Dashes within
/// these parts are escaped.
std::optional<ApplicationUnit> parseUnit(std::string_view unit)
{
    constexpr std::string_view prefix = "app-";
    const bool isScope = unit.ends_with(".scope");
    if (!unit.starts_with(prefix) || (!isScope && !unit.ends_with(".service")))
        return std::nullopt;
    auto name = unit.substr(prefix.size(), unit.rfind('.') - prefix.size());
    const auto suffix = isScope ? name.rfind('-') : name.find('@');
    const bool isAutostart =
        !isScope && suffix != std::string_view::npos && name.substr(suffix) == "@autostart";
    name = name.substr(0, suffix);
    if (const auto dash = name.find('-'); dash != std::string_view::npos)
        name.remove_prefix(dash + 1);
    if (name.empty())
        return std::nullopt;
    return ApplicationUnit { std::string(unit), unescapedUnitName(name), isAutostart };
}

} // namespace

std::optional<ProcessStat> parseProcessStat(std::string_view text)
{
    // The command itself may contain parentheses and blanks.
    const auto open = text.find('(');
    const auto close = text.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open
        || close + 2 > text.size())
        return std::nullopt;
    ProcessStat stat;
    stat.command = text.substr(open + 1, close - open - 1);
    auto fields = text.substr(close + 2);
    const auto state = takeField(fields, ' ');
    const auto parent = parseNumber<pid_t>(takeField(fields, ' '));
    for (int field = 5; field < 22; ++field)
        takeField(fields, ' ');
    const auto startTime = parseNumber<std::uint64_t>(takeField(fields, ' '));
    if (state.size() != 1 || !parent || !startTime)
        return std::nullopt;
    stat.state = state.front();
    stat.parent = *parent;
    stat.startTime = *startTime;
    for (int field = 23; field < 26; ++field)
        takeField(fields, ' ');
    for (std::uint64_t& address : stat.image)
        address = parseNumber<std::uint64_t>(takeField(fields, ' ')).value_or(0);
    return stat;
}

Program parseProgram(std::string_view cmdline, std::string_view comm)
{
    Program program;
    program.path = takeField(cmdline, '\0');
    if (program.path.empty())
        program.path = takeField(comm, '\n');
    program.isWindows = isWindowsPath(program.path);
    // A native program's name may contain a backslash, but none of the known programs' names does.
    program.name = program.path.substr(program.path.find_last_of("/\\") + 1);
    if (endsWithExe(program.name))
        program.name.resize(program.name.size() - 4);
    program.isSteamLauncher = program.name == "reaper" && takeField(cmdline, '\0') == "SteamLaunch";
    return program;
}

std::optional<std::string> parseWinePrefix(std::string_view environment)
{
    constexpr std::string_view prefixVariable = "WINEPREFIX=";
    constexpr std::string_view homeVariable = "HOME=";
    std::optional<std::string> usual;
    while (!environment.empty()) {
        auto entry = takeField(environment, '\0');
        if (entry.starts_with(homeVariable))
            usual = std::string(entry.substr(homeVariable.size())) + "/.wine";
        if (!entry.starts_with(prefixVariable) || entry.size() == prefixVariable.size())
            continue;
        entry.remove_prefix(prefixVariable.size());
        while (entry.size() > 1 && entry.ends_with('/'))
            entry.remove_suffix(1);
        return std::string(entry);
    }
    return usual;
}

std::optional<ApplicationUnit> parseApplicationUnit(std::string_view cgroup)
{
    while (!cgroup.empty()) {
        auto path = takeField(cgroup, '\n');
        if (!path.starts_with("0::"))
            continue;
        // An application may have created its own groups below its unit.
        while (!path.empty()) {
            const auto slash = path.rfind('/');
            if (auto unit = parseUnit(path.substr(slash + 1)))
                return unit;
            path = path.substr(0, slash == std::string_view::npos ? 0 : slash);
        }
    }
    return std::nullopt;
}

} // namespace stemvault::workspace
