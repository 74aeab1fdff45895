#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace stemvault {

/// One program's entry in the update feed.
struct UpdateInfo {
    std::string latestVersion;
    std::string downloadURL;
    std::optional<std::string> notes;

    [[nodiscard]] bool operator==(const UpdateInfo&) const = default;
};

// What the update feed says. Pure functions of the page's text.

/// The JSON in the page's first preformatted block; absent when there is no such block.
[[nodiscard]] std::optional<std::string> extractJSON(std::string_view page);

/// The entries by their app key. Absent when any of them, whichever program it is about, lacks a
/// member or has one of another kind.
[[nodiscard]] std::optional<std::map<std::string, UpdateInfo>> decodedFeed(const std::string& json);

/// Whether `latest` is the higher of two versions, number by number. What is no number counts as 0.
[[nodiscard]] bool isNewer(std::string_view latest, std::string_view current);

} // namespace stemvault
