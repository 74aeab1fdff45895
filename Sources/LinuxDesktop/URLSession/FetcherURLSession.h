#pragma once

#include "Platform/URLSession.h"

#include <QObject>

#include <chrono>
#include <cstdint>
#include <string>

namespace stemvault {

/// Fetches by a process of its own for each request, the fetcher, so that nothing of the network
/// stays in this one. Handlers are called on the main thread; those of fetches still under way when
/// this ends are not called, and their processes end.
class FetcherURLSession final : public QObject, public URLSession {
public:
    struct Limits {
        std::chrono::milliseconds time { std::chrono::seconds(60) }; ///< For the whole request.
        std::int64_t bytes = 4 << 20;
    };

    FetcherURLSession(std::string fetcherPath, Limits limits);
    ~FetcherURLSession() override;

    /// Where the fetcher lies: in the folder for programs of an installation that nobody starts by
    /// hand, or in a build tree, which has no such folder, beside the executable.
    [[nodiscard]] static std::string standardFetcher();
    [[nodiscard]] static std::string fetcherOf(const QString& folderOfExecutable);

    void dataTask(const std::string& url, CompletionHandler completionHandler) override;

private:
    std::string fetcher;
    Limits limit;
};

} // namespace stemvault
