#pragma once

#include "FileManager/FileIdentity.h"
#include "Foundation/Result.h"

#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <linux/fs.h>
#include <optional>
#include <string>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

namespace stemvault {

/// The system calls that some file systems refuse, or whose failure requires a cleanup. They behave
/// like the functions of the same name and set errno; a test may replace them.
struct SystemCalls {
    std::function<int(int folder, const char* name, int flags, mode_t mode)> openat =
        [](int folder, const char* name, int flags, mode_t mode) {
            return ::openat(folder, name, flags, mode);
        };
    std::function<int(int folder, const char* name, mode_t mode)> mkdirat = ::mkdirat;
    std::function<int(const char* target, int folder, const char* name)> symlinkat = ::symlinkat;
    std::function<int(int fromFolder, const char* from, int toFolder, const char* to, int flags)>
        linkat = ::linkat;
    std::function<int(
        int fromFolder, const char* from, int toFolder, const char* to, unsigned flags)>
        renameat2 = ::renameat2;
    /// Makes `out` share the blocks of `in`.
    std::function<int(int out, int in)> clone = [](int out, int in) {
        return ::ioctl(out, FICLONE, in);
    };
    std::function<ssize_t(int in, off_t* inAt, int out, off_t* outAt, size_t count, unsigned flags)>
        copyFileRange = ::copy_file_range;
    std::function<ssize_t(int out, int in, off_t* inAt, size_t count)> sendfile = ::sendfile;
    std::function<ssize_t(int out, const void* bytes, size_t count, off_t at)> pwrite = ::pwrite;
    std::function<int(int file, off_t size)> ftruncate = ::ftruncate;
    std::function<int(int file, int mode, off_t at, off_t count)> fallocate = ::fallocate;
    std::function<int(int file)> fsync = ::fsync;
    std::function<int(int file, const timespec times[2])> futimens = ::futimens;
    /// The descriptor is closed even when this fails.
    std::function<int(int file)> close = ::close;
};

enum class Durability {
    OnDisk, ///< The copy, and then its name, have reached the disk before success is reported.
    InMemory, ///< The kernel writes the copy later, as it does after `cp`.
};

enum class IfExists {
    Fail, ///< The item with that name stays, and the copy fails.
    Replace, ///< The copy takes its place once it is complete.
};

struct CopyOptions {
    /// The folder in which the program found the source. Absent when the user has chosen the
    /// source; only then is a link followed.
    std::optional<FileIdentity> foundIn;
    IfExists ifExists = IfExists::Fail;
    Durability durability = Durability::OnDisk;
    /// Unfinished copies that a crash left in the destination folder are removed at this age.
    std::chrono::seconds leftoverAge = std::chrono::hours(24);
    SystemCalls calls;
};

/// Copies the file or folder `from` to the path `to`, completely or not at all, as documented in
/// FileManager.h. A source that changes while it is copied is copied again, twice at most. May be
/// called from any thread.
Result<void> copyItem(
    const std::string& from, const std::string& to, const CopyOptions& options = {});

} // namespace stemvault
