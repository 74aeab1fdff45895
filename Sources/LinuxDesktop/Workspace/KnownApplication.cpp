#include "LinuxDesktop/Workspace/KnownApplication.h"

#include "Foundation/DAWTable.h"
#include "Foundation/PathText.h"
#include "Foundation/UnicodeText.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace stemvault::workspace {

namespace {

bool isDigit(char letter)
{
    return letter >= '0' && letter <= '9';
}

/// Whether a lower-case name matches a pattern of the table. A "*" at the end of the pattern stands
/// for any text, a "#" for text that begins with a digit.
bool matches(std::string_view name, std::string_view pattern)
{
    const char last = pattern.empty() ? '\0' : pattern.back();
    if (last != '*' && last != '#')
        return name == pattern;
    pattern.remove_suffix(1);
    return name.starts_with(pattern)
        && (last == '*' || (name.size() > pattern.size() && isDigit(name[pattern.size()])));
}

bool matchesAny(std::string_view name, const DAWNames& patterns)
{
    return std::ranges::any_of(
        patterns, [&](std::string_view pattern) { return matches(name, pattern); });
}

/// The file is called "Cubase12", the program "Cubase 12".
std::string withBlankBeforeRelease(std::string name)
{
    const auto letter = std::ranges::find_if(name, isDigit);
    if (letter != name.begin() && letter != name.end() && *(letter - 1) != ' ')
        name.insert(letter, ' ');
    return name;
}

bool holds(std::string_view path, std::string_view part)
{
    return lowercased(path).find(part) != std::string::npos;
}

/// Empty under Wine, where the executable is the loader.
std::string nativeExecutable(const Program& program, std::string_view executable)
{
    constexpr std::string_view replacedMark = " (deleted)";
    if (executable.ends_with(replacedMark))
        executable.remove_suffix(replacedMark.size());
    return program.isWindows ? std::string() : std::string(executable);
}

/// The DAW that has a program of this name, and whose installation folder is part of its path.
const DAW* dawNamed(const std::string& name, const Program& program, const std::string& executable)
{
    const auto rows = knownDAWs();
    const auto row = std::ranges::find_if(rows, [&](const DAW& daw) {
        return matchesAny(lowercased(name), daw.programs)
            && (holds(program.path, daw.installedIn) || holds(executable, daw.installedIn));
    });
    return row == rows.end() ? nullptr : &*row;
}

/// Programs that run alongside an application under Wine. Native programs may have the same names.
constexpr std::array<std::string_view, 14> windowsHelpers { "services", "explorer", "winedevice",
    "plugplay", "svchost", "rpcss", "conhost", "start", "winemenubuilder", "wineboot", "tabtip",
    "rundll32", "cmd", "wineconsole" };

constexpr DAWNames helpers { "wine", "wine64", "wine-preloader", "wine64-preloader", "wineserver*",
    "reaper_host*", "yabridge-host*", "vstpluginscanner*", "vstscanner*", "pluginscanner*",
    "crashpad_handler" };

} // namespace

std::optional<KnownApplication> knownApplication(
    const Program& program, const std::string& executable)
{
    if (isHelper(program))
        return std::nullopt;
    const std::string native = nativeExecutable(program, executable);
    // A program that is started through a link has the name of the link.
    for (const std::string& name : { program.name, lastPathComponent(native) })
        if (const DAW* const daw = dawNamed(name, program, native))
            return KnownApplication { std::string(daw->identifier),
                daw->name.empty() ? withBlankBeforeRelease(name) : std::string(daw->name) };
    return std::nullopt;
}

std::optional<KnownApplication> knownApplicationOfEntry(std::string_view entry)
{
    const std::string name = lowercased(entry);
    for (const DAW& daw : knownDAWs())
        if (matchesAny(name, daw.desktopEntries))
            return KnownApplication { std::string(daw.identifier), std::string(daw.name) };
    return std::nullopt;
}

bool isHelper(const Program& program)
{
    const std::string name = lowercased(program.name);
    return isSandboxLauncher(program) || program.isSteamLauncher
        || (program.isWindows && std::ranges::find(windowsHelpers, name) != windowsHelpers.end())
        || matchesAny(name, helpers);
}

bool isWineServer(const Program& program)
{
    return program.name.starts_with("wineserver");
}

bool isSandboxLauncher(const Program& program)
{
    return program.name == "bwrap" || program.name == "xdg-dbus-proxy";
}

} // namespace stemvault::workspace
