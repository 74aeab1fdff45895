#include "LinuxDesktop/Workspace/DesktopEntry.h"

#include "Foundation/FieldText.h"
#include "Foundation/PathText.h"

#include <algorithm>
#include <array>
#include <map>

namespace stemvault::workspace {

namespace {

using Group = std::map<std::string, std::string, std::less<>>;

/// The keys of one group with their unparsed values. If a key occurs twice, the first one counts.
Group readGroup(std::string_view text, std::string_view header)
{
    Group group;
    bool isInside = false;
    while (!text.empty()) {
        const auto line = withoutOuterBlanks(takeField(text, '\n'));
        if (line.starts_with('['))
            isInside = line == header;
        const auto equals = line.find('=');
        if (!isInside || line.starts_with('#') || equals == std::string_view::npos)
            continue;
        group.emplace(withoutOuterBlanks(line.substr(0, equals)),
            withoutOuterBlanks(line.substr(equals + 1)));
    }
    return group;
}

std::string unescaped(std::string_view value)
{
    constexpr std::string_view escapes = "s n\nt\tr\r\\\\";
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        char letter = value[i];
        if (letter == '\\' && i + 1 < value.size()) {
            // `escapes` pairs each letter with its character. An unknown one keeps its backslash.
            const char next = value[i + 1];
            for (std::size_t pair = 0; pair < escapes.size(); pair += 2)
                if (escapes[pair] == next) {
                    letter = escapes[pair + 1];
                    ++i;
                    break;
                }
        }
        text += letter;
    }
    return text;
}

std::string text(const Group& group, std::string_view key)
{
    const auto at = group.find(key);
    return at == group.end() ? std::string() : unescaped(at->second);
}

bool isTrue(const Group& group, std::string_view key)
{
    return text(group, key) == "true";
}

std::string localizedText(
    const Group& group, const std::string& key, const std::vector<std::string>& languages)
{
    for (const std::string& language : languages)
        if (auto value = text(group, std::string(key).append("[").append(language).append("]"));
            !value.empty())
            return value;
    return text(group, key);
}

/// Removes the next word from an Exec line. A word ends at a blank outside double quotes; within
/// them, a backslash escapes the next character.
std::string takeWord(std::string_view& line)
{
    line = withoutOuterBlanks(line);
    std::string word;
    bool isQuoted = false;
    while (!line.empty() && (isQuoted || (line.front() != ' ' && line.front() != '\t'))) {
        if (line.front() == '"') {
            isQuoted = !isQuoted;
        } else {
            if (isQuoted && line.front() == '\\' && line.size() > 1)
                line.remove_prefix(1);
            word += line.front();
        }
        line.remove_prefix(1);
    }
    return word;
}

bool runsOthers(std::string_view program)
{
    constexpr std::array<std::string_view, 14> names { "bash", "dash", "flatpak", "gtk-launch",
        "java", "perl", "pkexec", "python3", "sh", "snap", "steam", "wine", "wine64", "xdg-open" };
    return std::ranges::find(names, program) != names.end();
}

} // namespace

std::string programOfExecLine(std::string_view line)
{
    std::string word = takeWord(line);
    if (lastPathComponent(word) == "env") {
        do
            word = takeWord(line);
        while (word.find('=') != std::string::npos);
    }
    const std::string program = lastPathComponent(word);
    return runsOthers(program) ? std::string() : program;
}

std::optional<DesktopEntry> parseDesktopEntry(
    std::string_view contents, const std::vector<std::string>& languages)
{
    const Group group = readGroup(contents, "[Desktop Entry]");
    DesktopEntry entry;
    entry.isHidden = isTrue(group, "Hidden");
    entry.name = localizedText(group, "Name", languages);
    if (!entry.isHidden && (text(group, "Type") != "Application" || entry.name.empty()))
        return std::nullopt;
    entry.windowClass = text(group, "StartupWMClass");
    entry.program = programOfExecLine(text(group, "Exec"));
    entry.requiredProgram = text(group, "TryExec");
    entry.isInMenu = !isTrue(group, "NoDisplay");
    entry.runsInTerminal = isTrue(group, "Terminal");
    return entry;
}

std::vector<std::string> preferredLanguages(std::string_view locale)
{
    const auto modifier = std::min(locale.find('@'), locale.size());
    const auto encoding = std::min(locale.find('.'), modifier);
    const std::string country(locale.substr(0, encoding));
    const std::string language = country.substr(0, country.find('_'));
    const std::string variant(locale.substr(modifier));
    if (language.empty() || language == "C" || language == "POSIX")
        return {};
    std::vector<std::string> names;
    for (const auto& name : { country + variant, country, language + variant, language })
        if (std::ranges::find(names, name) == names.end())
            names.push_back(name);
    return names;
}

std::optional<std::string> parseFlatpakIdentifier(std::string_view contents)
{
    auto identifier = text(readGroup(contents, "[Application]"), "name");
    return identifier.empty() ? std::nullopt : std::optional(std::move(identifier));
}

} // namespace stemvault::workspace
