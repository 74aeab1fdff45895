#pragma once

#include "Platform/Windows.h"

#include <functional>
#include <string>

class QWidget;

namespace stemvault::windows {

class QtWindows final : public Windows {
public:
    /// `prepare` is called with each new window before it is shown.
    QtWindows(std::string symbolFolder, std::function<void(QWidget& window)> prepare);

    [[nodiscard]] std::unique_ptr<Window> window(std::function<View()> body) override;

private:
    std::string symbols;
    std::function<void(QWidget& window)> prepareWindow;
};

} // namespace stemvault::windows
