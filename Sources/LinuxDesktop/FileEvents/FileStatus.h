#pragma once

#include "Foundation/FileDescriptor.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace stemvault::file_events {

/// A moment of the wall clock, as file systems store it.
using FileTime = std::chrono::sys_time<std::chrono::nanoseconds>;

[[nodiscard]] FileTime wallClock();

/// File systems stamp files with a coarse clock that may be this far behind the precise one.
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
    std::optional<FileTime> born; ///< Absent if the file system does not record it.

    /// The FileEventFlag bit for the kind of item; 0 for pipes, sockets and devices.
    [[nodiscard]] std::uint32_t kind() const;

    [[nodiscard]] bool isModifiedSince(FileTime since) const;

    /// Whether the access and modification times were set to the same value after the file was
    /// created, as touch(1) does. Always false if the file system stores only whole seconds.
    [[nodiscard]] bool isTouched() const;

    /// The flags to report for a listed item whose events were missed; 0 if there is nothing to
    /// report.
    [[nodiscard]] std::uint32_t changesSince(FileTime since) const;
};

/// The FileEventFlag bit for a `d_type`; 0 for other kinds and DT_UNKNOWN.
[[nodiscard]] std::uint32_t kindOfEntry(unsigned char type);

/// The status of `name` in an open folder, without following a link.
[[nodiscard]] std::optional<FileStatus> fileStatus(int folder, const char* name);

/// The same for a path of any length; an empty path stands for "/".
[[nodiscard]] std::optional<FileStatus> fileStatus(const std::string& path);

/// Opens a folder, with O_RDONLY or O_PATH. Its path may have any length; a link at its end is not
/// followed. On failure the descriptor is not open and errno is set.
[[nodiscard]] FileDescriptor openFolder(const std::string& path, int access);

/// The moment from which the contents of a folder that has just arrived count as new. `bound` is a
/// moment at which the folder was not there yet. A rename sets the change time of a folder but not
/// its modification time, so if the change time is later, it is the moment of the rename.
[[nodiscard]] FileTime arrivalTime(const std::optional<FileStatus>& arrived, FileTime bound);

} // namespace stemvault::file_events
