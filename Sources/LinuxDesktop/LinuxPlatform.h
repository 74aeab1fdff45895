#pragma once

#include "Platform/Platform.h"

#include <memory>

namespace stemvault {

/// The implementation of Platform for Linux desktops, and the program's place in its session.
class LinuxPlatform {
public:
    /// Joins the session. Null if the program already runs in it; with a session bus, that instance
    /// has then been activated. If there is no display, or another program owns the program's bus
    /// name, this prints a line on standard error and ends the process.
    [[nodiscard]] static std::unique_ptr<LinuxPlatform> create();

    LinuxPlatform(const LinuxPlatform&) = delete;
    LinuxPlatform& operator=(const LinuxPlatform&) = delete;

    /// Waits a few seconds for copies in progress. If background work still runs after that, this
    /// ends the process.
    ~LinuxPlatform();

    [[nodiscard]] const Platform& platform() const;

private:
    struct Session;
    struct Parts;
    explicit LinuxPlatform(std::unique_ptr<Session> joined);

    std::unique_ptr<Session> session;
    std::unique_ptr<Parts> parts;
};

} // namespace stemvault
