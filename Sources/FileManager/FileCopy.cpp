#include "FileManager/FileCopy.h"

#include "FileManager/CopyFault.h"
#include "FileManager/CopyTree.h"
#include "FileManager/DirectoryAccess.h"
#include "FileManager/SourceItem.h"
#include "FileManager/StagedItem.h"
#include "FileManager/TemporaryItem.h"
#include "Foundation/PathText.h"

#include <cerrno>
#include <filesystem>

namespace stemvault {

namespace {

CopyFault faultOf(CopyFault::Kind kind)
{
    return { kind };
}

bool isWorthAnotherAttempt(const CopyFault& fault)
{
    return fault.kind == CopyFault::Kind::Changing || fault.kind == CopyFault::Kind::Removed;
}

/// One copy, from opening the source to giving the copy its final name.
class ItemCopy {
public:
    ItemCopy(const std::string& fromPath, const std::string& toPath, const CopyOptions& how)
        : from(fromPath), to(toPath), options(how), name(lastPathComponent(toPath))
    {
    }

    CopyOutcome run();

private:
    CopyOutcome attempt();
    CopyOutcome openSource();
    bool isOpenSource(int item) const;
    CopyOutcome openDestination();
    CopyOutcome checkDestination() const;
    bool isWithinItem(const struct stat& item) const;
    bool createStaged(StagedItem& staged) const;
    CopyOutcome fill(const StagedItem& staged) const;
    CopyOutcome commit(StagedItem& staged) const;
    CopyFault namingFault(const CopyFault& fault) const;
    bool isReplaced() const;
    bool isFolder() const { return S_ISDIR(status.st_mode); }

    const std::string& from;
    const std::string& to;
    const CopyOptions& options;
    std::string name;
    FileDescriptor folder;
    FileDescriptor source;
    struct stat status { };
    bool triesUnnamed = true;
};

CopyOutcome ItemCopy::run()
{
    constexpr int attempts = 3;
    CopyOutcome fault;
    for (int i = 0; i < attempts; ++i) {
        fault = attempt();
        if (!fault || !isWorthAnotherAttempt(*fault))
            break;
    }
    return fault;
}

CopyOutcome ItemCopy::attempt()
{
    if (const auto fault = openSource())
        return fault;
    if (const auto fault = openDestination())
        return fault;
    {
        StagedItem staged(folder.get(), name, options);
        if (!createStaged(staged))
            return namingFault(writingFault());
        if (const auto fault = fill(staged))
            return fault;
        if (staged.linkTemporaryName())
            return commit(staged);
    }
    // A file system may support unnamed files but refuse to link one; a named file needs no link.
    triesUnnamed = false;
    return attempt();
}

// The source stays open between attempts: some drives change a file's date whenever it is opened.
CopyOutcome ItemCopy::openSource()
{
    FileDescriptor item;
    if (const auto fault = findSource(from, options.foundIn, item))
        return fault;
    if (!isOpenSource(item.get()))
        source = openContent(item.get(), O_RDONLY);
    const auto opened = source ? statusOf(source.get()) : std::nullopt;
    if (!opened)
        return readingFault();
    status = *opened;
    return std::nullopt;
}

bool ItemCopy::isOpenSource(int item) const
{
    const auto found = statusOf(item);
    return source && found && isSameItem(*found, status);
}

CopyOutcome ItemCopy::openDestination()
{
    if (folder)
        return checkDestination();
    folder = openFolder(deletingLastPathComponent(to));
    if (!folder)
        return writingFault();
    if (const auto fault = checkDestination())
        return fault;
    removeLeftovers(folder.get(), options.leftoverAge);
    return std::nullopt;
}

CopyOutcome ItemCopy::checkDestination() const
{
    if (isFolder() && isWithin(folder.get(), status))
        return faultOf(CopyFault::Kind::IntoItself);
    const auto old = linkStatus(folder.get(), name);
    if (!old)
        return std::nullopt;
    const auto given = linkStatus(from);
    if (isSameItem(*old, status) || (given && isSameItem(*old, *given)))
        return faultOf(CopyFault::Kind::SameItem);
    if (options.ifExists == IfExists::Fail)
        return CopyFault { CopyFault::Kind::Writing, EEXIST };
    if (S_ISDIR(old->st_mode) && isWithinItem(*old))
        return faultOf(CopyFault::Kind::InsideReplacedFolder);
    return std::nullopt;
}

// Checks both the folder in the source's path and, if links lead elsewhere, its real folder.
bool ItemCopy::isWithinItem(const struct stat& item) const
{
    if (isFolder() && isWithin(source.get(), item))
        return true;
    std::error_code error;
    const auto real = std::filesystem::canonical(from, error).parent_path().string();
    for (const std::string& place : { deletingLastPathComponent(from), real }) {
        const FileDescriptor above = openPath(place, O_PATH | O_DIRECTORY);
        if (above && isWithin(above.get(), item))
            return true;
    }
    return false;
}

bool ItemCopy::createStaged(StagedItem& staged) const
{
    if (isFolder())
        return staged.createFolder();
    return (triesUnnamed && staged.createUnnamedFile()) || staged.createFile();
}

CopyOutcome ItemCopy::fill(const StagedItem& staged) const
{
    const auto copyWhole = isFolder() ? copyWholeFolder : copyWholeFile;
    if (const auto fault = copyWhole(source.get(), staged.item(), status, options))
        return fault;
    if (isReplaced())
        return faultOf(CopyFault::Kind::Changing);
    return std::nullopt;
}

CopyOutcome ItemCopy::commit(StagedItem& staged) const
{
    const auto fault = staged.commit();
    // Syncthing removes items with a staged item's name and an old date, such as the source's.
    if (fault && staged.isGone())
        return faultOf(CopyFault::Kind::Removed);
    return fault ? namingFault(*fault) : fault;
}

// In a folder that exists, these errors mean that its disk does not allow the name.
CopyFault ItemCopy::namingFault(const CopyFault& fault) const
{
    const auto found = statusOf(folder.get());
    const bool isThere = found && found->st_nlink > 0;
    if (fault.kind == CopyFault::Kind::Writing && isThere && isAboutName(fault.error))
        return faultOf(CopyFault::Kind::Name);
    return fault;
}

// If another item has the source's name now, the user means that one. If there is none, nothing is
// lost: the item that was removed has been copied completely.
bool ItemCopy::isReplaced() const
{
    FileDescriptor item;
    return !findSource(from, options.foundIn, item) && !isOpenSource(item.get());
}

} // namespace

Result<void> copyItem(const std::string& from, const std::string& to, const CopyOptions& options)
{
    if (const auto fault = ItemCopy(from, to, options).run())
        return Failure { describe(*fault, from, to), fault->kind == CopyFault::Kind::Changing };
    return {};
}

} // namespace stemvault
