#pragma once

#include "Platform/URLSession.h"

#include <QObject>

#include <chrono>
#include <cstdint>
#include <string>

namespace stemvault::url_session {

/// Runs a separate process, the fetcher, for each request, so that this process holds nothing that
/// networking needs. Handlers are called on the main thread. Destroying this object ends fetches
/// that are still in progress; their handlers are not called.
class FetcherURLSession final : public QObject, public URLSession {
public:
    struct Limits {
        std::chrono::milliseconds time { std::chrono::seconds(60) }; ///< For the whole request.
        std::int64_t bytes = 4 << 20;
    };

    FetcherURLSession(std::string fetcherPath, Limits limits);
    ~FetcherURLSession() override;

    /// The fetcher's path: in an installation, in the libexec folder; in a build tree, which has no
    /// such folder, next to the executable. Empty if there is none.
    [[nodiscard]] static std::string standardFetcher();
    [[nodiscard]] static std::string fetcherOf(const QString& folderOfExecutable);

    void dataTask(const std::string& url, CompletionHandler completionHandler) override;

private:
    std::string fetcher;
    Limits limit;
};

} // namespace stemvault::url_session
