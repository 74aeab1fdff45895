#pragma once

#include "Foundation/Result.h"

#include <functional>
#include <string>

namespace stemvault {

/// Fetches from the web.
class URLSession {
public:
    virtual ~URLSession() = default;

    using CompletionHandler = std::function<void(const Result<std::string>& body)>;

    /// Starts a plain GET, with no header of ours, and returns at once. Redirects are followed as
    /// long as they stay secure. The handler is called once, on any thread, with the body whatever
    /// the status of the response, or with why there is none: it did not come whole, or within a
    /// minute, or is larger than any page. Main thread only.
    virtual void dataTask(const std::string& url, CompletionHandler completionHandler) = 0;
};

} // namespace stemvault
