#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace stemvault {

/// One in-process notification: its name and, if it has one, its payload.
struct Notification {
    std::string name;
    std::map<std::string, std::string> userInfo;

    [[nodiscard]] bool operator==(const Notification&) const = default;
};

/// Delivers notifications to the observers of their name. May be used from any thread.
class NotificationCenter {
public:
    using Observer = std::function<void(const Notification&)>;

    [[nodiscard]] static NotificationCenter& defaultCenter();

    /// Observers are called in the order in which they were added. `owner` is an identity for
    /// `removeObserver` and is never dereferenced.
    void addObserver(const void* owner, const std::string& name, Observer observer);

    /// Notifications posted afterwards no longer reach the owner's observers; one that is being
    /// delivered meanwhile may.
    void removeObserver(const void* owner);

    /// Calls the observers on the calling thread, before it returns.
    void post(const Notification& notification);

private:
    struct Entry {
        const void* owner;
        std::string name;
        Observer observer;
    };

    std::mutex mutex;
    std::vector<Entry> entries;
};

} // namespace stemvault
