#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace stemvault {

/// What happened to an item. Everything that happened to one path within a batch is combined in one
/// set of flags, without an order: a file that was created and removed has both flags. The flags
/// only tell the handler where to look; it must read the disk to see what is there now.
namespace FileEventFlag {
/// Events below this folder were lost. The stream has listed the folder again and reports the
/// changes that it found, so the handler need not list it.
inline constexpr std::uint32_t MustScanSubDirs = 0x1;
inline constexpr std::uint32_t RootChanged = 0x20; ///< A watched folder itself came, went or moved.
inline constexpr std::uint32_t ItemCreated = 0x100;
inline constexpr std::uint32_t ItemRemoved = 0x200;
inline constexpr std::uint32_t ItemRenamed = 0x800; ///< It moved to this path or away from it.
inline constexpr std::uint32_t ItemModified = 0x1000; ///< Its content was written or truncated.
inline constexpr std::uint32_t ItemIsFile = 0x10000;
inline constexpr std::uint32_t ItemIsDir = 0x20000;
inline constexpr std::uint32_t ItemIsSymlink = 0x40000;
} // namespace FileEventFlag

/// How a stream reports.
namespace FileEventStreamFlag {
inline constexpr std::uint32_t UseTextPaths = 0x01; ///< Paths are text; here they always are.
/// An event after a quiet time of at least the latency is delivered at once. Without this flag it
/// also waits for the latency.
inline constexpr std::uint32_t NoDefer = 0x02;
inline constexpr std::uint32_t FileEvents = 0x10; ///< One event per item; here always the case.
} // namespace FileEventStreamFlag

/// Receives one batch on the main thread, from the main queue. `flags[i]` belongs to `paths[i]`;
/// both are valid only during the call. Paths begin with a folder as it was passed to
/// `createStream`; an item that can be reached through two of these folders is reported below each
/// of them. The handler may stop or destroy its own stream.
using FileEventHandler = std::function<void(
    const std::vector<std::string>& paths, const std::vector<std::uint32_t>& flags)>;

/// A stream of events from some folders and everything below them. Main thread only; no method
/// waits for a disk or for another thread. Destroying the stream stops it. The stream keeps working
/// whatever happens to its folders: one that is removed and created again is watched again.
class FileEventStream {
public:
    FileEventStream() = default;
    FileEventStream(const FileEventStream&) = delete;
    FileEventStream& operator=(const FileEventStream&) = delete;
    virtual ~FileEventStream() = default;

    /// Begins delivery. Every change from this call on is reported, even in folders that the stream
    /// does not watch yet; in those, changes made shortly before may be reported as well. Does
    /// nothing on a started or invalidated stream. If the system cannot start another thread,
    /// nothing is reported.
    virtual void start() = 0;

    /// Ends delivery: the handler is not called any more, not even with a batch that is already in
    /// the main queue. `start` may be called again; changes in between are not reported.
    virtual void stop() = 0;

    /// Stops the stream for good: `start` does nothing afterwards.
    virtual void invalidate() = 0;
};

/// Creates event streams. Main thread only. It must outlive its streams.
class FileEvents {
public:
    virtual ~FileEvents() = default;

    /// Creates a stream, not yet started, for everything below `paths`. They are absolute and need
    /// not exist. Events are gathered in batches that are at least `latency` apart. `flags` are
    /// from FileEventStreamFlag. Null when `handler` or `paths` is empty, or no stream can be
    /// created. The system's limit on watches is no failure: folders beyond it are listed every few
    /// seconds.
    [[nodiscard]] virtual std::unique_ptr<FileEventStream> createStream(FileEventHandler handler,
        const std::vector<std::string>& paths, std::chrono::milliseconds latency,
        std::uint32_t flags) = 0;
};

} // namespace stemvault
