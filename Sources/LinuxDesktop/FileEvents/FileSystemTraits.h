#pragma once

#include <cstdint>

namespace stemvault::file_events {

/// Whether another computer or program may change a file system of this type without raising an
/// event here. The type is the magic number from statfs.
[[nodiscard]] constexpr bool isSharedWithOthers(std::uint32_t type)
{
    switch (type) {
    case 0x6969: // NFS
    case 0xFF534D42: // CIFS
    case 0xFE534D42: // SMB 2 and later
    case 0x517B: // SMB 1
    case 0x65735546: // FUSE
    case 0x01021997: // 9P
    case 0x786F4256: // shared folders of a virtual machine
    case 0x00C36400: // Ceph
    case 0x5346414F: // AFS
    case 0x73757245: // Coda
        return true;
    default:
        return false;
    }
}

/// Whether a folder's link count is two plus its number of subfolders, so that a folder with a
/// count of two has none. These file systems count so by design; others (btrfs, overlayfs) always
/// return one or an unrelated number.
[[nodiscard]] constexpr bool countsFoldersByLinks(std::uint32_t type)
{
    switch (type) {
    case 0xEF53: // ext2, ext3, ext4
    case 0x58465342: // XFS
    case 0x01021994: // tmpfs
        return true;
    default:
        return false;
    }
}

} // namespace stemvault::file_events
