#pragma once

#include "Foundation/FileURL.h"
#include "Foundation/ObservableObject.h"
#include "Foundation/Shared.h"
#include "Foundation/WeakGuard.h"

#include <optional>

namespace stemvault {

/// The open session's folder for the user interface to draw. Main thread only.
class SessionTrackerObservable : public Shared<SessionTrackerObservable>, public ObservableObject {
public:
    [[nodiscard]] const std::optional<FileURL>& currentSessionFolder() const { return folder; }

private:
    friend class Shared<SessionTrackerObservable>;

    /// Starts one scan, so that an outdated initial value is soon corrected.
    SessionTrackerObservable();
    ~SessionTrackerObservable();

    void setCurrentSessionFolder(const std::optional<FileURL>& newFolder);

    std::optional<FileURL> folder;

    WeakGuard alive;
};

} // namespace stemvault
