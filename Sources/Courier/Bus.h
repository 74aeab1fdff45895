#pragma once

#include "Foundation/Result.h"

#include <memory>
#include <string>
#include <vector>

struct sd_bus;

namespace stemvault {

/// The user's session bus, and the calls that the Courier makes on it.
class Bus {
public:
    /// Fails outside of a desktop session.
    [[nodiscard]] static Result<Bus> open();

    /// Makes the program perform a service, starting it if necessary, and waits for as long as the
    /// user takes to answer it. Returns the program's error text, empty if there is none.
    [[nodiscard]] Result<std::string> perform(
        const std::string& service, const std::vector<std::string>& uris) const;

    /// Shows a notification with a plain text body. Waits at most a few seconds for the
    /// notification service, which is started if necessary, to accept it.
    void notify(const std::string& title, const std::string& body) const;

private:
    struct Close {
        void operator()(sd_bus* bus) const;
    };
    using Connection = std::unique_ptr<sd_bus, Close>;

    explicit Bus(Connection connected) : connection(std::move(connected)) { }

    Connection connection;
};

} // namespace stemvault
