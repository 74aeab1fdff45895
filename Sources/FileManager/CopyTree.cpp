#include "FileManager/CopyTree.h"

#include "FileManager/FileAttributes.h"
#include "FileManager/FileContent.h"

#include <cerrno>
#include <string>

namespace stemvault {

namespace {

bool isUnchanged(int item, const struct stat& before)
{
    const auto now = statusOf(item);
    return now && now->st_size == before.st_size && now->st_mtim.tv_sec == before.st_mtim.tv_sec
        && now->st_mtim.tv_nsec == before.st_mtim.tv_nsec;
}

// Some file systems do not support fsync for some items; nothing more can be done for those.
CopyOutcome sync(int item, const CopyOptions& options)
{
    if (options.durability == Durability::OnDisk && options.calls.fsync(item) != 0
        && errno != EINVAL && errno != ENOTSUP)
        return writingFault();
    return std::nullopt;
}

CopyOutcome finish(int in, int out, const struct stat& source, const CopyOptions& options)
{
    copyAttributes(in, out, source, options);
    if (!isUnchanged(in, source))
        return CopyFault { CopyFault::Kind::Changing };
    return sync(out, options);
}

/// Copies the entries of one folder, each according to its type.
class EntryCopy {
public:
    EntryCopy(int sourceFolder, int newFolder, const CopyOptions& copyOptions)
        : in(sourceFolder), out(newFolder), options(copyOptions)
    {
    }

    CopyOutcome copy(const std::string& name) const;

private:
    CopyOutcome copyFile(const std::string& name) const;
    CopyOutcome copyFolder(const std::string& name) const;
    CopyOutcome copyLink(const std::string& name, const struct stat& source) const;

    int in;
    int out;
    const CopyOptions& options;
};

CopyOutcome EntryCopy::copy(const std::string& name) const
{
    const auto source = linkStatus(in, name);
    if (!source)
        return CopyFault { CopyFault::Kind::Changing };
    if (S_ISREG(source->st_mode))
        return copyFile(name);
    if (S_ISDIR(source->st_mode))
        return copyFolder(name);
    if (S_ISLNK(source->st_mode))
        return copyLink(name, *source);
    constexpr mode_t permissions = S_IRWXU | S_IRWXG | S_IRWXO;
    if (::mknodat(out, name.c_str(), source->st_mode & (S_IFMT | permissions), source->st_rdev)
        != 0)
        return writingFault();
    return std::nullopt;
}

CopyOutcome EntryCopy::copyFile(const std::string& name) const
{
    // Checked before its content is opened: opening a pipe that has taken its place would block.
    const FileDescriptor item(::openat(in, name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    const auto source = item ? statusOf(item.get()) : std::nullopt;
    if (!source)
        return readingFault();
    if (!S_ISREG(source->st_mode))
        return CopyFault { CopyFault::Kind::Changing };
    const FileDescriptor from = openContent(item.get(), O_RDONLY);
    if (!from)
        return readingFault();
    FileDescriptor to(options.calls.openat(
        out, name.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!to)
        return writingFault();
    if (const auto fault = copyWholeFile(from.get(), to.get(), *source, options))
        return fault;
    if (options.calls.close(to.release()) != 0)
        return writingFault();
    return std::nullopt;
}

CopyOutcome EntryCopy::copyFolder(const std::string& name) const
{
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    const FileDescriptor from(::openat(in, name.c_str(), flags));
    const auto source = from ? statusOf(from.get()) : std::nullopt;
    if (!source)
        return readingFault();
    if (options.calls.mkdirat(out, name.c_str(), S_IRWXU) != 0)
        return writingFault();
    const FileDescriptor to(::openat(out, name.c_str(), flags));
    if (!to)
        return writingFault();
    return copyWholeFolder(from.get(), to.get(), *source, options);
}

CopyOutcome EntryCopy::copyLink(const std::string& name, const struct stat& source) const
{
    std::string target(static_cast<std::size_t>(source.st_size) + 1, '\0');
    const ssize_t length = ::readlinkat(in, name.c_str(), target.data(), target.size());
    if (length < 0)
        return readingFault();
    if (length > source.st_size)
        return CopyFault { CopyFault::Kind::Changing };
    if (options.calls.symlinkat(target.c_str(), out, name.c_str()) != 0)
        return writingFault();
    ::utimensat(out, name.c_str(), modificationTime(source).data(), AT_SYMLINK_NOFOLLOW);
    return std::nullopt;
}

} // namespace

CopyOutcome copyWholeFile(int in, int out, const struct stat& source, const CopyOptions& options)
{
    if (const auto fault = copyContent(in, out, source, options))
        return fault;
    return finish(in, out, source, options);
}

CopyOutcome copyWholeFolder(int in, int out, const struct stat& source, const CopyOptions& options)
{
    const auto names = namesIn(in);
    if (!names)
        return readingFault();
    const EntryCopy entries(in, out, options);
    for (const std::string& name : *names)
        if (const auto fault = entries.copy(name))
            return fault;
    return finish(in, out, source, options);
}

} // namespace stemvault
