#pragma once

#include "Foundation/FileURL.h"
#include "Foundation/Shared.h"
#include "Foundation/WeakGuard.h"
#include "Platform/OpenFiles.h"
#include "Platform/Workspace.h"
#include "StemvaultConnect/FolderLooks.h"

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

/// Knows which DAW session is open. Main thread only; the scans run elsewhere.
class SessionTracker : public Shared<SessionTracker> {
public:
    using Observer = std::function<void(const std::optional<FileURL>& sessionFolder)>;

    /// Looks once, then again at every launch, quit and activation of an application, and every
    /// 30 seconds while a DAW runs.
    void start();

    /// No further look is begun.
    void stop();

    /// Begins one look and returns at once. A result that differs is told to the observers later.
    void refresh();

    /// The folder that the latest finished look found.
    [[nodiscard]] const std::optional<FileURL>& currentSessionFolder() const { return folder; }

    /// Where the DAW keeps its own files in a session that was found by its media or a server's
    /// files; what is written there is no bounce.
    [[nodiscard]] std::vector<std::string> workingFolders() const;

    /// Called in order with the new folder whenever it changes. Only ever appended to.
    std::vector<Observer> observers;

private:
    friend class Shared<SessionTracker>;
    SessionTracker();
    ~SessionTracker();

    /// What is worth scanning.
    struct Candidate {
        std::int32_t process;
        std::int32_t fileServer; ///< 0 when there is none.
        const DAW* daw; ///< Null for one that is scanned for its name.
        std::optional<std::string> openFiles {}; ///< As lsof prints them.
    };
    /// A DAW whose open media, or its server's files, told which session it has open.
    struct Owner {
        std::int32_t process;
        const DAW* daw;
    };
    /// What a scan came to.
    struct Scan {
        int number; ///< They are counted as they begin.
        std::vector<Candidate> candidates;
        std::optional<FileURL> folder {};
        std::optional<Owner> owner {}; ///< Absent when the DAW has files of the session open.
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

    std::optional<Owner> owner; ///< Of `folder`, as a scan has it.
    int lastScan = 0; ///< The number of the one that began last.
    int lastApplied = 0;
    FolderLooks mediaLooks;
    std::optional<FileURL> folder;
    std::unique_ptr<Timer> pollTimer;

    WeakGuard alive;
};

} // namespace stemvault
