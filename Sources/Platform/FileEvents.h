#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace stemvault {

/// What happened to an item. Flags of one path add up within a batch; they say where to look, and
/// the disk says what is true now.
namespace FileEventFlag {
inline constexpr std::uint32_t MustScanSubDirs = 0x1; ///< Events below were lost; rescanned.
inline constexpr std::uint32_t RootChanged = 0x20; ///< A watched folder itself came, went or moved.
inline constexpr std::uint32_t ItemCreated = 0x100;
inline constexpr std::uint32_t ItemRemoved = 0x200;
inline constexpr std::uint32_t ItemRenamed = 0x800;
inline constexpr std::uint32_t ItemModified = 0x1000;
inline constexpr std::uint32_t ItemIsFile = 0x10000;
inline constexpr std::uint32_t ItemIsDir = 0x20000;
inline constexpr std::uint32_t ItemIsSymlink = 0x40000;
} // namespace FileEventFlag

/// How a stream is made.
namespace FileEventStreamFlag {
inline constexpr std::uint32_t UseTextPaths = 0x01; ///< Paths come as text values.
inline constexpr std::uint32_t NoDefer =
    0x02; ///< After a quiet spell the first event goes at once.
inline constexpr std::uint32_t FileEvents = 0x10; ///< One event per item, not per folder.
} // namespace FileEventStreamFlag

/// Paths and flags of one batch, index for index. Paths lie below the folder as it was given; what
/// several folders lead to is reported below each.
using FileEventHandler = std::function<void(
    const std::vector<std::string>& paths, const std::vector<std::uint32_t>& flags)>;

/// A recursive stream of events over some folders; lives until it is destroyed, whatever becomes of
/// the folders. Main thread only.
class FileEventStream {
public:
    FileEventStream() = default;
    FileEventStream(const FileEventStream&) = delete;
    FileEventStream& operator=(const FileEventStream&) = delete;
    virtual ~FileEventStream() = default;

    /// Begins delivery, on the main queue, of what happens from now on.
    virtual void start() = 0;

    /// Ends delivery: the handler is not called after this returns. May be called from within the
    /// handler.
    virtual void stop() = 0;

    /// Lets go of the main queue and of every watched folder.
    virtual void invalidate() = 0;
};

class FileEvents {
public:
    virtual ~FileEvents() = default;

    /// A stream over everything below `paths`, which need not exist; events within `latency` of the
    /// first of a batch are gathered into one. Absent when no stream can be made. Main thread only;
    /// walking the folders is done elsewhere.
    [[nodiscard]] virtual std::unique_ptr<FileEventStream> createStream(FileEventHandler handler,
        const std::vector<std::string>& paths, std::chrono::milliseconds latency,
        std::uint32_t flags) = 0;
};

} // namespace stemvault
