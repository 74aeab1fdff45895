#include "FileManager/WriterCheck.h"

#include "FileManager/DirectoryAccess.h"
#include "FileManager/ProcessWriters.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>

namespace stemvault {

namespace {

constexpr unsigned int cifsMagic = 0xFF534D42;
constexpr unsigned int smb2Magic = 0xFE534D42;

// These grant a lease only while the server has handed the file over to this computer, and refuse
// it with EAGAIN otherwise, whether or not anyone writes.
bool refusesWithoutWriters(int file)
{
    struct statfs fileSystem { };
    if (::fstatfs(file, &fileSystem) != 0)
        return true;
    const auto type = static_cast<unsigned int>(fileSystem.f_type);
    return type == NFS_SUPER_MAGIC || type == cifsMagic || type == smb2Magic
        || type == SMB_SUPER_MAGIC;
}

// A read lease is granted while nobody can write. Whoever opens the file for writing before it is
// given back, a few microseconds later, waits for that long; where the open must not wait it fails.
Writers writersByLease(int item)
{
    const FileDescriptor file(::open(("/proc/self/fd/" + std::to_string(item)).c_str(),
        O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    // The holder of a lease is told of such a writer by SIGIO, which ends a program that does not
    // handle it. SIGURG is ignored unless handled.
    if (!file || ::fcntl(file.get(), F_SETSIG, SIGURG) != 0)
        return Writers::Unknown;
    if (::fcntl(file.get(), F_SETLEASE, F_RDLCK) == 0) {
        ::fcntl(file.get(), F_SETLEASE, F_UNLCK);
        return Writers::None;
    }
    const bool isRefused = errno == EAGAIN;
    return isRefused && !refusesWithoutWriters(file.get()) ? Writers::Some : Writers::Unknown;
}

} // namespace

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
