#pragma once

#include "LinuxDesktop/FileEvents/StreamWorker.h"

#include <memory>

namespace stemvault {

/// A running event stream and its thread. Destroying it never waits: the thread abandons its work,
/// cleans up by itself and ends a moment later.
class InotifyStream {
public:
    /// Starts at once. `deliver` and `ready` are called on the stream's thread, and perhaps once
    /// more while the stream is being destroyed. Absent when the system refuses a thread or a
    /// descriptor. `calls` must outlive the thread, which may outlive the stream.
    [[nodiscard]] static std::unique_ptr<InotifyStream> create(const StreamOptions& options,
        StreamWorker::Deliver deliver, StreamWorker::Ready ready = {},
        InotifyCalls& calls = InotifyCalls::system());

    InotifyStream(const InotifyStream&) = delete;
    InotifyStream& operator=(const InotifyStream&) = delete;
    ~InotifyStream();

private:
    struct Shared;

    explicit InotifyStream(std::shared_ptr<Shared> shared);

    std::shared_ptr<Shared> shared;
};

} // namespace stemvault
