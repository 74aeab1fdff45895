#include "LinuxDesktop/Login/AutostartEntry.h"

#include "Foundation/HomeDirectory.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace stemvault {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view fileName = "net.stemvault.Connect.desktop";

std::string environment(const char* name)
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in the program changes the environment then.
    const char* const value = std::getenv(name);
    return value ? value : "";
}

/// As a value of a desktop entry: a backslash begins an escape there, and blanks at the end of a
/// line do not count.
std::string asValue(std::string_view text)
{
    constexpr std::string_view escapes = "\\\\\nn\tt\rr"; // Each with its letter behind it.
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

/// As the one word of a command line: quoted, and with the field codes' percent sign doubled.
std::string asCommand(std::string_view path)
{
    std::string quoted = "\"";
    for (const char character : path) {
        if (std::string_view("\"`$\\").find(character) != std::string_view::npos)
            quoted += '\\';
        quoted += character;
        if (character == '%')
            quoted += '%';
    }
    return asValue(quoted + "\"");
}

std::string entryFor(const std::string& executable)
{
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Stemvault Connect\n"
           "Comment=Puts each bounce of the open session into its Stemvault folder\n"
           "Icon=net.stemvault.Connect\n"
           "Exec="
        + asCommand(executable)
        + "\n"
          "TryExec="
        + asValue(executable)
        + "\n"
          "Terminal=false\n"
          "StartupNotify=false\n"
          "X-GNOME-Autostart-enabled=true\n";
}

/// Whether a line switches the entry off: each desktop has its own way.
bool isSwitchedOff(std::string line)
{
    std::erase_if(line,
        [](char character) { return character == ' ' || character == '\t' || character == '\r'; });
    constexpr std::array switches = { std::string_view("Hidden=true"),
        std::string_view("X-GNOME-Autostart-enabled=false"),
        std::string_view("X-MATE-Autostart-enabled=false") };
    for (const std::string_view off : switches)
        if (line == off)
            return true;
    return false;
}

Failure failure(int error)
{
    return { std::generic_category().message(error) };
}

} // namespace

AutostartEntry::AutostartEntry(std::string folder, std::string executable)
    : autostartFolder(std::move(folder)), program(std::move(executable))
{
}

std::string AutostartEntry::standardFolder()
{
    const std::string configuration = environment("XDG_CONFIG_HOME");
    return (configuration.starts_with('/') ? configuration : homeDirectory() + "/.config")
        + "/autostart";
}

std::string AutostartEntry::standardExecutable()
{
    if (auto image = environment("APPIMAGE"); image.starts_with('/'))
        return image;
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).string();
}

std::string AutostartEntry::path() const
{
    return autostartFolder + "/" + std::string(fileName);
}

LoginItemStatus AutostartEntry::status() const
{
    std::ifstream file(path());
    if (!file)
        return LoginItemStatus::NotRegistered;
    bool isInEntry = false;
    bool isEntry = false;
    for (std::string line; std::getline(file, line);) {
        line.erase(0, line.find_first_not_of(" \t"));
        if (line.starts_with('['))
            isInEntry = line.starts_with("[Desktop Entry]");
        isEntry = isEntry || isInEntry;
        if (isInEntry && isSwitchedOff(line))
            return LoginItemStatus::NotRegistered;
    }
    return isEntry ? LoginItemStatus::Enabled : LoginItemStatus::NotRegistered;
}

// Written beside and moved into place, so that no session start reads half of it.
Result<void> AutostartEntry::registerItem()
{
    if (program.empty())
        return failure(ENOENT);
    std::error_code error;
    fs::create_directories(autostartFolder, error);
    if (error)
        return failure(error.value());
    const std::string draft = path() + ".new";
    {
        std::ofstream file(draft, std::ios::binary | std::ios::trunc);
        file << entryFor(program);
        if (!file.flush()) {
            fs::remove(draft, error);
            return failure(EIO);
        }
    }
    fs::rename(draft, path(), error);
    if (!error)
        return {};
    const int reason = error.value();
    fs::remove(draft, error);
    return failure(reason);
}

Result<void> AutostartEntry::unregisterItem()
{
    std::error_code error;
    fs::remove(path(), error);
    return error ? Result<void>(failure(error.value())) : Result<void>();
}

} // namespace stemvault
