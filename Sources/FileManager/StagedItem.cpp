#include "FileManager/StagedItem.h"

#include "FileManager/DirectoryAccess.h"
#include "FileManager/TemporaryItem.h"

#include <cerrno>
#include <sys/stat.h>
#include <utility>

namespace stemvault {

namespace {

// The errors by which file systems report that they do not support a kind of rename.
bool isUnknownRename(int error)
{
    return error == EINVAL || error == ENOSYS || error == ENOTSUP;
}

} // namespace

StagedItem::StagedItem(int parent, std::string nameToBear, const CopyOptions& copyOptions)
    : folder(parent), finalName(std::move(nameToBear)), options(copyOptions)
{
}

// Closes the file before removing it: some drives store a file on close even if it was removed.
StagedItem::~StagedItem()
{
    descriptor.reset();
    if (!name.empty())
        removeItem(folder, name);
}

// Tries random names until one is unused; keeps the name once the call has created an item with it.
template <typename Call> bool StagedItem::underFreshName(Call call)
{
    constexpr int attempts = 100;
    for (int i = 0; i < attempts; ++i) {
        const std::string fresh = temporaryName(finalName);
        if (call(fresh.c_str())) {
            name = fresh;
            return true;
        }
        if (errno != EEXIST)
            break;
    }
    return false;
}

// In an append-only folder, names can be created but neither changed nor removed.
bool StagedItem::isInAppendOnlyFolder() const
{
    struct statx status { };
    return ::statx(folder, "", AT_EMPTY_PATH, 0, &status) == 0
        && (status.stx_attributes & STATX_ATTR_APPEND) != 0;
}

bool StagedItem::createUnnamedFile()
{
    descriptor = FileDescriptor(
        options.calls.openat(folder, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR));
    isUnnamed = descriptor.isOpen();
    if (isUnnamed)
        markStaged(descriptor.get());
    return isUnnamed;
}

bool StagedItem::createFile()
{
    if (isInAppendOnlyFolder())
        return errno = EPERM, false;
    return underFreshName([this](const char* fresh) {
        descriptor = FileDescriptor(options.calls.openat(
            folder, fresh, O_CREAT | O_EXCL | O_RDWR | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
        if (descriptor)
            markStaged(descriptor.get());
        return descriptor.isOpen();
    });
}

bool StagedItem::createFolder()
{
    isFolder = true;
    if (isInAppendOnlyFolder())
        return errno = EPERM, false;
    if (!underFreshName(
            [this](const char* fresh) { return ::mkdirat(folder, fresh, S_IRWXU) == 0; }))
        return false;
    descriptor = FileDescriptor(
        ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (descriptor)
        markStaged(descriptor.get());
    return descriptor.isOpen();
}

bool StagedItem::linkTemporaryName()
{
    if (!name.empty() || isInAppendOnlyFolder())
        return true;
    return underFreshName([this](const char* fresh) { return linkAs(fresh); });
}

bool StagedItem::linkAs(const char* fresh) const
{
    const std::string unnamed = "/proc/self/fd/" + std::to_string(item());
    return options.calls.linkat(AT_FDCWD, unnamed.c_str(), folder, fresh, AT_SYMLINK_FOLLOW) == 0;
}

CopyOutcome StagedItem::commit()
{
    if (name.empty())
        return linkToFreeName();
    if (const auto fault = closeFile())
        return fault;
    // Sync clients wait until a written file is closed. That event has not occurred for a linked
    // file, so it is opened once more and closed under its final name. A file that was created with
    // a name must not be opened again: some drives (rclone's without a cache) empty a file that is
    // opened for writing and closed without a write.
    const FileDescriptor toClose(isUnnamed
            ? ::openat(folder, name.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)
            : -1);
    const auto fault = options.ifExists == IfExists::Replace ? moveOverOld() : moveToFreeName();
    if (!fault)
        finishCommit();
    return fault;
}

CopyOutcome StagedItem::linkToFreeName()
{
    if (!linkAs(finalName.c_str())) {
        const bool isReplacing = options.ifExists == IfExists::Replace && errno == EEXIST;
        return CopyFault { CopyFault::Kind::Writing, isReplacing ? EPERM : errno };
    }
    finishCommit();
    return std::nullopt;
}

// Network drives may delay writing until a file is closed and report only then that it failed.
CopyOutcome StagedItem::closeFile()
{
    if (!isFolder && options.calls.close(descriptor.release()) != 0)
        return writingFault();
    return std::nullopt;
}

bool StagedItem::isGone() const
{
    return !name.empty() && !linkStatus(folder, name) && errno == ENOENT;
}

CopyOutcome StagedItem::moveToFreeName()
{
    const char* const from = name.c_str();
    const char* const to = finalName.c_str();
    if (options.calls.renameat2(folder, from, folder, to, RENAME_NOREPLACE) == 0)
        return std::nullopt;
    if (!isUnknownRename(errno))
        return writingFault();
    if (options.calls.linkat(folder, from, folder, to, 0) == 0) {
        ::unlinkat(folder, from, 0);
        return std::nullopt;
    }
    if (errno == EEXIST)
        return writingFault();
    // Neither is supported here (on a FAT disk behind FUSE, say), so the name is checked first.
    if (linkStatus(folder, finalName))
        return CopyFault { CopyFault::Kind::Writing, EEXIST };
    if (options.calls.renameat2(folder, from, folder, to, 0) != 0)
        return writingFault();
    return std::nullopt;
}

CopyOutcome StagedItem::moveOverOld()
{
    const auto old = linkStatus(folder, finalName);
    if (old && (isFolder || S_ISDIR(old->st_mode)))
        return exchangeWithOld();
    if (options.calls.renameat2(folder, name.c_str(), folder, finalName.c_str(), 0) != 0)
        return writingFault();
    return std::nullopt;
}

CopyOutcome StagedItem::exchangeWithOld()
{
    // The old item is marked before it gets the staged item's name: a copy that is killed right
    // after the exchange leaves it under that name, and leftovers are recognised by the mark.
    const FileDescriptor old(
        ::openat(folder, finalName.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (old)
        markStaged(old.get());
    if (options.calls.renameat2(folder, name.c_str(), folder, finalName.c_str(), RENAME_EXCHANGE)
        == 0) {
        displaced = name;
        return std::nullopt;
    }
    const int fault = errno;
    unmarkStaged(folder, finalName);
    errno = fault;
    return isUnknownRename(errno) ? moveOldAside() : writingFault();
}

CopyOutcome StagedItem::moveOldAside()
{
    const std::string aside = asideName(finalName);
    if (options.calls.renameat2(folder, finalName.c_str(), folder, aside.c_str(), 0) != 0)
        return writingFault();
    const auto fault = moveToFreeName();
    if (fault)
        options.calls.renameat2(folder, aside.c_str(), folder, finalName.c_str(), 0);
    else
        displaced = aside;
    return fault;
}

// The copy has its final name now. If the folder cannot be forced onto the disk, that is no reason
// to remove the copy again, so the failure is ignored.
void StagedItem::finishCommit()
{
    name.clear();
    unmarkStaged(folder, finalName);
    if (options.durability == Durability::OnDisk)
        options.calls.fsync(folder);
    if (!displaced.empty())
        removeItem(folder, displaced);
}

} // namespace stemvault
