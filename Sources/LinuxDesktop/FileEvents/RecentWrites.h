#pragma once

#include "LinuxDesktop/FileEvents/FileStatus.h"
#include "LinuxDesktop/FileEvents/WatchTree.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace stemvault {

/// What recent events said about single files. It decides what a later close means, because the
/// kernel raises the same event whether a file was written through a mapping or not at all.
///
/// Only the latest few hundred files are remembered. For a file that was forgotten the times on
/// disk decide alone.
class RecentWrites {
public:
    using File = std::uint64_t;

    [[nodiscard]] static File file(NodeRef folder, std::string_view name);

    /// The file was written, and whoever did so has not closed it yet.
    void noteWrite(File file);

    /// Whether such a write was noted; from now on none is.
    bool takeWrite(File file);

    /// Whatever was written until then has been reported already, or was not written under this
    /// name.
    void account(File file, FileTime until);

    /// Until when the content is accounted for; the beginning of time if nothing is known.
    [[nodiscard]] FileTime accountedUntil(File file) const;

    /// Events were lost.
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
