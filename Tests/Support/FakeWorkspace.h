#pragma once

#include "Platform/Workspace.h"

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace stemvault {

struct FakeWorkspace : Workspace {
    [[nodiscard]] std::vector<RunningApplication> runningApplications() const override
    {
        return applications;
    }
    void addObserver(const void* observer, WorkspaceNotification notification,
        std::function<void()> work) override
    {
        entries.push_back({ observer, notification, std::move(work), ++entriesAdded });
    }
    void removeObserver(const void* observer) override
    {
        std::erase_if(entries, [=](const Entry& entry) { return entry.observer == observer; });
    }
    [[nodiscard]] bool open(const std::string& url) override;

    // What a test may do.

    /// Launches an ordinary application with a window.
    void launch(std::int32_t pid, const std::string& bundleIdentifier, const std::string& name)
    {
        applications.push_back({ bundleIdentifier, ActivationPolicy::Regular, name, pid });
        notify(WorkspaceNotification::DidLaunchApplication);
    }
    void quit(std::int32_t pid)
    {
        std::erase_if(
            applications, [=](const auto& each) { return each.processIdentifier == pid; });
        notify(WorkspaceNotification::DidTerminateApplication);
    }
    void notify(WorkspaceNotification notification);

    std::vector<RunningApplication> applications;
    std::vector<std::string> opened; ///< The URLs that were accepted, even if `canOpen` is false.
    bool canOpen = true;

private:
    struct Entry {
        const void* observer;
        WorkspaceNotification notification;
        std::function<void()> work;
        std::uint64_t number; ///< Unique, never reused.
    };
    std::vector<Entry> entries;
    std::uint64_t entriesAdded = 0;
};

} // namespace stemvault
