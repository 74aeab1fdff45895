#pragma once

#include "Foundation/Alive.h"
#include "Foundation/FileURL.h"
#include "Foundation/Shared.h"
#include "Platform/Image.h"
#include "Platform/UserNotificationCenter.h"
#include "StemvaultConnect/StemvaultFolder.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace stemvault {

struct Alert;

/// Asks, file by file, which Stemvault folder a bounce belongs in, and copies it there. Main thread
/// only; the copies run elsewhere.
class BounceAlertController : public Shared<BounceAlertController>,
                              public UserNotificationCenterDelegate {
public:
    /// A file and the name of the folder that it came from.
    using Entry = std::pair<FileURL, std::string>;

    /// Posted after each copy, from a background thread. Payload: "file" and "destination" for a
    /// single copy, "destination" alone for a batch.
    static const std::string bounceAdded;
    /// Posted when the user wants to see the preferences. No payload.
    static const std::string openPreferences;

    /// Files waiting to be asked about, oldest first. Append, then call `showNextIfIdle`.
    std::deque<Entry> queue;

    /// Asks about the waiting files, one prompt at a time; returns at once when one is open.
    void showNextIfIdle();

private:
    friend class Shared<BounceAlertController>;
    BounceAlertController();
    ~BounceAlertController() override;

    void show(const FileURL& fileURL, const std::string& sourceFolder);
    [[nodiscard]] Alert bounceAlert(
        const FileURL& fileURL, const std::string& sourceFolder, std::size_t waiting) const;
    void showNoDestination(Alert alert);
    void add(const Entry& current, bool isWholeQueue, std::optional<StemvaultFolder> destination);
    [[nodiscard]] static std::optional<StemvaultFolder> resolveNewFolder();

    void copyFile(const FileURL& fileURL, const StemvaultFolder& folder);
    void copyIfWanted(
        const FileURL& fileURL, const FileURL& destURL, const StemvaultFolder& folder, bool exists);
    [[nodiscard]] bool mayReplace(const FileURL& fileURL, const StemvaultFolder& folder) const;
    static void performCopy(
        const FileURL& fileURL, const FileURL& destURL, const StemvaultFolder& folder);
    static void copyBatch(const std::vector<Entry>& files, const StemvaultFolder& folder);

    void setUpUserNotifications();
    void willPresent(const UserNotification& notification,
        const std::function<void(std::uint32_t options)>& completionHandler) override;

    bool isShowing = false;
    std::optional<Image> appIcon;

    Alive alive;
};

} // namespace stemvault
