#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace stemvault {

/// One in-process notice: its name and, where it has one, its payload.
struct Notification {
    std::string name;
    std::map<std::string, std::string> userInfo;

    [[nodiscard]] bool operator==(const Notification&) const = default;
};

/// Hands notices to whoever observes their name. Safe from every thread.
class NotificationCenter {
public:
    using Observer = std::function<void(const Notification&)>;

    [[nodiscard]] static NotificationCenter& defaultCenter();

    /// Observers are called in the order in which they were added. `owner` is only a handle.
    void addObserver(const void* owner, const std::string& name, Observer observer);

    /// Afterwards no new notice reaches the owner's observers; one already on its way may.
    void removeObserver(const void* owner);

    /// Calls the observers on this thread, before returning.
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
