#pragma once

#include "Foundation/FileDescriptor.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace stemvault {

/// A moment as file systems keep it, by the wall clock.
using FileTime = std::chrono::sys_time<std::chrono::nanoseconds>;

[[nodiscard]] FileTime wallClock();

/// Times of files are taken from a clock that ticks this seldom.
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

    /// The bit of FileEventFlag that says what it is; 0 for pipes and the like.
    [[nodiscard]] std::uint32_t kind() const;

    [[nodiscard]] bool isModifiedSince(FileTime since) const;

    /// Whether both times were set at once, as touching or dating a file does, and not by its
    /// birth. A file system that keeps whole seconds cannot say.
    [[nodiscard]] bool isTouched() const;

    /// What the flags of an item must say that is met in a listing in place of events nobody saw;
    /// 0 when it has not changed since.
    [[nodiscard]] std::uint32_t changesSince(FileTime since) const;
};

/// The bit of FileEventFlag for a `d_type`.
[[nodiscard]] std::uint32_t kindOfEntry(unsigned char type);

/// The status of `name` in an open folder, links not followed.
[[nodiscard]] std::optional<FileStatus> fileStatus(int folder, const char* name);

/// The same for a path of any length; an empty one is the root of everything.
[[nodiscard]] std::optional<FileStatus> fileStatus(const std::string& path);

/// Opens a folder for reading, or with O_PATH for naming it. Its path may have any length; the last
/// component is not followed. Absent with errno set.
[[nodiscard]] FileDescriptor openFolder(const std::string& path, int access);

/// Since when the content of a folder that has just arrived counts as new. `bound` is a moment at
/// which it was not there yet. A rename sets the change time of what it moves, which tells the
/// moment exactly, unless the content has changed as well.
[[nodiscard]] FileTime arrivalTime(const std::optional<FileStatus>& arrived, FileTime bound);

} // namespace stemvault
