#pragma once

#include "Foundation/Result.h"

#include <memory>
#include <string>
#include <vector>

struct sd_bus;

namespace stemvault {

/// The user's session bus, and what the Courier says on it.
class Bus {
public:
    /// Absent, with the reason, outside of a desktop session.
    [[nodiscard]] static Result<Bus> open();

    /// Has the program, which is started if need be, perform a service, and waits for as long as
    /// the user takes over it. Gives the program's error text, empty when there is none.
    [[nodiscard]] Result<std::string> perform(
        const std::string& service, const std::vector<std::string>& uris) const;

    /// Shows a notification, the body as plain text. Waits a few seconds at most until the
    /// notification service, which is started if need be, has taken it.
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
