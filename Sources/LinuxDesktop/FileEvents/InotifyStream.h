#pragma once

#include "LinuxDesktop/FileEvents/StreamWorker.h"

#include <memory>

namespace stemvault {

/// A running event stream and its thread. Neither ending it nor destroying it ever waits: the
/// thread abandons what it does, cleans up by itself and is gone a moment later.
class InotifyStream {
public:
    /// Begins at once. `deliver` and `ready` are called on the stream's thread, and perhaps once
    /// more while the stream is being destroyed. Absent when the system refuses a thread or a
    /// descriptor. `calls` must live for as long as the program.
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
