#include "LinuxDesktop/LoginItem/AutostartEntry.h"

#include "Foundation/Environment.h"
#include "LinuxDesktop/LoginItem/AutostartText.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace stemvault::login_item {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view fileName = "net.stemvault.Connect.desktop";

/// Empty when there is no such file, or when it cannot be read. An iterator over the file would
/// throw then.
std::string contentOf(const std::string& path)
{
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
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
    return configurationFolder() + "/autostart";
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
    return isSwitchedOn(contentOf(path())) ? LoginItemStatus::Enabled
                                           : LoginItemStatus::NotRegistered;
}

// Writes a temporary file and renames it, so that no session start reads half of the entry.
Result<void> AutostartEntry::registerItem()
{
    if (program.empty())
        return failure(ENOENT);
    std::error_code error;
    fs::create_directories(autostartFolder, error);
    if (error)
        return failure(error.value());
    const std::string text = switchedOn(contentOf(path()), program);
    const std::string draft = path() + ".new";
    {
        std::ofstream file(draft, std::ios::binary | std::ios::trunc);
        file << text;
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

} // namespace stemvault::login_item
