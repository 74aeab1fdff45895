#include "StemvaultConnect/SessionTrackerObservable.h"

#include "Platform/Platform.h"
#include "StemvaultConnect/SessionTracker.h"

namespace stemvault {

SessionTrackerObservable::SessionTrackerObservable()
{
    SessionTracker& tracker = SessionTracker::shared();
    setCurrentSessionFolder(tracker.currentSessionFolder());
    const auto assigned = alive.guard(
        [this](const std::optional<FileURL>& newFolder) { setCurrentSessionFolder(newFolder); });
    tracker.observers.emplace_back([assigned](const std::optional<FileURL>& newFolder) {
        Platform::current().dispatch.mainAsync([assigned, newFolder] { assigned(newFolder); });
    });
    tracker.refresh();
}

SessionTrackerObservable::~SessionTrackerObservable() = default;

void SessionTrackerObservable::setCurrentSessionFolder(const std::optional<FileURL>& newFolder)
{
    willChange();
    folder = newFolder;
}

} // namespace stemvault
