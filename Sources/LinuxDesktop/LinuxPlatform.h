#pragma once

#include "Platform/Platform.h"

#include <memory>

namespace stemvault {

/// The Linux desktop as the program sees it, and what joins the program to the session it runs in.
class LinuxPlatform {
public:
    /// Joins the session. Null when the program runs in it already: that instance has been told.
    /// Where there is no display, or where another program has the program's name on the bus, this
    /// ends the process, with a line on standard error.
    [[nodiscard]] static std::unique_ptr<LinuxPlatform> create();

    LinuxPlatform(const LinuxPlatform&) = delete;
    LinuxPlatform& operator=(const LinuxPlatform&) = delete;

    /// Gives copies under way a moment to end. Work that takes longer is abandoned with the
    /// process, which then ends here.
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
