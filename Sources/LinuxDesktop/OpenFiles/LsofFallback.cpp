#include "LinuxDesktop/OpenFiles/LsofFallback.h"

#include "FileManager/DirectoryAccess.h"
#include "Foundation/FileDescriptor.h"
#include "Foundation/NumberText.h"
#include "Foundation/UnicodeText.h"
#include "LinuxDesktop/Workspace/ReadFile.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <set>
#include <system_error>
#include <vector>

namespace stemvault::open_files {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view deletedMark = " (deleted)";

/// The number of bytes of the UTF-8 character at the front; 0 if it is not valid.
std::size_t characterLength(std::string_view text)
{
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
    return text.size() >= length && isValidUTF8(text.substr(0, length)) ? length : 0;
}

std::string escaped(char byte)
{
    constexpr std::string_view named = "\bb\ff\nn\rr\tt\\\\";
    for (std::size_t i = 0; i < named.size(); i += 2)
        if (named[i] == byte)
            return { '\\', named[i + 1] };
    const auto code = static_cast<unsigned char>(byte);
    if (code < 0x20 || code == 0x7f)
        return { '^', static_cast<char>(code ^ 0x40) };
    constexpr std::string_view digits = "0123456789abcdef";
    return { '\\', 'x', digits[code >> 4U], digits[code & 15U] };
}

bool isPlain(char byte)
{
    const auto code = static_cast<unsigned char>(byte);
    return code >= 0x20 && code != 0x7f && byte != '\\';
}

std::string line(std::string_view name)
{
    return "n" + nameAsPrinted(name) + "\n";
}

FileDescriptor openFolder(const fs::path& folder)
{
    return FileDescriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

std::vector<unsigned> descriptorsIn(const fs::path& folder)
{
    std::vector<unsigned> descriptors;
    std::error_code failure;
    for (fs::directory_iterator at(folder, failure), end; !failure && at != end;
         at.increment(failure))
        if (const auto descriptor = parseNumber<unsigned>(at->path().filename().native()))
            descriptors.push_back(*descriptor);
    std::ranges::sort(descriptors);
    return descriptors;
}

/// The kernel escapes a line feed in a mapped file's name, and nothing else, as \012.
std::string mappedName(std::string_view text)
{
    if (text.ends_with(deletedMark))
        text.remove_suffix(deletedMark.size()); // lsof prints no such mark for a mapped file.
    std::string name(text);
    for (auto at = name.find("\\012"); at != std::string::npos; at = name.find("\\012", at + 1))
        name.replace(at, 4, "\n");
    return name;
}

} // namespace

std::string nameAsPrinted(std::string_view name)
{
    std::string printed;
    while (!name.empty()) {
        const auto length = isPlain(name.front()) ? characterLength(name) : 0;
        if (length > 0)
            printed += name.substr(0, length);
        else
            printed += escaped(name.front());
        name.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return printed;
}

std::string linesOfMappedFiles(std::string_view maps, std::string_view executable)
{
    std::string lines;
    std::set<std::string, std::less<>> listed { std::string(executable) };
    while (!maps.empty()) {
        const auto end = std::min(maps.find('\n'), maps.size());
        const auto entry = maps.substr(0, end);
        // The fields before the name (addresses, permissions, offset, device, inode) have no slash.
        if (const auto slash = entry.find('/'); slash != std::string_view::npos)
            if (const auto name = mappedName(entry.substr(slash)); listed.insert(name).second)
                lines += line(name);
        maps.remove_prefix(std::min(end + 1, maps.size()));
    }
    return lines;
}

std::string lsofFallback(pid_t process, const std::string& procRoot)
{
    const fs::path folder = fs::path(procRoot) / std::to_string(process);
    const FileDescriptor own = openFolder(folder);
    std::string text;
    for (const char* link : { "cwd", "root", "exe" })
        if (const auto target = linkTarget(own.get(), link))
            text += line(*target);
    text += linesOfMappedFiles(workspace::readFile(folder / "maps").value_or(""),
        linkTarget(own.get(), "exe").value_or(""));
    const FileDescriptor descriptors = openFolder(folder / "fd");
    for (const unsigned descriptor : descriptorsIn(folder / "fd"))
        if (const auto target = linkTarget(descriptors.get(), std::to_string(descriptor)))
            text += line(*target);
    return text.empty() ? text : "p" + std::to_string(process) + "\n" + text;
}

} // namespace stemvault::open_files
