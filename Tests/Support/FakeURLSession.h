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

    /// Ends the oldest fetch under way.
    void finish(const Result<std::string>& body);

    std::vector<std::string> urls; ///< As they were asked for.

private:
    std::deque<CompletionHandler> handlers;
};

} // namespace stemvault
