#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace stemvault {

/// A point in time as text, "2026-03-01T09:30:00.125Z": to the millisecond, before it.
[[nodiscard]] std::string textOfDate(std::chrono::system_clock::time_point date);

/// Reads exactly that form.
[[nodiscard]] std::optional<std::chrono::system_clock::time_point> dateOfText(
    const std::string& text);

} // namespace stemvault
