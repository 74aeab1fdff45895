#include "LinuxDesktop/Processes/KnownApplication.h"

#include "Foundation/UnicodeText.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace stemvault {

namespace {

enum class Match { Whole, Beginning };

struct Row {
    std::string_view program; ///< In lower case, without ".exe".
    Match match;
    std::string_view identifier;
    std::string_view name; ///< Empty where the program's own name is the one that users know.
};

// One row serves the native program and the one under Wine. Releases later than the last one that
// has an identifier of its own go by that one: their session files are the same. Logic Pro runs
// on neither.
constexpr std::array rows {
    Row { "protools", Match::Whole, "com.avid.ProTools", "Pro Tools" },
    Row { "pro tools", Match::Beginning, "com.avid.ProTools", "" },
    Row { "ableton live ", Match::Beginning, "com.ableton.live", "" },
    Row { "studio one", Match::Whole, "com.presonus.studioone6", "Studio One" },
    Row { "cubase", Match::Beginning, "com.steinberg.cubase12", "" },
    Row { "reaper", Match::Whole, "com.cockos.reaper", "REAPER" },
};

constexpr std::string_view studioOne5 = "com.presonus.studioone5";

bool matches(std::string_view name, std::string_view pattern, Match match)
{
    return match == Match::Whole ? name == pattern : name.starts_with(pattern);
}

bool isDigit(char letter)
{
    return letter >= '0' && letter <= '9';
}

/// "Cubase12" is what the file is called and "Cubase 12" what the program is.
std::string withBlankBeforeRelease(std::string name)
{
    const auto letter = std::ranges::find_if(name, isDigit);
    if (letter != name.begin() && letter != name.end() && *(letter - 1) != ' ')
        name.insert(letter, ' ');
    return name;
}

/// Every release's program has the same name; the folder that it is installed in tells them apart.
bool isInStudioOne5Folder(std::string_view path)
{
    return lowercased(path).find("studio one 5") != std::string::npos;
}

/// What runs beside an application under Wine. Native programs may have such names of their own.
constexpr std::array<std::string_view, 14> windowsHelpers { "services", "explorer", "winedevice",
    "plugplay", "svchost", "rpcss", "conhost", "start", "winemenubuilder", "wineboot", "tabtip",
    "rundll32", "cmd", "wineconsole" };

struct HelperRow {
    std::string_view program;
    Match match;
};

constexpr std::array helpers {
    HelperRow { "wine", Match::Whole },
    HelperRow { "wine64", Match::Whole },
    HelperRow { "wine-preloader", Match::Whole },
    HelperRow { "wine64-preloader", Match::Whole },
    HelperRow { "wineserver", Match::Beginning },
    HelperRow { "reaper_host", Match::Beginning },
    HelperRow { "yabridge-host", Match::Beginning },
    HelperRow { "vstpluginscanner", Match::Beginning },
    HelperRow { "vstscanner", Match::Beginning },
    HelperRow { "pluginscanner", Match::Beginning },
    HelperRow { "crashpad_handler", Match::Whole },
};

} // namespace

std::optional<KnownApplication> knownApplication(
    const Program& program, const std::string& executable)
{
    if (isHelper(program))
        return std::nullopt;
    const std::string name = lowercased(program.name);
    const auto* const row = std::ranges::find_if(
        rows, [&](const Row& each) { return matches(name, each.program, each.match); });
    if (row == rows.end())
        return std::nullopt;
    KnownApplication known { std::string(row->identifier), std::string(row->name) };
    if (known.name.empty())
        known.name = withBlankBeforeRelease(program.name);
    if (row->program == "studio one"
        && (isInStudioOne5Folder(program.path)
            || (!program.isWindows && isInStudioOne5Folder(executable))))
        known.identifier = studioOne5;
    return known;
}

bool isHelper(const Program& program)
{
    const std::string name = lowercased(program.name);
    return isSandboxLauncher(program)
        || (program.isWindows && std::ranges::find(windowsHelpers, name) != windowsHelpers.end())
        || std::ranges::any_of(
            helpers, [&](const HelperRow& row) { return matches(name, row.program, row.match); });
}

bool isSandboxLauncher(const Program& program)
{
    return program.name == "bwrap" || program.name == "xdg-dbus-proxy";
}

} // namespace stemvault
