#pragma once

#include "LinuxDesktop/FileEvents/DirectoryReader.h"
#include "LinuxDesktop/FileEvents/PolledFolders.h"
#include "LinuxDesktop/FileEvents/WatchInstaller.h"
#include "LinuxDesktop/FileEvents/WatchState.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>
#include <vector>

namespace stemvault {

/// Goes through folders: sets their watches first and reads them second, so that nothing falls in
/// between. Works in short slices, because the kernel's queue must be read meanwhile.
class TreeWalker {
public:
    /// Why a folder is visited, which decides what is reported of what it holds.
    enum class Visit : std::uint8_t {
        Start, ///< It was there before the stream: only what has changed since its start.
        Created, ///< It was made while we watched: everything but what was moved into it.
        Arrived, ///< It came as a whole: only what has changed since.
        Check, ///< Events were lost: what has changed since, and which folders are where.
    };

    explicit TreeWalker(WatchState& shared);

    void enqueue(NodeId node, Visit visit, FileTime since);

    /// Events were lost: until the walk is over, folders met elsewhere are checked as well.
    void noteLoss(FileTime since) { lostSince = since; }

    /// Visits folders for a few milliseconds. Whether there was anything to do.
    bool runSlice();
    [[nodiscard]] bool isIdle() const { return jobs.empty() && missed.empty(); }

    /// Tries again what could not be read below a folder, since it may be readable now.
    void retryUnreadable(NodeId parent);

    [[nodiscard]] WatchInstaller& installer() { return watchInstaller; }
    [[nodiscard]] PolledFolders& polled() { return polledFolders; }
    [[nodiscard]] const PolledFolders& polled() const { return polledFolders; }

private:
    struct Job {
        NodeRef node;
        Visit visit;
        FileTime since;
        int misses = 0; ///< How often it was not where it should have been.
        bool isListDue = false; ///< It is watched, but what was in it before is not known.
    };

    /// What is known of a file system by its type.
    struct Device {
        bool isShared; ///< Others may change it, and no event tells.
        bool countsFolders; ///< The link count of a folder is two and one for each folder in it.
    };

    void postpone(const Job& job);
    [[nodiscard]] bool tryAgain(Job job);
    void visitVacated(Visit visit, FileTime since);
    void visit(Job job);
    void visitFolder(NodeId node, Job job);
    void list(NodeId node, const Job& job, bool areItemsReported);
    void meet(
        NodeId node, int folder, const DirectoryEntry& entry, const Job& job, bool isReported);
    void meetFolder(NodeId parent, std::string_view name, std::uint32_t flags, const Job& job);
    void departUnseen(NodeId node);
    void leave(NodeId node, const Job& job);
    [[nodiscard]] Device device(std::uint64_t number);

    WatchState& state;
    WatchInstaller watchInstaller { state };
    std::vector<std::byte> buffer;
    std::vector<Job> jobs;
    std::vector<Job> postponed; ///< Those in folders on the move.
    std::vector<Job> missed; ///< Until the events are read that tell why.
    std::uint32_t shapeWhenPostponed = 0;
    std::optional<FileTime> lostSince;
    std::string path;
    std::map<std::uint64_t, Device> devices;
    std::vector<std::pair<NodeRef, FileTime>> unreadable; ///< Until their attributes change.
    PolledFolders polledFolders;
};

} // namespace stemvault
