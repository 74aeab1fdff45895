#pragma once

#include "Foundation/FileURL.h"
#include "Foundation/Shared.h"
#include "Foundation/WeakGuard.h"
#include "Platform/OpenFiles.h"
#include "Platform/Workspace.h"
#include "StemvaultConnect/FolderCheckQueue.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace stemvault {

struct DAW;
class Timer;

/// Tracks which DAW session is open. Main thread only; the scans run in the background.
class SessionTracker : public Shared<SessionTracker> {
public:
    using Observer = std::function<void(const std::optional<FileURL>& sessionFolder)>;

    /// Scans once, then again at every launch, quit and activation of an application, and every
    /// 30 seconds while a DAW runs.
    void start();

    /// Starts no further scans.
    void stop();

    /// Starts one scan and returns at once. If its result differs, the observers are called later.
    void refresh();

    /// The folder that the latest finished scan found.
    [[nodiscard]] const std::optional<FileURL>& currentSessionFolder() const { return folder; }

    /// The folders with the DAW's own files, in a session that was found by its media or a server's
    /// files; a file written there is not a bounce.
    [[nodiscard]] std::vector<std::string> workingFolders() const;

    /// Called in order with the new folder whenever it changes. Only ever appended to.
    std::vector<Observer> observers;

private:
    friend class Shared<SessionTracker>;
    SessionTracker();
    ~SessionTracker();

    /// An application that is worth scanning.
    struct Candidate {
        std::int32_t process;
        std::int32_t fileServer; ///< 0 when there is none.
        const DAW* daw; ///< Null for one that is scanned because of its name.
        std::optional<std::string> openFiles {}; ///< As lsof prints them.
    };
    /// A DAW whose session was identified by its open media or its server's files.
    struct Owner {
        std::int32_t process;
        const DAW* daw;
    };
    /// A scan and its result.
    struct Scan {
        int number; ///< Scans are numbered in the order in which they start.
        std::vector<Candidate> candidates;
        std::optional<FileURL> folder {};
        std::optional<Owner> owner {}; ///< Absent if sessionFolder() identified the session.
    };

    void updateTimer();
    void advance(Scan scan);
    void apply(const Scan& scan);
    [[nodiscard]] static bool isRunning(const Owner& daw);

    [[nodiscard]] static bool isDAW(const RunningApplication& application);
    [[nodiscard]] static bool isWorthScanning(const RunningApplication& application);
    static void findOpenSessionFolder(OpenFiles& openFiles, Scan& scan);
    [[nodiscard]] static std::optional<FileURL> sessionFolderFromServer(
        OpenFiles& openFiles, const Candidate& candidate);
    [[nodiscard]] static std::optional<FileURL> sessionFolderFromLsof(
        OpenFiles& openFiles, Candidate& candidate, std::span<const std::string_view> extensions);
    static void findByMedia(Scan& scan);

    std::optional<Owner> owner; ///< Of `folder`; absent as in Scan.
    int lastScan = 0; ///< The number of the scan that was started last.
    int lastApplied = 0;
    FolderCheckQueue mediaLooks;
    std::optional<FileURL> folder;
    std::unique_ptr<Timer> pollTimer;

    WeakGuard alive;
};

} // namespace stemvault
