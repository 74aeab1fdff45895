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

// Parsing of the update feed. These are pure functions of the page's text.

/// The JSON in the page's first preformatted block; absent when there is no such block.
[[nodiscard]] std::optional<std::string> extractJSON(std::string_view page);

/// The entries by their app key. Absent when any entry, even another program's, lacks a member or
/// has one of the wrong type.
[[nodiscard]] std::optional<std::map<std::string, UpdateInfo>> decodedFeed(const std::string& json);

/// Whether the version `latest` is higher than `current`, compared number by number. A part that is
/// not a number counts as 0.
[[nodiscard]] bool isNewer(std::string_view latest, std::string_view current);

} // namespace stemvault
