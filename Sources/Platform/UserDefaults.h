#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace stemvault {

/// The user's settings: values of three kinds under keys. Main thread only. Reading and writing
/// work on memory, so neither waits for the disk and neither can fail. The store is read once, at
/// the start; changes that another program makes meanwhile are not seen.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    /// The bytes under `key`. Absent when there are none, or the value is of another kind, or it is
    /// damaged; the three are not told apart. The same holds for the two methods below.
    [[nodiscard]] virtual std::optional<std::string> data(const std::string& key) const = 0;

    /// The text under `key`, in UTF-8. The program writes none: this reads what somebody has put
    /// there by hand.
    [[nodiscard]] virtual std::optional<std::string> string(const std::string& key) const = 0;

    /// The time under `key`.
    [[nodiscard]] virtual std::optional<std::chrono::system_clock::time_point> date(
        const std::string& key) const = 0;

    /// Replaces whatever is under `key`, of whichever kind. The bytes are UTF-8, zeros included.
    /// Reading gives the new value at once. It reaches the disk soon after, several changes as one,
    /// and at the latest when the program ends. If the disk refuses, the value stays in memory and
    /// is written with the next change.
    virtual void setData(const std::string& key, const std::string& bytes) = 0;

    /// The same for a time, which is kept to the whole millisecond before it. Years from 1700 to
    /// 2200 can be read again.
    virtual void setDate(const std::string& key, std::chrono::system_clock::time_point date) = 0;
};

} // namespace stemvault
