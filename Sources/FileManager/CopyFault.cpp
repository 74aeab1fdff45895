#include "FileManager/CopyFault.h"

#include "Foundation/PathText.h"
#include "Foundation/UnicodeText.h"

#include <cerrno>
#include <string_view>
#include <system_error>

namespace stemvault {

namespace {

std::string inQuotes(std::string_view name)
{
    return "“" + printable(name) + "”";
}

std::string systemText(int error)
{
    return std::generic_category().message(error);
}

std::string readingReason(int error)
{
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return "it doesn’t exist any more";
    case EACCES:
    case EPERM:
        return "you don’t have permission to read it";
    case EIO:
        return "its disk reported an error";
    case ENOTCONN:
    case ENODEV:
        return "its drive was disconnected";
    default:
        return "it couldn’t be read (" + systemText(error) + ")";
    }
}

std::string reason(const CopyFault& fault, const std::string& folder)
{
    switch (fault.kind) {
    case CopyFault::Kind::Reading:
        return readingReason(fault.error);
    case CopyFault::Kind::Writing:
        return writingReason(fault.error, folder);
    case CopyFault::Kind::Name:
        return namingReason(folder);
    case CopyFault::Kind::Changing:
        return "it kept changing while it was being copied";
    case CopyFault::Kind::Removed:
        return "another program kept removing the unfinished copy";
    case CopyFault::Kind::NotAFile:
        return "it is neither a file nor a folder";
    case CopyFault::Kind::FoundLink:
        return "it is a link; select it yourself to copy what it leads to";
    case CopyFault::Kind::FolderReplaced:
        return "its folder has been replaced by another one";
    case CopyFault::Kind::SameItem:
        return "it would be copied onto itself";
    case CopyFault::Kind::IntoItself:
        return "the folder " + folder + " is inside it";
    case CopyFault::Kind::InsideReplacedFolder:
        return "it is inside the folder that it would replace";
    }
    return {};
}

} // namespace

CopyFault readingFault()
{
    return { CopyFault::Kind::Reading, errno };
}

CopyFault writingFault()
{
    return { CopyFault::Kind::Writing, errno };
}

bool isAboutName(int error)
{
    return error == ENOENT || error == EINVAL || error == EILSEQ;
}

std::string namingReason(const std::string& folder)
{
    return "the disk of the folder " + folder + " doesn’t allow its name";
}

std::string writingReason(int error, const std::string& folder)
{
    switch (error) {
    case EEXIST:
    case ENOTEMPTY:
        return "an item with the same name already exists in " + folder;
    case ENOSPC:
        return "the disk is full";
    case EDQUOT:
        return "your share of the disk is used up";
    case EFBIG:
        return "it is too large for the format of the disk";
    case EROFS:
        return "the disk is read-only";
    case EACCES:
    case EPERM:
        return "you don’t have permission to change the folder " + folder;
    case ENOENT:
        return "the folder " + folder + " doesn’t exist";
    case ENOTDIR:
        return folder + " isn’t a folder";
    case ENAMETOOLONG:
        return "its name is too long";
    case EIO:
    case ESPIPE: // From drives that only accept sequential writes, after part of a file was lost.
        return "the disk of the folder " + folder + " reported an error";
    case ENOTCONN:
    case ENODEV:
        return "the drive of the folder " + folder + " was disconnected";
    default:
        return "it couldn’t be written (" + systemText(error) + ")";
    }
}

std::string describe(const CopyFault& fault, const std::string& from, const std::string& to)
{
    const std::string folder = inQuotes(lastPathComponent(deletingLastPathComponent(to)));
    return inQuotes(lastPathComponent(from)) + " couldn’t be copied because "
        + reason(fault, folder) + ".";
}

} // namespace stemvault
