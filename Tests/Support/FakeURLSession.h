#pragma once

#include "Platform/URLSession.h"

#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace stemvault {

struct FakeURLSession : URLSession {
    void dataTask(const std::string& url, CompletionHandler completionHandler) override
    {
        urls.push_back(url);
        handlers.push_back(std::move(completionHandler));
    }

    // What a test may do.

    /// Finishes the oldest pending fetch.
    void finish(const Result<std::string>& body);

    std::vector<std::string> urls; ///< In the order requested.

private:
    std::deque<CompletionHandler> handlers;
};

} // namespace stemvault
