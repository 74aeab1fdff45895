#pragma once

#include <array>
#include <memory>
#include <string>

class QApplication;

namespace stemvault::application {

/// Owns the toolkit's application object. If there is no display to show windows on, constructing
/// it prints one line on standard error and ends the process with status 1.
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
    std::array<char*, 4> arguments {}; ///< The toolkit keeps pointers to this and `argumentCount`.
    int argumentCount = 1;
    std::unique_ptr<QApplication> application;
};

} // namespace stemvault::application
