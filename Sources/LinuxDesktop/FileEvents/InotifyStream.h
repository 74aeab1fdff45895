#pragma once

#include "LinuxDesktop/FileEvents/StreamWorker.h"

#include <memory>

namespace stemvault::file_events {

/// A running event stream and its thread. Destroying it never blocks: the thread stops its work,
/// cleans up and ends by itself later.
class InotifyStream {
public:
    /// Starts at once. `deliver` and `ready` are called on the stream's thread, and perhaps once
    /// more while the stream is being destroyed. Null when the system cannot provide a thread or a
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

} // namespace stemvault::file_events
