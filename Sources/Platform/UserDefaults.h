#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace stemvault {

/// The user's settings under their keys. Main thread only.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    /// The byte string under a key; absent when there is none or the value is of another kind.
    [[nodiscard]] virtual std::optional<std::string> data(const std::string& key) const = 0;

    /// The text under a key; absent when there is none or the value is of another kind.
    [[nodiscard]] virtual std::optional<std::string> string(const std::string& key) const = 0;

    /// The point in time under a key; absent when there is none or the value is of another kind.
    [[nodiscard]] virtual std::optional<std::chrono::system_clock::time_point> date(
        const std::string& key) const = 0;

    /// Replaces what is under the key. Reading gives the new value at once; it reaches the disk
    /// soon after, whole, several changes in a row as one.
    virtual void setData(const std::string& key, const std::string& bytes) = 0;
    virtual void setDate(const std::string& key, std::chrono::system_clock::time_point date) = 0;
};

} // namespace stemvault
