#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace stemvault::user_defaults {

/// A point in time as text, "2026-03-01T09:30:00.125Z", rounded down to a millisecond.
[[nodiscard]] std::string textOfDate(std::chrono::system_clock::time_point date);

/// Parses exactly that form; absent for any other text.
[[nodiscard]] std::optional<std::chrono::system_clock::time_point> dateOfText(
    const std::string& text);

} // namespace stemvault::user_defaults
