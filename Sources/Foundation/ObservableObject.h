#pragma once

#include <functional>
#include <utility>
#include <vector>

namespace stemvault {

/// Tells its subscribers that one of its values is about to change; they read it afterwards.
class ObservableObject {
public:
    /// Subscribers are called in the order in which they came and are never removed.
    void onWillChange(std::function<void()> subscriber)
    {
        subscribers.push_back(std::move(subscriber));
    }

protected:
    void willChange() const
    {
        // A copy: a subscriber may bring another one.
        for (const auto& subscriber : std::vector(subscribers))
            subscriber();
    }

private:
    std::vector<std::function<void()>> subscribers;
};

} // namespace stemvault
