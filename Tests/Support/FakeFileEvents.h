#pragma once

#include "Platform/FileEvents.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace stemvault {

struct FakeFileEvents : FileEvents {
    struct Stream {
        FileEventHandler handler;
        std::vector<std::string> paths;
        std::chrono::milliseconds latency;
        std::uint32_t flags;
        std::string state; ///< Its history: "made started stopped invalidated released".
        bool isStarted = false;
    };

    [[nodiscard]] std::unique_ptr<FileEventStream> createStream(FileEventHandler handler,
        const std::vector<std::string>& paths, std::chrono::milliseconds latency,
        std::uint32_t flags) override;

    // What a test may do.

    /// Delivers a batch through every stream that is started.
    void deliver(const std::vector<std::string>& paths, const std::vector<std::uint32_t>& flags);

    bool canCreate = true;
    std::vector<std::shared_ptr<Stream>> streams; ///< In order of creation.
};

} // namespace stemvault
