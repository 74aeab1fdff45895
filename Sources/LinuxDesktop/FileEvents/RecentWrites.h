#pragma once

#include "LinuxDesktop/FileEvents/FileStatus.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace stemvault {

/// What recent events said about single files. It decides what a later IN_CLOSE_WRITE means,
/// because the kernel raises that event for a file that was written through a mapping and also for
/// one that was not written at all.
///
/// Only the latest few hundred files are remembered. For any other file its times on disk decide.
class RecentWrites {
public:
    using File = std::uint64_t;

    [[nodiscard]] static File file(NodeRef folder, std::string_view name);

    /// The file was written and has not been closed yet.
    void noteWrite(File file);

    /// Removes that note. Whether there was one.
    bool takeWrite(File file);

    /// What was written to the file up to `until` was reported, or was written under another name.
    void account(File file, FileTime until);

    /// The latest such moment; FileTime::min() if nothing is known of the file.
    [[nodiscard]] FileTime accountedUntil(File file) const;

    /// Events were lost, so a close may have been among them.
    void clear();

private:
    struct Account {
        File file;
        FileTime until;
    };

    std::vector<File> unclosed;
    std::vector<Account> accounts; ///< A ring once it is full.
    std::size_t next = 0;
};

} // namespace stemvault
