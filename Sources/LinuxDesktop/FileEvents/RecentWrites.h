#pragma once

#include "LinuxDesktop/FileEvents/FileStatus.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace stemvault::file_events {

/// Remembers recent writes of individual files, to interpret a later IN_CLOSE_WRITE. The kernel
/// raises that event also for a file that was written only through a mapping, and for one that was
/// not written at all.
///
/// Only the latest few hundred files are remembered. Others are judged by their times on disk.
class RecentWrites {
public:
    using File = std::uint64_t;

    [[nodiscard]] static File file(NodeRef folder, std::string_view name);

    /// Notes that the file was written and has not been closed yet.
    void noteWrite(File file);

    /// Removes that note. Returns whether there was one.
    bool takeWrite(File file);

    /// Notes that all writes to the file up to `until` were reported or made under another name.
    void account(File file, FileTime until);

    /// The latest `until` noted for the file; FileTime::min() if there is none.
    [[nodiscard]] FileTime accountedUntil(File file) const;

    /// Forgets unclosed writes. Call it when events were lost, as a close may have been among them.
    void clear();

private:
    struct Account {
        File file;
        FileTime until;
    };

    std::vector<File> unclosed;
    std::vector<Account> accounts; ///< A ring buffer once it is full.
    std::size_t next = 0;
};

} // namespace stemvault::file_events
