#pragma once

#include <array>
#include <memory>
#include <string>

class QApplication;

namespace stemvault {

/// The toolkit's application object. Where there is no display to show windows on, making it ends
/// the process: one line on standard error, status 1.
class QtRuntime {
public:
    explicit QtRuntime(std::string programName);
    QtRuntime(const QtRuntime&) = delete;
    QtRuntime& operator=(const QtRuntime&) = delete;
    ~QtRuntime();

private:
    void choosePlatform();

    std::string name;
    std::string option = "-platform";
    std::string platforms = "xcb;wayland";
    std::array<char*, 4> arguments {}; ///< The toolkit keeps pointers to these two.
    int argumentCount = 1;
    std::unique_ptr<QApplication> application;
};

} // namespace stemvault
