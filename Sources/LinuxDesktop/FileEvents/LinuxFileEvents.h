#pragma once

#include "Platform/Dispatch.h"
#include "Platform/FileEvents.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace stemvault::file_events {

/// Event streams based on inotify, delivered on the main queue. Folders that cannot be watched,
/// for example because the watch limit is reached, are polled every few seconds instead.
class LinuxFileEvents final : public FileEvents {
public:
    /// `mainQueue` must outlive every stream.
    explicit LinuxFileEvents(Dispatch& mainQueue) : dispatch(mainQueue) { }

    [[nodiscard]] std::unique_ptr<FileEventStream> createStream(FileEventHandler handler,
        const std::vector<std::string>& paths, std::chrono::milliseconds latency,
        std::uint32_t flags) override;

private:
    Dispatch& dispatch;
};

} // namespace stemvault::file_events
