#include "FileManager/WriterCheck.h"

#include "FileManager/DirectoryAccess.h"
#include "Foundation/FieldText.h"
#include "Foundation/NumberText.h"
#include "Foundation/PathText.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <linux/magic.h>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>
#include <system_error>
#include <unistd.h>

namespace stemvault {

namespace {

constexpr unsigned int cifsMagic = 0xFF534D42;
constexpr unsigned int smb2Magic = 0xFE534D42;

// These grant a lease only while the server has delegated the file to this computer, and otherwise
// refuse it with EAGAIN, whether or not anyone writes.
bool refusesWithoutWriters(int file)
{
    struct statfs fileSystem { };
    if (::fstatfs(file, &fileSystem) != 0)
        return true;
    const auto type = static_cast<unsigned int>(fileSystem.f_type);
    return type == NFS_SUPER_MAGIC || type == cifsMagic || type == smb2Magic
        || type == SMB_SUPER_MAGIC;
}

// A read lease is granted only while nobody can write. A program that opens the file for writing
// before the lease is released, a few microseconds later, waits until then; if its open must not
// block, it fails.
Writers writersByLease(int item)
{
    const FileDescriptor file(::open(("/proc/self/fd/" + std::to_string(item)).c_str(),
        O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    // The kernel reports such a writer to the holder of the lease by SIGIO, which ends a program
    // that does not handle it. SIGURG is ignored unless handled.
    if (!file || ::fcntl(file.get(), F_SETSIG, SIGURG) != 0)
        return Writers::Unknown;
    if (::fcntl(file.get(), F_SETLEASE, F_RDLCK) == 0) {
        ::fcntl(file.get(), F_SETLEASE, F_UNLCK);
        return Writers::None;
    }
    const bool isRefused = errno == EAGAIN;
    return isRefused && !refusesWithoutWriters(file.get()) ? Writers::Some : Writers::Unknown;
}

std::string contentOf(int folder, const std::string& name)
{
    std::string content;
    const FileDescriptor file(::openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC));
    std::array<char, 16384> buffer {};
    for (ssize_t count = 0; file && (count = ::read(file.get(), buffer.data(), buffer.size())) > 0;)
        content.append(buffer.data(), static_cast<std::size_t>(count));
    return content;
}

/// Removes the text up to the separator and all its repetitions; returns it without them.
std::string_view takeWord(std::string_view& text, char separator)
{
    const std::string_view word = takeField(text, separator);
    text.remove_prefix(std::min(text.find_first_not_of(separator), text.size()));
    return word;
}

/// Whether the fdinfo of a descriptor says that it refers to an item with this inode.
bool hasInode(std::string_view description, std::uint64_t inode)
{
    while (!description.empty()) {
        std::string_view line = takeWord(description, '\n');
        if (takeWord(line, '\t') == "ino:")
            return parseNumber<std::uint64_t>(line) == inode;
    }
    return true; // Linux before 5.14 does not give the inode.
}

/// The link has the permissions of the descriptor, and its text distinguishes files from sockets.
bool isFileOpenForWriting(int descriptors, const std::string& name)
{
    const auto link = linkStatus(descriptors, name);
    char firstOfText = 0;
    return link && (link->st_mode & S_IWUSR) != 0
        && ::readlinkat(descriptors, name.c_str(), &firstOfText, 1) == 1 && firstOfText == '/';
}

bool hasWritingDescriptor(int process, const struct stat& file)
{
    const FileDescriptor descriptors(::openat(process, "fd", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const FileDescriptor descriptions(::openat(process, "fdinfo", O_PATH | O_CLOEXEC));
    const auto names = descriptors && descriptions ? namesIn(descriptors.get()) : std::nullopt;
    return names && std::ranges::any_of(*names, [&](const std::string& name) {
        struct stat status { };
        return isFileOpenForWriting(descriptors.get(), name)
            && hasInode(contentOf(descriptions.get(), name), file.st_ino)
            && ::fstatat(descriptors.get(), name.c_str(), &status, 0) == 0
            && isSameItem(status, file);
    });
}

bool isDevice(std::string_view text, dev_t device)
{
    std::array<char, 32> expected {};
    std::snprintf(expected.data(), expected.size(), "%02x:%02x", major(device), minor(device));
    return text == expected.data();
}

/// Whether a line of /proc/PID/maps describes a mapping that writes to the file:
/// "7f0c0-7f0d0 rw-s 00000000 fd:01 1234     /home/a/Mix.wav".
bool isWritingMapping(std::string_view line, const struct stat& file, std::string_view name)
{
    takeWord(line, ' ');
    const std::string_view permissions = takeWord(line, ' ');
    if (permissions.size() < 4 || permissions[1] != 'w' || permissions[3] != 's')
        return false;
    takeWord(line, ' ');
    const std::string_view device = takeWord(line, ' ');
    if (parseNumber<std::uint64_t>(takeWord(line, ' ')) != file.st_ino)
        return false;
    // File systems without a device of their own, such as btrfs, have another number in this table.
    return isDevice(device, file.st_dev)
        || (major(file.st_dev) == 0 && lastPathComponent(line) == name);
}

bool hasWritingMapping(int process, const struct stat& file, std::string_view name)
{
    const std::string content = contentOf(process, "maps");
    for (std::string_view lines = content; !lines.empty();)
        if (isWritingMapping(takeWord(lines, '\n'), file, name))
            return true;
    return false;
}

std::string nameOf(int descriptor)
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), error)
        .filename()
        .native();
}

} // namespace

bool isWrittenByOwnProcess(int descriptor)
{
    const auto file = statusOf(descriptor);
    const FileDescriptor processes = openPath("/proc", O_RDONLY | O_DIRECTORY);
    const auto ids = processes ? namesIn(processes.get()) : std::nullopt;
    if (!file || !ids)
        return false;
    const std::string name = nameOf(descriptor);
    return std::ranges::any_of(*ids, [&](const std::string& id) {
        if (id.find_first_not_of("0123456789") != std::string::npos)
            return false;
        const FileDescriptor process(
            ::openat(processes.get(), id.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        return process
            && (hasWritingDescriptor(process.get(), *file)
                || hasWritingMapping(process.get(), *file, name));
    });
}

Writers writersOf(const std::string& path)
{
    const FileDescriptor item = openPath(path, O_PATH | O_NOFOLLOW);
    return item ? writersOf(item.get()) : Writers::Unknown;
}

Writers writersOf(int descriptor)
{
    const auto status = statusOf(descriptor);
    if (!status || !S_ISREG(status->st_mode))
        return Writers::Unknown;
    const Writers writers = writersByLease(descriptor);
    if (writers != Writers::Unknown)
        return writers;
    return isWrittenByOwnProcess(descriptor) ? Writers::Some : Writers::Unknown;
}

} // namespace stemvault
