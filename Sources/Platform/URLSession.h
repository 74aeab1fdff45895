#pragma once

#include "Foundation/Result.h"

#include <functional>
#include <string>

namespace stemvault {

/// Fetches pages from the web. Main thread only.
class URLSession {
public:
    virtual ~URLSession() = default;

    using CompletionHandler = std::function<void(const Result<std::string>& body)>;

    /// Starts a GET request without custom headers and returns at once. Redirects are followed, but
    /// not from HTTPS to HTTP.
    ///
    /// The handler is called once, never inside this call, on any thread; not at all if the program
    /// ends first. It receives the bytes of the body whatever the status of the response: an error
    /// page is a body, too. It receives a failure when the body is not complete: the URL or the
    /// certificate is bad, the server is unreachable, the connection broke, a minute has passed, or
    /// the body is larger than 4 MiB. The text of a failure is never empty and is meant for a log
    /// rather than the user.
    virtual void dataTask(const std::string& url, CompletionHandler completionHandler) = 0;
};

} // namespace stemvault
