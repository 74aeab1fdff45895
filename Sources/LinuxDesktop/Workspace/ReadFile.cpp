#include "LinuxDesktop/Workspace/ReadFile.h"

#include "Foundation/FileDescriptor.h"

#include <array>
#include <fcntl.h>

namespace stemvault::workspace {

std::optional<std::string> readFile(int folder, const std::string& path, std::size_t most)
{
    // O_NONBLOCK, because a pipe or device among the files must not block the program.
    const FileDescriptor file(::openat(folder, path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file)
        return std::nullopt;
    std::string text;
    std::array<char, 16384> portion; // NOLINT(*-member-init): read fills the part that is used.
    for (;;) {
        const ssize_t count = ::read(file.get(), portion.data(), portion.size());
        if (count < 0 || text.size() + static_cast<std::size_t>(count) > most)
            return std::nullopt;
        if (count == 0)
            return text;
        text.append(portion.data(), static_cast<std::size_t>(count));
    }
}

std::optional<std::string> readFile(const std::string& path, std::size_t most)
{
    return readFile(AT_FDCWD, path, most);
}

} // namespace stemvault::workspace
