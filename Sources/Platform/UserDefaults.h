#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace stemvault {

/// The user's settings: values of three kinds under keys. Main thread only. The methods work in
/// memory, so they neither wait for the disk nor fail. The store is read once, at the start;
/// changes that another program makes later are not seen.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    /// The bytes under `key`. Absent when there is no value, or it is of another kind, or it is
    /// damaged; the caller cannot tell which. The same is true of the two methods below.
    [[nodiscard]] virtual std::optional<std::string> data(const std::string& key) const = 0;

    /// The text under `key`, in UTF-8. The program never writes a text; this reads values that were
    /// added by hand.
    [[nodiscard]] virtual std::optional<std::string> string(const std::string& key) const = 0;

    /// The time under `key`.
    [[nodiscard]] virtual std::optional<std::chrono::system_clock::time_point> date(
        const std::string& key) const = 0;

    /// Replaces the value under `key`, of whatever kind. The bytes are UTF-8 and may contain zeros.
    /// Reading returns the new value at once. It is written to the disk soon after, together with
    /// other changes, and at the latest when the program ends. If writing fails, the value stays in
    /// memory and is written with the next change.
    virtual void setData(const std::string& key, const std::string& bytes) = 0;

    /// The same for a time, which is rounded down to whole milliseconds. Times in the years 1700 to
    /// 2200 can be read back.
    virtual void setDate(const std::string& key, std::chrono::system_clock::time_point date) = 0;
};

} // namespace stemvault
