#pragma once

#include "Foundation/FileDescriptor.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace stemvault {

/// A moment of the wall clock, as file systems store it.
using FileTime = std::chrono::sys_time<std::chrono::nanoseconds>;

[[nodiscard]] FileTime wallClock();

/// The times of files come from a clock that may be this far behind the precise one.
constexpr std::chrono::milliseconds clockGrain { 10 };

struct FileStatus {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint32_t mode = 0;
    std::uint32_t links = 0;
    std::uint64_t size = 0;
    FileTime accessed;
    FileTime modified;
    FileTime changed;
    std::optional<FileTime> born; ///< Absent where the file system does not keep it.

    /// The bit of FileEventFlag for the kind of item; 0 for pipes, sockets and devices.
    [[nodiscard]] std::uint32_t kind() const;

    [[nodiscard]] bool isModifiedSince(FileTime since) const;

    /// Whether the access and modification times were set together, as touching or dating a file
    /// does, and not by its creation. Always false where the file system keeps whole seconds.
    [[nodiscard]] bool isTouched() const;

    /// The flags to report for an item in a listing that stands in for events nobody saw; 0 when it
    /// has not changed since.
    [[nodiscard]] std::uint32_t changesSince(FileTime since) const;
};

/// The bit of FileEventFlag for a `d_type`.
[[nodiscard]] std::uint32_t kindOfEntry(unsigned char type);

/// The status of `name` in an open folder, links not followed.
[[nodiscard]] std::optional<FileStatus> fileStatus(int folder, const char* name);

/// The same for a path of any length; an empty path is "/".
[[nodiscard]] std::optional<FileStatus> fileStatus(const std::string& path);

/// Opens a folder, with O_RDONLY or O_PATH. Its path may have any length; a link at its end is not
/// followed. Absent with errno set.
[[nodiscard]] FileDescriptor openFolder(const std::string& path, int access);

/// The moment from which the contents of a folder that has just arrived count as new. `bound` is a
/// moment at which it was not there yet. A rename sets the change time of a folder and not its
/// modification time, so where they differ, the change time is the moment of the rename.
[[nodiscard]] FileTime arrivalTime(const std::optional<FileStatus>& arrived, FileTime bound);

} // namespace stemvault
