#pragma once

#include <functional>
#include <utility>
#include <vector>

namespace stemvault {

/// Notifies its subscribers before one of its values changes; they read the new value afterwards.
class ObservableObject {
public:
    /// Subscribers are called in the order in which they subscribed and are never removed.
    void onWillChange(std::function<void()> subscriber)
    {
        subscribers.push_back(std::move(subscriber));
    }

protected:
    void willChange() const
    {
        // A copy, because a subscriber may add another one.
        for (const auto& subscriber : std::vector(subscribers))
            subscriber();
    }

private:
    std::vector<std::function<void()>> subscribers;
};

} // namespace stemvault
