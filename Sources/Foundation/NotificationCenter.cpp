#include "Foundation/NotificationCenter.h"

namespace stemvault {

NotificationCenter& NotificationCenter::defaultCenter()
{
    static auto& center = *new NotificationCenter;
    return center;
}

void NotificationCenter::addObserver(const void* owner, const std::string& name, Observer observer)
{
    const std::lock_guard lock(mutex);
    entries.push_back({ owner, name, std::move(observer) });
}

void NotificationCenter::removeObserver(const void* owner)
{
    const std::lock_guard lock(mutex);
    std::erase_if(entries, [owner](const Entry& entry) { return entry.owner == owner; });
}

void NotificationCenter::post(const Notification& notification)
{
    // Called outside the lock: an observer may post, add or remove.
    std::vector<Observer> matching;
    {
        const std::lock_guard lock(mutex);
        for (const Entry& entry : entries)
            if (entry.name == notification.name)
                matching.push_back(entry.observer);
    }
    for (const Observer& observer : matching)
        observer(notification);
}

} // namespace stemvault
