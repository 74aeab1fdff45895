#pragma once

#include "Foundation/Result.h"
#include "Foundation/Shared.h"
#include "Foundation/WeakGuard.h"

#include <chrono>
#include <optional>
#include <string>

namespace stemvault {

struct UpdateInfo;

/// Informs the user about newer releases. Main thread only; the fetch runs in the background.
class UpdateChecker : public Shared<UpdateChecker> {
public:
    /// Checks at most once a day, and shows an alert only if there is an update.
    void checkForUpdatesIfNeeded();

    /// Checks now, and shows the result in any case.
    void checkForUpdates();

private:
    friend class Shared<UpdateChecker>;
    UpdateChecker();
    ~UpdateChecker();

    enum class Silent { No, Yes };

    void check(Silent silent);
    void evaluate(const Result<std::string>& body, Silent silent) const;
    [[nodiscard]] std::optional<UpdateInfo> ownEntry(const Result<std::string>& body) const;
    static void presentUpdateAvailable(const UpdateInfo& info);
    static void presentUpToDate(const std::string& currentVersion);
    static void presentError();

    const std::string updatesURL;
    const std::string appKey = "stemvault_connect";
    const std::string lastCheckKey = "updateChecker_lastCheckDate";
    const std::chrono::seconds checkInterval { 86400 };

    WeakGuard alive;
};

} // namespace stemvault
