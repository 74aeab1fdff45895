#pragma once

#include "FileManager/FileIdentity.h"
#include "Foundation/FileURL.h"
#include "Foundation/Shared.h"
#include "Foundation/WeakGuard.h"
#include "Platform/Image.h"
#include "Platform/UserNotificationCenter.h"
#include "StemvaultConnect/StemvaultFolder.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stemvault {

struct Alert;

/// Asks, file by file, which Stemvault folder a bounce belongs in, and copies it there. Main thread
/// only; the copies run in the background.
class BounceAlertController : public Shared<BounceAlertController>,
                              public UserNotificationCenterDelegate {
public:
    /// A file that the user has not been asked about yet.
    struct Entry {
        FileURL file;
        std::string sourceFolder; ///< The name of the folder that it came from.
        /// The folder in which the program found it: the file is copied only if it is still there
        /// and is not a link. Absent for a link that the user has chosen himself; it is followed.
        std::optional<FileIdentity> foundIn = std::nullopt;
    };

    /// Posted after each copy, from a background thread. Payload: "file" and "destination" for a
    /// single copy, "destination" alone for a batch.
    static constexpr std::string_view bounceAdded = "bounceAdded";
    /// Posted when the user wants to see the preferences. No payload.
    static constexpr std::string_view openPreferences = "openPreferences";

    /// Files to ask the user about, oldest first. Append, then call `showNextIfIdle`.
    std::deque<Entry> queue;

    /// Asks about the files in `queue`, one prompt at a time; returns at once if a prompt is open.
    void showNextIfIdle();

private:
    friend class Shared<BounceAlertController>;
    BounceAlertController();
    ~BounceAlertController() override;

    void show(const Entry& entry);
    [[nodiscard]] Alert bounceAlert(const Entry& entry, std::size_t waiting) const;
    void showNoDestination(Alert alert);
    void add(const Entry& current, bool isWholeQueue, std::optional<StemvaultFolder> destination);
    [[nodiscard]] static std::optional<StemvaultFolder> resolveNewFolder();

    struct Copy;
    struct Batch;

    void copyFile(const Entry& entry, const StemvaultFolder& folder);
    void askToReplace(Copy copy);
    void performCopy(const Copy& copy);
    void copyBatch(const std::vector<Entry>& files, const StemvaultFolder& folder);
    void continueBatch(const Batch& batch);

    void setUpUserNotifications();
    void willPresent(const UserNotification& notification,
        const std::function<void(std::uint32_t options)>& completionHandler) override;

    bool isShowing = false; ///< A prompt is open, or its answer is being acted on.
    const std::optional<Image> appIcon;

    WeakGuard alive;
};

} // namespace stemvault
