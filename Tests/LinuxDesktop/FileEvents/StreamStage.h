#pragma once

#include "LinuxDesktop/FileEvents/InotifyStream.h"
#include "Support/TemporaryFolder.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace stemvault::file_events {

/// The system calls, with faults that a test can switch on.
class FaultyInotifyCalls : public InotifyCalls {
public:
    std::atomic<bool> noDescriptors = false;
    std::atomic<int> watchesLeft = 1 << 20; ///< After that, addWatch fails with ENOSPC.
    std::atomic<bool> simulatesNetworkShare =
        false; ///< A network share: others' changes raise no event.
    std::string unreadableName; ///< EACCES for folders of this name, until their mode is 0700.
    std::function<void()>
        afterEmptyRead; ///< Set it before the start; called on the stream's thread.

    int open() override { return noDescriptors ? -EMFILE : InotifyCalls::open(); }
    int addWatch(int descriptor, const char* path, std::uint32_t mask) override;
    long read(int descriptor, void* buffer, std::size_t size) override;
    std::uint32_t fileSystemType(const char* path) override;

    /// While held, no events are read, as if the reading thread were busy.
    void holdReads(bool isHeld);

    int wait(std::span<pollfd> awaited, const timespec* timeout) override;
    std::chrono::nanoseconds runDelay() override;

    /// While held, no wait returns, as if the reading thread got no processor time.
    void holdWaits(bool isHeld);

private:
    std::mutex mutex;
    std::condition_variable released;
    bool areReadsHeld = false;
    bool areWaitsHeld = false;
    std::chrono::nanoseconds heldFor {};
};

/// A temporary folder, a stream over parts of it, and everything the stream reported.
class StreamStage {
public:
    using Step = std::function<void(StreamStage&)>;
    using Reports = std::map<std::string, std::uint32_t>;

    StreamStage();

    [[nodiscard]] std::string path(const std::string& name) const { return folder.path(name); }
    [[nodiscard]] FaultyInotifyCalls& calls() const { return *faults; }

    /// Watches these and one more folder that `sync` needs. Returns when all watches are in place.
    void start(const std::vector<std::string>& roots,
        std::chrono::milliseconds latency = std::chrono::milliseconds(30));

    [[nodiscard]] bool watchesAll() const;

    /// Returns when everything that was done before has been reported.
    void sync();

    /// Creates an item and waits for its report. A regular file is not opened and so never closed;
    /// it is reported after all earlier files that are still open.
    void beat(mode_t kind);

    /// All flags reported so far, by path, without those of `sync`. Paths below the stage's folder
    /// are relative to it.
    [[nodiscard]] Reports reports() const;
    void forgetReports();

    /// Waits up to a deadline until the reports satisfy a condition. Returns whether they do.
    [[nodiscard]] bool waitFor(const std::function<bool(const Reports&)>& isDone,
        std::chrono::milliseconds deadline = std::chrono::seconds(20)) const;

private:
    struct Record;

    [[nodiscard]] Reports shortened() const;

    TemporaryFolder folder;
    FaultyInotifyCalls* faults;
    std::shared_ptr<Record> record;
    std::unique_ptr<InotifyStream> stream;
    int beats = 0;
};

/// A step that runs a shell script in the stage's folder.
[[nodiscard]] StreamStage::Step sh(const std::string& script);

inline void sync(StreamStage& stage)
{
    stage.sync();
}

/// Raises more events than the kernel's queue holds. None of them is reported.
void flood(StreamStage& stage);

/// Waits until the file system's clock has advanced by `least`; writes the file `clock` to read it.
void age(const std::string& clock, std::chrono::milliseconds least);
void age(StreamStage& stage, std::chrono::milliseconds least);

/// Whether this process may mount, as root or in a user namespace, invisibly to other processes.
[[nodiscard]] bool canMount();

} // namespace stemvault::file_events
