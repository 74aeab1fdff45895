#include "LinuxDesktop/LoginItem/AutostartText.h"

#include "Foundation/FieldText.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace stemvault::login_item {

namespace {

using Text = std::string_view;

constexpr Text header = "[Desktop Entry]";
constexpr std::array ours = { Text("Type"), Text("Exec"), Text("TryExec"), Text("Hidden"),
    Text("X-GNOME-Autostart-enabled"), Text("X-MATE-Autostart-enabled") };

/// The text as a value of a desktop entry, in which a backslash begins an escape and blanks at the
/// end of a line are ignored.
std::string asValue(Text text)
{
    constexpr Text escapes = "\\\\\nn\tt\rr"; // Pairs of a character and its escape letter.
    std::string value;
    for (const char character : text) {
        const auto escape = escapes.find(character);
        if (escape % 2 == 0)
            value.append({ '\\', escapes[escape + 1] });
        else
            value += character;
    }
    if (value.ends_with(' '))
        value.replace(value.size() - 1, 1, "\\s");
    return value;
}

/// The path as a single word of a command line: quoted, and with each percent sign doubled, because
/// it begins a field code.
std::string asCommand(Text path)
{
    std::string quoted = "\"";
    for (const char character : path) {
        if (Text("\"`$\\").find(character) != Text::npos)
            quoted += '\\';
        quoted += character;
        if (character == '%')
            quoted += '%';
    }
    return asValue(quoted + "\"");
}

std::vector<std::pair<Text, std::string>> keysFor(const std::string& executable)
{
    return {
        { "Type", "Application" },
        { "Name", "Stemvault Connect" },
        { "Comment", "Puts each bounce of the open session into its Stemvault folder" },
        { "Icon", "net.stemvault.Connect" },
        { "Exec", asCommand(executable) },
        { "TryExec", asValue(executable) },
        { "Terminal", "false" },
        { "StartupNotify", "false" },
        { "X-GNOME-Autostart-enabled", "true" },
    };
}

/// A line of the text, including its newline.
struct Line {
    Text whole;
    bool isInEntry; ///< The line is in the group "[Desktop Entry]".

    /// Empty if the line sets no key.
    [[nodiscard]] Text key() const
    {
        const bool setsOne =
            whole.find('=') != Text::npos && !withoutOuterBlanks(whole).starts_with('#');
        return setsOne ? withoutOuterBlanks(whole.substr(0, whole.find('='))) : Text();
    }
    [[nodiscard]] Text value() const
    {
        const auto equals = whole.find('=');
        return equals == Text::npos ? Text() : withoutOuterBlanks(whole.substr(equals + 1));
    }
};

std::vector<Line> linesOf(Text text)
{
    std::vector<Line> lines;
    bool isInEntry = false;
    while (!text.empty()) {
        const auto length = std::min(text.find('\n'), text.size() - 1) + 1;
        const Text whole = text.substr(0, length);
        if (const Text line = withoutOuterBlanks(whole); line.starts_with('['))
            isInEntry = line == header;
        lines.push_back({ whole, isInEntry });
        text.remove_prefix(length);
    }
    return lines;
}

/// Each desktop has its own way to switch an entry off.
bool switchesOff(const Line& line)
{
    const Text key = line.key();
    return (key == "Hidden" && line.value() == "true")
        || ((key == "X-GNOME-Autostart-enabled" || key == "X-MATE-Autostart-enabled")
            && line.value() == "false");
}

/// Whether the line sets a key that this program manages, or a key without a value.
bool isOurs(const Line& line)
{
    return line.isInEntry && !line.key().empty()
        && (line.value().empty() || std::ranges::find(ours, line.key()) != ours.end());
}

} // namespace

bool isSwitchedOn(Text text)
{
    bool isEntry = false;
    for (const Line& line : linesOf(text)) {
        if (line.isInEntry && switchesOff(line))
            return false;
        isEntry = isEntry || line.isInEntry;
    }
    return isEntry;
}

std::string switchedOn(Text before, const std::string& executable)
{
    auto kept = linesOf(before);
    std::erase_if(kept, isOurs);
    const auto entry = std::ranges::find_if(kept, &Line::isInEntry);
    const auto has = [&kept](Text key) {
        return std::ranges::any_of(
            kept, [key](const Line& line) { return line.isInEntry && line.key() == key; });
    };

    std::string text;
    const auto add = [&text](Text whole) {
        text.append(whole).append(whole.ends_with('\n') ? "" : "\n");
    };
    for (auto line = kept.begin(); line != entry; ++line)
        add(line->whole);
    add(entry == kept.end() ? header : entry->whole);
    for (const auto& [key, value] : keysFor(executable))
        if (!has(key))
            add(std::string(key) + "=" + value);
    for (auto line = entry; line != kept.end(); ++line)
        if (line != entry)
            add(line->whole);
    return text;
}

} // namespace stemvault::login_item
