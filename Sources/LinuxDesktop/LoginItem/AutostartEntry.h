#pragma once

#include "Platform/LoginItem.h"

#include <string>

namespace stemvault::login_item {

/// The program's entry in the user's autostart folder. The status is read from the file each time,
/// because the desktops' own settings change the file too.
class AutostartEntry final : public LoginItem {
public:
    /// `folder` need not exist; `executable` is an absolute path.
    AutostartEntry(std::string folder, std::string executable);

    /// The autostart folder of the user's configuration.
    [[nodiscard]] static std::string standardFolder();

    /// The file to start at login: the running program, or the AppImage that it runs from.
    [[nodiscard]] static std::string standardExecutable();

    [[nodiscard]] LoginItemStatus status() const override;
    Result<void> registerItem() override;
    Result<void> unregisterItem() override;

private:
    [[nodiscard]] std::string path() const;

    std::string autostartFolder;
    std::string program;
};

} // namespace stemvault::login_item
